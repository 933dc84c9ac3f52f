#include "platform/FilesystemPath.h"

#include <QFile>

namespace venlo
{

std::filesystem::path filesystemPath(const QString &path)
{
    QByteArray name = QFile::encodeName(path);
    while (name.size() > 1 && name.endsWith('/')) // "link/" would mean what the link points at
        name.chop(1);
    return {name.toStdString()};
}

QString shownPath(const std::filesystem::path &path)
{
    return QFile::decodeName(QByteArray::fromStdString(path.native()));
}

} // namespace venlo
