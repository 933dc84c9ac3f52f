#pragma once

#include <cstdio>

#include <QByteArray>
#include <QString>

namespace venlo
{

/// Makes the C library take text in the encoding that the environment names. Call it before
/// anything else reads text from outside.
void useSystemEncoding();

/// Where an unattended run says what it does. They stay open to its end.
struct ConsoleStreams {
    std::FILE *results = stdout;
    std::FILE *messages = stderr;
};

/// Joins the console of whoever started the program, so that an unattended run says there what it
/// does: on Windows a program with windows comes without one. What was redirected stays so.
[[nodiscard]] ConsoleStreams joinConsole();

/// A line in the encoding of whoever reads the stream: a console's own on Windows, otherwise the
/// system's.
[[nodiscard]] QByteArray consoleText(std::FILE *stream, const QString &line);

} // namespace venlo
