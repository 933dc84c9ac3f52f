#include "platform/FilesystemPath.h"

#include "platform/LongPath_windows.h"

namespace venlo
{

std::filesystem::path filesystemPath(const QString &path)
{
    return {longPath(path)};
}

QString shownPath(const std::filesystem::path &path)
{
    static const QString share = QStringLiteral("\\\\?\\UNC\\");
    static const QString local = QStringLiteral("\\\\?\\");
    const QString text = QString::fromStdWString(path.native());
    if (text.startsWith(share))
        return QStringLiteral("\\\\") + text.mid(share.size());
    return text.startsWith(local) ? text.mid(local.size()) : text;
}

} // namespace venlo
