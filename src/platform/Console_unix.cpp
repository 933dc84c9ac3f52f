#include "platform/Console.h"

#include <clocale>

namespace venlo
{

void useSystemEncoding()
{
    std::setlocale(LC_CTYPE, "");
}

ConsoleStreams joinConsole()
{
    return {};
}

QByteArray consoleText(std::FILE * /*stream*/, const QString &line)
{
    return line.toLocal8Bit();
}

} // namespace venlo
