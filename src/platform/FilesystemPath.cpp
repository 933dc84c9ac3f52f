#include "platform/FilesystemPath.h"

namespace venlo
{

QString systemWords(const std::error_code &error)
{
    return QString::fromLocal8Bit(error.message().c_str());
}

bool isUnusableName(const QString &name)
{
    return name.contains(QLatin1Char('\r')) || name.contains(QLatin1Char('\n')) ||
           name.contains(QLatin1Char('\t')) || name.contains(QChar::ReplacementCharacter);
}

} // namespace venlo
