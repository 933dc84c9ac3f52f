#pragma once

#include <QLatin1String>
#include <QString>

#include <optional>

namespace venlo
{

/// Reads a Jet statement token by token. Table names are read by position, not by shape, because
/// they may look like anything. Every failure is a DbError that gives the position (characters
/// from 1).
class JetLexer
{
public:
    enum class Kind { End, Word, Number, Text, Date, Symbol };
    struct Token {
        Kind kind = Kind::End;
        QString text; ///< content without the quotes or number signs
        qsizetype at = 0;
    };

    explicit JetLexer(QString statement);

    [[nodiscard]] const Token &peek();
    Token take();

    [[nodiscard]] bool atWord(QLatin1String word);
    [[nodiscard]] bool atSymbol(QLatin1String symbol);
    /// Takes the word or symbol when it is next.
    bool takeWord(QLatin1String word);
    bool takeSymbol(QLatin1String symbol);
    void expectWord(QLatin1String word);
    void expectSymbol(QLatin1String symbol);
    [[nodiscard]] QString expectName();
    /// Everything up to the next blank or parenthesis. May hold anything but quotes, placeholders
    /// and NUL.
    [[nodiscard]] QString takeTableName();
    /// A single ";" and blanks may follow a statement, nothing else.
    void expectEnd();

    /// Where the next token begins.
    [[nodiscard]] qsizetype position() const { return skipBlanks(m_at); }
    void seek(qsizetype position);

    [[noreturn]] static void failAt(qsizetype at, const QString &words);
    /// Names what stands at the next token.
    [[noreturn]] void failHere();

private:
    [[nodiscard]] qsizetype skipBlanks(qsizetype at) const;
    Token lex(qsizetype from, qsizetype &end) const;
    Token lexText(qsizetype from, qsizetype &end) const;
    Token lexDate(qsizetype from, qsizetype &end) const;
    Token lexNumber(qsizetype from, qsizetype &end) const;

    QString m_statement;
    qsizetype m_at = 0;
    qsizetype m_end = 0;
    std::optional<Token> m_next;
};

} // namespace venlo
