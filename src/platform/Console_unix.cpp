#include "platform/Console.h"

#include <clocale>

namespace venlo
{

void useSystemEncoding()
{
    std::setlocale(LC_CTYPE, "");
}

void joinConsole() {}

QByteArray consoleText(std::FILE * /*stream*/, const QString &line)
{
    return line.toLocal8Bit();
}

} // namespace venlo
