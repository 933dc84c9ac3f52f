#include "db/JetShape.h"

#include "db/DbError.h"
#include "db/FillParams.h"
#include "db/JetDate.h"

#include <algorithm>

namespace venlo
{

namespace
{
constexpr QLatin1Char placeholder('?');
/// A longer text goes the long way, which knows the limits of a statement.
constexpr qsizetype longestText = 4096;
constexpr QDate anyDay; ///< where it only counts whether something is a date

/// A value as it is bound; nothing when it is not of the kind.
std::optional<QVariant> bound(const QVariant &value, JetLexer::Kind kind, const QDate &today)
{
    if (kind == JetLexer::Kind::Number) {
        const bool integer =
            value.typeId() == QMetaType::Int || value.typeId() == QMetaType::LongLong;
        // A sign is no part of the literal.
        if (!integer || value.toLongLong() < 0)
            return std::nullopt;
        return value;
    }
    if (kind == JetLexer::Kind::Date) {
        const auto day = dayCountOfLiteral(value.toString(), today);
        return day ? std::optional<QVariant>(*day) : std::nullopt;
    }
    if (value.isNull())
        return QString(QLatin1String(""));
    if (value.typeId() != QMetaType::QString)
        return std::nullopt;
    const auto &words = *static_cast<const QString *>(value.constData());
    if (words.size() > longestText || words.contains(QLatin1Char('\'')))
        return std::nullopt;
    if (words.contains(placeholder))
        return QString(words).remove(placeholder);
    return value;
}

bool isLiteral(JetLexer::Kind kind)
{
    return kind == JetLexer::Kind::Text || kind == JetLexer::Kind::Number ||
           kind == JetLexer::Kind::Date;
}

/// The literals of a statement in order; nothing when it is none that the lexer can read by shape
/// alone.
std::optional<std::vector<JetLexer::Token>> literalsOf(const QString &statement)
{
    std::vector<JetLexer::Token> literals;
    try {
        JetLexer lexer(statement);
        while (lexer.peek().kind != JetLexer::Kind::End) {
            const JetLexer::Token token = lexer.take();
            if (isLiteral(token.kind))
                literals.push_back(token);
        }
    } catch (const DbError &) {
        return std::nullopt;
    }
    return literals;
}

/// Where the text of a literal begins: behind its quote.
qsizetype beginOf(const JetLexer::Token &literal)
{
    return literal.at + (literal.kind == JetLexer::Kind::Number ? 0 : 1);
}

template <typename Literals>
auto datesIn(const Literals &literals)
{
    return std::count_if(literals.begin(), literals.end(),
                         [](const auto &literal) { return literal.kind == JetLexer::Kind::Date; });
}
} // namespace

std::optional<JetShape> JetShape::of(const QString &sql, const QVariantList &values,
                                     const JetStatement &translated)
{
    const auto literals = literalsOf(filled(sql, values));
    // A pattern is bound more than once.
    if (translated.kind == JetStatement::Kind::Schema || !literals ||
        static_cast<qsizetype>(literals->size()) != translated.values.size() ||
        sql.count(placeholder) != values.size())
        return std::nullopt;
    JetShape shape;
    shape.m_statement = translated;
    qsizetype grown = 0; // how far the text filled so far is ahead of the one with placeholders
    qsizetype at = -1;
    size_t next = 0;
    for (const QVariant &value : values) {
        at = sql.indexOf(placeholder, at + 1);
        const auto size = filled(QString(placeholder), {value}).size();
        // The literal that begins with the value, or with the quote in front of it, and holds
        // nothing else.
        while (next < literals->size() && beginOf(literals->at(next)) != at + grown)
            ++next;
        if (next == literals->size() || literals->at(next).text.size() != size)
            return std::nullopt;
        const JetLexer::Kind kind = literals->at(next).kind;
        if (!bound(value, kind, anyDay))
            return std::nullopt;
        shape.m_lifted.push_back({static_cast<qsizetype>(next), kind});
        grown += size - 1;
    }
    // One that was not lifted may mean another day tomorrow.
    if (datesIn(*literals) != datesIn(shape.m_lifted))
        return std::nullopt;
    return shape;
}

std::optional<JetStatement> JetShape::bind(const QVariantList &values, const QDate &today) const
{
    if (values.size() != static_cast<qsizetype>(m_lifted.size()))
        return std::nullopt;
    JetStatement statement = m_statement;
    for (qsizetype i = 0; i < values.size(); ++i) {
        const Lifted &lifted = m_lifted[static_cast<size_t>(i)];
        auto value = bound(values[i], lifted.kind, today);
        if (!value)
            return std::nullopt;
        statement.values[lifted.literal] = std::move(*value);
    }
    return statement;
}

} // namespace venlo
