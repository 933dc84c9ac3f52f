#include "platform/FileNames.h"

#include <QFile>

namespace venlo
{

namespace
{
constexpr qsizetype longestName = 255; // bytes, NAME_MAX of every file system in use
}

QString whyNotAFileName(const QString &name)
{
    if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..") ||
        name.contains(QLatin1Char('/')) || name.contains(QChar(0)))
        return QStringLiteral("ﾌｧｲﾙ名に使用できない名前です");
    if (QFile::encodeName(name).size() > longestName)
        return QStringLiteral("名前が長すぎます");
    return {};
}

QString whyAnotherEntry(const QString & /*path*/)
{
    return {};
}

} // namespace venlo
