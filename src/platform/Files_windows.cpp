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
    // Its owner's alone already; but the copy of a read-only file is one too.
    const std::wstring file = longPath(path);
    const DWORD attributes = GetFileAttributesW(file.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return false;
    return (attributes & FILE_ATTRIBUTE_READONLY) == 0 ||
           SetFileAttributesW(file.c_str(),
                              attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY)) != FALSE;
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

void flushFolder(const QString & /*folder*/) {}

bool replaceFile(const QString &from, const QString &to, FolderFlush /*flush*/)
{
    const std::wstring target = longPath(to);
    const DWORD before = GetFileAttributesW(target.c_str());
    if (before != INVALID_FILE_ATTRIBUTES && (before & FILE_ATTRIBUTE_READONLY) != 0)
        return false; // not every file system refuses by itself
    if (MoveFileExW(longPath(from).c_str(), target.c_str(),
                    MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == FALSE)
        return false;
    // What was hidden stays hidden.
    constexpr DWORD kept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    if (before != INVALID_FILE_ATTRIBUTES && (before & kept) != 0)
        SetFileAttributesW(target.c_str(), GetFileAttributesW(target.c_str()) | (before & kept));
    return true;
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
    // The attributes alone: a read-only file has a time too.
    const HANDLE file = CreateFileW(longPath(path).c_str(), FILE_WRITE_ATTRIBUTES,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    constexpr qint64 msFrom1601To1970 = 11'644'473'600'000;
    constexpr qint64 stepsPerMs = 10'000; // of 100 ns
    const auto steps =
        static_cast<quint64>((time.toMSecsSinceEpoch() + msFrom1601To1970) * stepsPerMs);
    const FILETIME modified = {static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
    const bool set = SetFileTime(file, nullptr, nullptr, &modified) != FALSE;
    CloseHandle(file);
    return set;
}

} // namespace venlo
