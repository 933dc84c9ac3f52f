#include <string>
#include <system_error>
#include <vector>

#include <windows.h>

#include <QDir>

#include "platform/Disk.h"
#include "platform/Files.h"
#include "platform/LongPath_windows.h"

namespace venlo
{

namespace
{
bool isFolder(DWORD attributes)
{
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

/// Junctions and symbolic links: the entry goes, what it points at stays. A folder that a storage
/// service keeps elsewhere too is none.
bool isLink(const WIN32_FIND_DATAW &entry)
{
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           (entry.dwReserved0 == IO_REPARSE_TAG_SYMLINK ||
            entry.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT);
}

bool deleteEntry(const std::wstring &path, DWORD attributes)
{
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0)
        SetFileAttributesW(path.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
    return (isFolder(attributes) ? RemoveDirectoryW(path.c_str()) : DeleteFileW(path.c_str())) !=
           FALSE;
}

struct Level {
    std::wstring path;
    DWORD attributes = 0;
    bool listed = false;
};

/// Deletes the files and links of a folder and appends its folders to the work list.
bool deleteFiles(const std::wstring &folder, std::vector<Level> &work,
                 const std::function<bool()> &goOn)
{
    WIN32_FIND_DATAW entry = {};
    const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE)
        return false;
    bool ok = true;
    do {
        const std::wstring name = entry.cFileName;
        if (name == L"." || name == L"..")
            continue;
        if (goOn && !goOn()) {
            FindClose(search);
            SetLastError(ERROR_CANCELLED);
            return false;
        }
        const std::wstring path = folder + L"\\" + name;
        if (isFolder(entry.dwFileAttributes) && !isLink(entry))
            work.push_back({path, entry.dwFileAttributes, false});
        else
            ok = deleteEntry(path, entry.dwFileAttributes);
    } while (ok && FindNextFileW(search, &entry) != FALSE);
    const DWORD error = GetLastError();
    FindClose(search);
    SetLastError(error);
    return ok && error == ERROR_NO_MORE_FILES;
}

bool removeAll(const std::wstring &path, const std::function<bool()> &goOn)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return false;
    std::error_code error;
    if (disk::symlink_status(path, error).type() == std::filesystem::file_type::symlink)
        return deleteEntry(path, attributes);
    std::vector<Level> work = {{path, attributes, false}};
    while (!work.empty()) {
        const Level level = work.back();
        if (level.listed) {
            if (!deleteEntry(level.path, level.attributes))
                return false;
            work.pop_back();
            continue;
        }
        work.back().listed = true;
        if (!deleteFiles(level.path, work, goOn))
            return false;
    }
    return true;
}
} // namespace

bool removeFolderTree(const QString &path, QString &why)
{
    return removeFolderTree(path, why, {});
}

bool removeFolderTree(const QString &path, QString &why, const std::function<bool()> &goOn)
{
    SetLastError(ERROR_INVALID_PARAMETER);
    if (!path.isEmpty() && !QDir(path).isRoot() && removeAll(longPath(path), goOn))
        return true;
    const auto error = static_cast<int>(GetLastError());
    if (error != ERROR_CANCELLED)
        why = QString::fromLocal8Bit(std::system_category().message(error).c_str());
    return false;
}

} // namespace venlo
