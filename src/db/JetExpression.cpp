#include "db/JetExpression.h"

#include "db/JetDate.h"
#include "db/TextFold.h"

#include <utility>

namespace venlo
{

namespace
{
using Kind = JetPiece::Kind;

/// Enough for any person, few enough for the stack.
constexpr int deepestNesting = 50;

/// Counts a level of nesting for a scope.
class Level
{
public:
    Level(int &depth, JetLexer &lexer) : m_depth(depth)
    {
        if (m_depth >= deepestNesting)
            JetLexer::failAt(lexer.position(), QStringLiteral("括弧や Not の重なりが深すぎます"));
        ++m_depth;
    }
    ~Level() { --m_depth; }
    Level(const Level &) = delete;
    Level &operator=(const Level &) = delete;

private:
    int &m_depth;
};

[[noreturn]] void failKinds(qsizetype at)
{
    JetLexer::failAt(at, QStringLiteral("型が一致しません"));
}

bool isLogical(Kind kind)
{
    return kind == Kind::Truth || kind == Kind::YesNo;
}

/// A comparison yields 1 below and -1 here.
QString asValue(const JetPiece &piece)
{
    return piece.kind == Kind::Truth ? QStringLiteral("-(%1)").arg(piece.sql) : piece.sql;
}

/// Any number but 0 is true.
QString asTruth(const JetPiece &piece)
{
    return QStringLiteral("((%1) <> 0)").arg(piece.sql);
}

Kind kindOf(JetType type)
{
    switch (type) {
    case JetType::Text:
    case JetType::Memo:
        return Kind::Text;
    case JetType::Byte:
    case JetType::Long:
        return Kind::Number;
    case JetType::Date:
        return Kind::Date;
    case JetType::YesNo:
        return Kind::YesNo;
    case JetType::Private:
        break;
    }
    return Kind::Null;
}

bool fits(Kind value, Kind column)
{
    if (value == Kind::Null || value == column)
        return true;
    switch (column) {
    case Kind::Text:
        return value == Kind::Number;
    case Kind::Number:
        return value == Kind::Text || isLogical(value);
    case Kind::Date:
        return value == Kind::Number;
    case Kind::YesNo:
        return value == Kind::Number || value == Kind::Truth;
    case Kind::Null:
    case Kind::Truth:
        break;
    }
    return false;
}
} // namespace

JetExpression::JetExpression(JetLexer &lexer, const JetTable &table, const QDate &today,
                             QVariantList &values)
    : m_lexer(lexer), m_table(table), m_today(today), m_values(values)
{
}

QString JetExpression::condition()
{
    const auto at = m_lexer.position();
    const JetPiece piece = either();
    requireTruth(piece, at);
    return piece.sql;
}

QString JetExpression::value()
{
    return asValue(either());
}

QString JetExpression::valueFor(const JetColumn &column)
{
    const auto at = m_lexer.position();
    const JetPiece piece = either();
    if (!fits(piece.kind, kindOf(column.type)))
        failKinds(at);
    if (column.type == JetType::YesNo)
        return QStringLiteral("venlo_yesno(%1)").arg(piece.sql);
    return asValue(piece);
}

const JetColumn &JetExpression::column(const QString &name, qsizetype at) const
{
    const JetColumn *found = m_table.column(name);
    if (!found || found->type == JetType::Private)
        JetLexer::failAt(at, QStringLiteral("列 \"%1\" がありません").arg(name));
    return *found;
}

void JetExpression::requireTruth(const JetPiece &piece, qsizetype at) const
{
    if (piece.kind == Kind::Text || piece.kind == Kind::Date)
        failKinds(at);
}

JetPiece JetExpression::either()
{
    auto at = m_lexer.position();
    JetPiece left = both();
    while (m_lexer.takeWord(QLatin1String("Or"))) {
        requireTruth(left, at);
        at = m_lexer.position();
        const JetPiece right = both();
        requireTruth(right, at);
        left.sql += QStringLiteral(" OR ") + right.sql;
        left = {std::move(left.sql), Kind::Truth};
    }
    return left;
}

JetPiece JetExpression::both()
{
    auto at = m_lexer.position();
    JetPiece left = negation();
    while (m_lexer.takeWord(QLatin1String("And"))) {
        requireTruth(left, at);
        at = m_lexer.position();
        const JetPiece right = negation();
        requireTruth(right, at);
        left.sql += QStringLiteral(" AND ") + right.sql;
        left = {std::move(left.sql), Kind::Truth};
    }
    return left;
}

JetPiece JetExpression::negation()
{
    if (!m_lexer.takeWord(QLatin1String("Not")))
        return comparison();
    const Level level(m_depth, m_lexer);
    const auto at = m_lexer.position();
    const JetPiece piece = negation();
    requireTruth(piece, at);
    return {QStringLiteral("NOT (%1)").arg(piece.sql), Kind::Truth};
}

JetPiece JetExpression::comparison()
{
    const JetPiece left = sum();
    if (m_lexer.takeWord(QLatin1String("Is")))
        return isNull(left);
    const bool negated = m_lexer.takeWord(QLatin1String("Not"));
    if (negated || m_lexer.atWord(QLatin1String("Like"))) {
        m_lexer.expectWord(QLatin1String("Like"));
        return like(left, negated);
    }
    for (const char *sign : {"=", "<>", "<=", ">=", "<", ">"}) {
        if (m_lexer.takeSymbol(QLatin1String(sign)))
            return compared(left, QLatin1String(sign), sum());
    }
    return left;
}

JetPiece JetExpression::isNull(const JetPiece &left)
{
    const bool negated = m_lexer.takeWord(QLatin1String("Not"));
    m_lexer.expectWord(QLatin1String("Null"));
    return {QStringLiteral("(%1) IS %2NULL")
                .arg(left.sql, negated ? QStringLiteral("NOT ") : QString()),
            Kind::Truth};
}

/// A pattern with a fixed beginning becomes a range of the column, which the index answers, and
/// the exact test of what the range lets through.
JetPiece JetExpression::like(const JetPiece &left, bool negated)
{
    const auto at = m_lexer.position();
    const JetPiece right = sum();
    if (left.kind != Kind::Text || right.kind != Kind::Text)
        failKinds(at);
    QString sql = QStringLiteral("venlo_like(%1, %2)").arg(left.sql, right.sql);
    if (left.column && right.literal) {
        const QVariant pattern = m_values.last();
        if (const auto bounds = likeBounds(pattern.toString())) {
            m_values.removeLast();
            m_values << bounds->low << bounds->high << pattern;
            sql = QStringLiteral("(%1 >= ? AND %1 < ? AND %2)").arg(left.sql, sql);
        }
    }
    return {negated ? QStringLiteral("NOT ") + sql : sql, Kind::Truth};
}

JetPiece JetExpression::compared(const JetPiece &left, const QString &sign, const JetPiece &right)
{
    const bool anyNull = left.kind == Kind::Null || right.kind == Kind::Null;
    if (!anyNull && (left.kind == Kind::Text) != (right.kind == Kind::Text))
        failKinds(m_lexer.position());
    const QString form = QStringLiteral("%1 ") + sign + QStringLiteral(" %2");
    if ((isLogical(left.kind) || isLogical(right.kind)) && !anyNull)
        return {form.arg(asTruth(left), asTruth(right)), Kind::Truth};
    const bool bare = left.kind == Kind::Text && !left.column && !right.column;
    return {form.arg(bare ? left.sql + QStringLiteral(" COLLATE venlo") : left.sql, right.sql),
            Kind::Truth};
}

JetPiece JetExpression::sum()
{
    JetPiece left = sign();
    while (m_lexer.atSymbol(QLatin1String("+")) || m_lexer.atSymbol(QLatin1String("-"))) {
        const JetLexer::Token token = m_lexer.take();
        const JetPiece right = sign();
        const bool text = left.kind == Kind::Text || right.kind == Kind::Text;
        const bool mixed =
            text && left.kind != right.kind && left.kind != Kind::Null && right.kind != Kind::Null;
        if (mixed || (text && token.text == QLatin1String("-")))
            failKinds(token.at);
        const QString join = text ? QStringLiteral(" || ") : QStringLiteral(" %1 ").arg(token.text);
        const bool dated = left.kind == Kind::Date || right.kind == Kind::Date;
        left.kind = text ? Kind::Text : (dated ? Kind::Date : Kind::Number);
        left.sql += join + right.sql;
        left.column = left.literal = false;
    }
    return left;
}

JetPiece JetExpression::sign()
{
    if (!m_lexer.atSymbol(QLatin1String("-")))
        return primary();
    const Level level(m_depth, m_lexer);
    const auto at = m_lexer.take().at;
    const JetPiece piece = sign();
    if (piece.kind == Kind::Text || piece.kind == Kind::Date)
        failKinds(at);
    return {QStringLiteral("-(%1)").arg(piece.sql), Kind::Number};
}

JetPiece JetExpression::primary()
{
    switch (m_lexer.peek().kind) {
    case JetLexer::Kind::Text: {
        JetPiece text = bound(m_lexer.take().text, Kind::Text);
        text.literal = true;
        return text;
    }
    case JetLexer::Kind::Number:
        return number();
    case JetLexer::Kind::Date:
        return date();
    case JetLexer::Kind::Word:
        return word();
    case JetLexer::Kind::Symbol:
    case JetLexer::Kind::End:
        break;
    }
    m_lexer.expectSymbol(QLatin1String("("));
    const Level level(m_depth, m_lexer);
    JetPiece inner = either();
    m_lexer.expectSymbol(QLatin1String(")"));
    inner.sql = QStringLiteral("(%1)").arg(inner.sql);
    return inner;
}

JetPiece JetExpression::word()
{
    if (m_lexer.takeWord(QLatin1String("Null")))
        return {QStringLiteral("NULL"), Kind::Null};
    if (m_lexer.takeWord(QLatin1String("True")))
        return {QStringLiteral("-1"), Kind::YesNo};
    if (m_lexer.takeWord(QLatin1String("False")))
        return {QStringLiteral("0"), Kind::YesNo};
    const JetLexer::Token name = m_lexer.take();
    if (m_lexer.atSymbol(QLatin1String("("))) {
        if (name.text.compare(QLatin1String("Mid"), Qt::CaseInsensitive) == 0)
            return mid();
        JetLexer::failAt(name.at, QStringLiteral("関数 \"%1\" はありません").arg(name.text));
    }
    const JetColumn &found = column(name.text, name.at);
    return {quotedName(found.name), kindOf(found.type), true};
}

JetPiece JetExpression::mid()
{
    const Level level(m_depth, m_lexer);
    const auto at = m_lexer.position();
    m_lexer.expectSymbol(QLatin1String("("));
    const JetPiece text = sum();
    m_lexer.expectSymbol(QLatin1String(","));
    const JetPiece start = sum();
    QString arguments = QStringLiteral("%1, %2").arg(text.sql, start.sql);
    bool numbers = start.kind == Kind::Number;
    if (m_lexer.takeSymbol(QLatin1String(","))) {
        const JetPiece length = sum();
        numbers = numbers && length.kind == Kind::Number;
        arguments += QStringLiteral(", ") + length.sql;
    }
    m_lexer.expectSymbol(QLatin1String(")"));
    if (text.kind != Kind::Text || !numbers)
        failKinds(at);
    return {QStringLiteral("venlo_mid(%1)").arg(arguments), Kind::Text};
}

JetPiece JetExpression::number()
{
    const JetLexer::Token token = m_lexer.take();
    bool whole = false;
    const qlonglong integer = token.text.toLongLong(&whole);
    if (whole)
        return bound(integer, Kind::Number);
    bool real = false;
    const double fraction = token.text.toDouble(&real);
    if (!real)
        JetLexer::failAt(token.at, QStringLiteral("数値が大きすぎます"));
    return bound(fraction, Kind::Number);
}

JetPiece JetExpression::date()
{
    const JetLexer::Token token = m_lexer.take();
    const auto days = dayCountOfLiteral(token.text, m_today);
    if (!days)
        JetLexer::failAt(token.at, QStringLiteral("\"%1\" は日付ではありません").arg(token.text));
    return bound(*days, Kind::Date);
}

JetPiece JetExpression::bound(const QVariant &value, Kind kind)
{
    m_values.append(value);
    return {QStringLiteral("?"), kind};
}

} // namespace venlo
