#include "db/JetLexer.h"

#include "db/DbError.h"

namespace venlo
{

namespace
{
/// Far above any statement of the program, low enough that a text cannot stall it.
constexpr qsizetype longestStatement = 1 << 20;

bool isBlank(QChar c)
{
    return c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('\r') ||
           c == QLatin1Char('\n');
}

bool isDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

bool startsName(QChar c)
{
    return c.isLetter() || c == QLatin1Char('_');
}

bool continuesName(QChar c)
{
    return startsName(c) || isDigit(c);
}
} // namespace

JetLexer::JetLexer(QString statement) : m_statement(std::move(statement))
{
    if (m_statement.size() > longestStatement)
        failAt(longestStatement, QStringLiteral("文が長すぎます"));
}

const JetLexer::Token &JetLexer::peek()
{
    if (!m_next)
        m_next = lex(skipBlanks(m_at), m_end);
    return *m_next;
}

JetLexer::Token JetLexer::take()
{
    Token token = peek();
    seek(m_end);
    return token;
}

void JetLexer::seek(qsizetype position)
{
    m_at = position;
    m_next.reset();
}

bool JetLexer::atWord(QLatin1String word)
{
    return peek().kind == Kind::Word && peek().text.compare(word, Qt::CaseInsensitive) == 0;
}

bool JetLexer::atSymbol(QLatin1String symbol)
{
    return peek().kind == Kind::Symbol && peek().text == symbol;
}

bool JetLexer::takeWord(QLatin1String word)
{
    const bool found = atWord(word);
    if (found)
        take();
    return found;
}

bool JetLexer::takeSymbol(QLatin1String symbol)
{
    const bool found = atSymbol(symbol);
    if (found)
        take();
    return found;
}

void JetLexer::expectWord(QLatin1String word)
{
    if (!takeWord(word))
        failHere();
}

void JetLexer::expectSymbol(QLatin1String symbol)
{
    if (!takeSymbol(symbol))
        failHere();
}

QString JetLexer::expectName()
{
    if (peek().kind != Kind::Word)
        failHere();
    return take().text;
}

QString JetLexer::takeTableName()
{
    const auto from = skipBlanks(m_at);
    auto end = from;
    for (; end < m_statement.size() && !isBlank(m_statement[end]); ++end) {
        const QChar c = m_statement[end];
        if (c == QLatin1Char('(') || c == QLatin1Char(')'))
            break;
        if (c == QLatin1Char('\'') || c == QLatin1Char('?') || c.isNull())
            failAt(end, QStringLiteral("ﾃｰﾌﾞﾙ名に使えない文字があります"));
    }
    if (end == from)
        failAt(from, QStringLiteral("ﾃｰﾌﾞﾙ名がありません"));
    seek(end);
    return m_statement.mid(from, end - from);
}

void JetLexer::expectEnd()
{
    takeSymbol(QLatin1String(";"));
    if (peek().kind != Kind::End)
        failHere();
}

void JetLexer::failAt(qsizetype at, const QString &words)
{
    throw DbError(QStringLiteral("SQL文の %1 文字目: %2").arg(QString::number(at + 1), words));
}

void JetLexer::failHere()
{
    const Token token = peek();
    if (token.kind == Kind::End)
        failAt(token.at, QStringLiteral("文が途中で終わっています"));
    failAt(token.at, QStringLiteral("\"%1\" はここに書けません").arg(token.text));
}

qsizetype JetLexer::skipBlanks(qsizetype at) const
{
    while (at < m_statement.size() && isBlank(m_statement[at]))
        ++at;
    return at;
}

JetLexer::Token JetLexer::lex(qsizetype from, qsizetype &end) const
{
    end = from;
    if (from >= m_statement.size())
        return {Kind::End, {}, from};
    const QChar c = m_statement[from];
    if (c == QLatin1Char('\''))
        return lexText(from, end);
    if (c == QLatin1Char('#'))
        return lexDate(from, end);
    if (isDigit(c))
        return lexNumber(from, end);
    if (startsName(c)) {
        while (end < m_statement.size() && continuesName(m_statement[end]))
            ++end;
        return {Kind::Word, m_statement.mid(from, end - from), from};
    }
    const auto pair = QStringView(m_statement).mid(from, 2);
    if (pair == QLatin1String("<>") || pair == QLatin1String("<=") || pair == QLatin1String(">=")) {
        end = from + 2;
        return {Kind::Symbol, pair.toString(), from};
    }
    if (!QStringView(u"(),=<>+-*;").contains(c))
        failAt(from, QStringLiteral("\"%1\" はここに書けません").arg(c));
    end = from + 1;
    return {Kind::Symbol, QString(c), from};
}

/// Between single quotes; a doubled quote is one quote.
JetLexer::Token JetLexer::lexText(qsizetype from, qsizetype &end) const
{
    constexpr QLatin1Char quote('\'');
    QString text;
    for (auto at = from + 1;;) {
        const auto close = m_statement.indexOf(quote, at);
        if (close < 0)
            failAt(from, QStringLiteral("文字列が ' で閉じられていません"));
        text += QStringView(m_statement).mid(at, close - at);
        end = close + 1;
        if (end >= m_statement.size() || m_statement[end] != quote)
            return {Kind::Text, text, from};
        text += quote;
        at = end + 1;
    }
}

JetLexer::Token JetLexer::lexDate(qsizetype from, qsizetype &end) const
{
    const auto close = m_statement.indexOf(QLatin1Char('#'), from + 1);
    if (close < 0)
        failAt(from, QStringLiteral("日付が # で閉じられていません"));
    end = close + 1;
    return {Kind::Date, m_statement.mid(from + 1, close - from - 1), from};
}

/// Digits, a fraction and an exponent, as numbers turn into text.
JetLexer::Token JetLexer::lexNumber(qsizetype from, qsizetype &end) const
{
    const auto digits = [this](qsizetype at) {
        while (at < m_statement.size() && isDigit(m_statement[at]))
            ++at;
        return at;
    };
    end = digits(from);
    if (end < m_statement.size() && m_statement[end] == QLatin1Char('.'))
        end = digits(end + 1);
    if (end < m_statement.size() && m_statement[end].toLower() == QLatin1Char('e')) {
        auto at = end + 1;
        if (at < m_statement.size() && QStringView(u"+-").contains(m_statement[at]))
            ++at;
        if (digits(at) == at)
            failAt(from, QStringLiteral("数値の形が正しくありません"));
        end = digits(at);
    }
    if (end < m_statement.size() && continuesName(m_statement[end]))
        failAt(from, QStringLiteral("数値の形が正しくありません"));
    return {Kind::Number, m_statement.mid(from, end - from), from};
}

} // namespace venlo
