#include "support/RawFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace venlo::test
{

QByteArray rawPath(const QString &path)
{
    return QDir::fromNativeSeparators(path).toUtf8();
}

QByteArray rawPath(const std::filesystem::path &path)
{
    return rawPath(QString::fromStdWString(path.native()));
}

std::filesystem::path diskPath(const QByteArray &path)
{
    return QString::fromUtf8(path).toStdWString();
}

bool writeFile(const QByteArray &path, const QByteArray &bytes, const QDateTime &modified)
{
    QFile file(QString::fromUtf8(path));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush())
        return false;
    return !modified.isValid() || file.setFileTime(modified, QFileDevice::FileModificationTime);
}

QByteArray readFile(const QByteArray &path)
{
    QFile file(QString::fromUtf8(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool makeFolders(const QByteArray &path)
{
    return QDir().mkpath(QString::fromUtf8(path));
}

QDateTime modifiedTime(const QByteArray &path)
{
    return QFileInfo(QString::fromUtf8(path)).lastModified().toUTC();
}

} // namespace venlo::test
