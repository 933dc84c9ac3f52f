#include "platform/Console.h"

namespace venlo
{

void joinConsole() {}

QByteArray consoleText(std::FILE * /*stream*/, const QString &line)
{
    return line.toLocal8Bit();
}

} // namespace venlo
