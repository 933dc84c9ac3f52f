// Sums and what they are made of: literals, columns, functions, parentheses.
#include "db/JetDate.h"
#include "db/JetExpression.h"
#include "db/JetExpressionParts.h"

namespace venlo
{

namespace
{
using Kind = JetPiece::Kind;
}

JetPiece::Kind jetKindOf(JetType type)
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

JetNesting::JetNesting(int &depth, const JetLexer &lexer) : m_depth(depth)
{
    if (m_depth >= deepest)
        JetLexer::failAt(lexer.position(), QStringLiteral("括弧や Not の重なりが深すぎます"));
    ++m_depth;
}

void failJetKinds(qsizetype at)
{
    JetLexer::failAt(at, QStringLiteral("型が一致しません"));
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
            failJetKinds(token.at);
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
    const JetNesting level(m_depth, m_lexer);
    const auto at = m_lexer.take().at;
    const JetPiece piece = sign();
    if (piece.kind == Kind::Text || piece.kind == Kind::Date)
        failJetKinds(at);
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
    const JetNesting level(m_depth, m_lexer);
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
    return {quotedName(found.name), jetKindOf(found.type), true};
}

JetPiece JetExpression::mid()
{
    const JetNesting level(m_depth, m_lexer);
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
        failJetKinds(at);
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
