#include "db/JetShape.h"

#include "db/DbError.h"
#include "db/FillParams.h"
#include "db/JetLexer.h"

namespace venlo
{

namespace
{
constexpr QLatin1Char placeholder('?');
/// A longer text goes the long way, which knows the limits of a statement.
constexpr qsizetype longestText = 4096;

/// A value as it is bound; nothing when it is not of the kind.
std::optional<QVariant> bound(const QVariant &value, bool text)
{
    if (!text) {
        const bool integer =
            value.typeId() == QMetaType::Int || value.typeId() == QMetaType::LongLong;
        // A sign is no part of the literal.
        if (!integer || value.toLongLong() < 0)
            return std::nullopt;
        return value;
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

/// The literals of a statement in order; nothing when it holds a date or is none that the lexer
/// can read by shape alone.
std::optional<std::vector<JetLexer::Token>> literalsOf(const QString &statement)
{
    std::vector<JetLexer::Token> literals;
    try {
        JetLexer lexer(statement);
        while (lexer.peek().kind != JetLexer::Kind::End) {
            const JetLexer::Token token = lexer.take();
            if (token.kind == JetLexer::Kind::Date)
                return std::nullopt;
            if (token.kind == JetLexer::Kind::Text || token.kind == JetLexer::Kind::Number)
                literals.push_back(token);
        }
    } catch (const DbError &) {
        return std::nullopt;
    }
    return literals;
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
        const auto begins = [&](const JetLexer::Token &token) {
            return token.at + (token.kind == JetLexer::Kind::Text ? 1 : 0) == at + grown;
        };
        while (next < literals->size() && !begins(literals->at(next)))
            ++next;
        if (next == literals->size() || literals->at(next).text.size() != size)
            return std::nullopt;
        const bool text = literals->at(next).kind == JetLexer::Kind::Text;
        if (!bound(value, text))
            return std::nullopt;
        shape.m_lifted.push_back({static_cast<qsizetype>(next), text});
        grown += size - 1;
    }
    return shape;
}

std::optional<JetStatement> JetShape::bind(const QVariantList &values) const
{
    if (values.size() != static_cast<qsizetype>(m_lifted.size()))
        return std::nullopt;
    JetStatement statement = m_statement;
    for (qsizetype i = 0; i < values.size(); ++i) {
        const Lifted &lifted = m_lifted[static_cast<size_t>(i)];
        auto value = bound(values[i], lifted.text);
        if (!value)
            return std::nullopt;
        statement.values[lifted.literal] = std::move(*value);
    }
    return statement;
}

} // namespace venlo
