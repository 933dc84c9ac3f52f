#include "platform/Files.h"

#include <io.h>
#include <windows.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "platform/LongPath_windows.h"

namespace venlo
{

bool makePrivateFolder(const QString &path)
{
    return QDir(path).exists(); // a folder of the profile is its owner's alone already
}

bool makePrivateFile(const QString &path)
{
    return QFile::exists(path);
}

bool openToOthers(const QString & /*path*/)
{
    return false;
}

bool flushToDisk(QFile &file)
{
    if (!file.flush())
        return false;
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(file.handle()));
    return handle != INVALID_HANDLE_VALUE && FlushFileBuffers(handle) != FALSE;
}

/// Folders that hold an open file are neither moved nor replaced.
QString presentPath(const QFile &file)
{
    return QFileInfo(file).absoluteFilePath();
}

bool replaceFile(const QString &from, const QString &to)
{
    return MoveFileExW(longPath(from).c_str(), longPath(to).c_str(),
                       MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != FALSE;
}

bool moveFolderIntoPlace(const QString &from, const QString &to)
{
    return MoveFileExW(longPath(from).c_str(), longPath(to).c_str(), MOVEFILE_WRITE_THROUGH) !=
           FALSE;
}

bool setModifiedTime(const QString &path, const QDateTime &time)
{
    if (!time.isValid())
        return false;
    QFile file(path);
    // Opened for appending: opening for writing would empty the file.
    return file.open(QIODevice::ReadWrite | QIODevice::Append | QIODevice::ExistingOnly) &&
           file.setFileTime(time, QFileDevice::FileModificationTime);
}

} // namespace venlo
