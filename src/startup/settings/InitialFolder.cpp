#include "startup/settings/InitialFolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include "platform/Files.h"
#include "startup/settings/StaleFiles.h"

namespace venlo
{

namespace
{
bool copyDatabase(const QString &from, const QString &to)
{
    if (!QFile::copy(from, to) || !makePrivateFile(to))
        return false;
    QFile copy(to);
    return copy.open(QIODevice::ReadWrite) && flushToDisk(copy);
}

bool makeWholeFolder(const QFileInfo &target, const QString &initialDatabase)
{
    // A name beside the target, so that the rename stays within one file system.
    const QString stem = QLatin1Char('.') + target.fileName() + QStringLiteral(".new-");
    const QString parent = target.absolutePath();
    removeStale(parent, stem + QStringLiteral("??????"));
    QTemporaryDir folder(parent + QLatin1Char('/') + stem + QStringLiteral("XXXXXX"));
    if (!folder.isValid() || !makePrivateFolder(folder.path()))
        return false;
    const QString database = folder.filePath(QFileInfo(initialDatabase).fileName());
    if (!copyDatabase(initialDatabase, database))
        return false;
    if (!moveFolderIntoPlace(folder.path(), target.absoluteFilePath()))
        return false;
    folder.setAutoRemove(false);
    return true;
}
} // namespace

bool F_CreateFld(const QString &path)
{
    return QDir().mkpath(path);
}

bool createUserDataFolder(const QString &path, const QString &initialDatabase)
{
    const QFileInfo target(QDir::cleanPath(QDir::fromNativeSeparators(path)));
    return (F_CreateFld(target.absolutePath()) && makeWholeFolder(target, initialDatabase)) ||
           target.isDir();
}

} // namespace venlo
