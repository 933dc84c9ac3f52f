#pragma once

#include <cstdio>

#include <QByteArray>
#include <QString>

namespace venlo
{

struct Outcome;

/// Writes what a run has to say on the two standard streams: results and one line per file on
/// stdout, messages on stderr, every line complete and flushed at once so that a killed run leaves
/// whole lines. UTF-8, on Windows the system code page, or a console's where the encoding says so.
/// Control characters in names are replaced, since a server's listing must not steer a terminal.
/// Owned by main; the streams stay the caller's.
class ConsolePrinter
{
public:
    /// A line's bytes for the reader of a stream.
    using Encoding = QByteArray (*)(std::FILE *stream, const QString &line);

    ConsolePrinter(std::FILE *results, std::FILE *messages, Encoding encoding = systemText)
        : m_results(results), m_messages(messages), m_encoding(encoding)
    {
    }

    /// One line: what was done, source, target, reason.
    void printOutcome(const Outcome &outcome);
    /// One line.
    void printResult(const QString &line);
    /// As many lines as the text has; "\r", "\n" and "\r\n" each end one.
    void printError(const QString &text);

    /// The line of an outcome without its line end: "ｱｯﾌﾟﾛｰﾄﾞ  C:\a → /b (…)".
    [[nodiscard]] static QString outcomeText(const Outcome &outcome);

private:
    void write(std::FILE *stream, const QString &line);
    [[nodiscard]] static QByteArray systemText(std::FILE *stream, const QString &line);

    std::FILE *m_results;
    std::FILE *m_messages;
    Encoding m_encoding;
};

} // namespace venlo
