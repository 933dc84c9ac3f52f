#include "db/JetExpression.h"

#include "db/JetExpressionParts.h"
#include "db/TextFold.h"

#include <utility>

namespace venlo
{

namespace
{
using Kind = JetPiece::Kind;

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
    if (!fits(piece.kind, jetKindOf(column.type)))
        failJetKinds(at);
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
        failJetKinds(at);
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
    const JetNesting level(m_depth, m_lexer);
    const auto at = m_lexer.position();
    const JetPiece piece = negation();
    requireTruth(piece, at);
    return {QStringLiteral("NOT (%1)").arg(piece.sql), Kind::Truth};
}

JetPiece JetExpression::comparison()
{
    JetPiece left = sum();
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
        failJetKinds(at);
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
        failJetKinds(m_lexer.position());
    const QString form = QStringLiteral("%1 ") + sign + QStringLiteral(" %2");
    if ((isLogical(left.kind) || isLogical(right.kind)) && !anyNull)
        return {form.arg(asTruth(left), asTruth(right)), Kind::Truth};
    const bool bare = left.kind == Kind::Text && !left.column && !right.column;
    return {form.arg(bare ? left.sql + QStringLiteral(" COLLATE venlo") : left.sql, right.sql),
            Kind::Truth};
}

} // namespace venlo
