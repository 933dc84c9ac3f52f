#pragma once

#include "platform/Disk_windows.h"

#include <windows.h>

/// What listings and single questions to the disk share. Private to the *_windows.cpp files of this
/// room.
namespace venlo::disk
{

/// An open file or folder; closed with its scope.
class OpenEntry
{
public:
    /// flags: FILE_FLAG_OPEN_REPARSE_POINT to open a link itself.
    explicit OpenEntry(const path &entry, DWORD flags = 0)
        : m_handle(CreateFileW(entry.c_str(), FILE_READ_ATTRIBUTES,
                               FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                               OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr))
    {
    }
    ~OpenEntry()
    {
        if (isOpen())
            CloseHandle(m_handle);
    }
    OpenEntry(const OpenEntry &) = delete;
    OpenEntry &operator=(const OpenEntry &) = delete;

    [[nodiscard]] bool isOpen() const { return m_handle != INVALID_HANDLE_VALUE; }
    [[nodiscard]] bool look(BY_HANDLE_FILE_INFORMATION &found) const
    {
        return isOpen() && GetFileInformationByHandle(m_handle, &found) != FALSE;
    }
    [[nodiscard]] HANDLE handle() const { return m_handle; }

private:
    HANDLE m_handle;
};

/// tag: of a reparse point. Those that are no links (files kept elsewhere and fetched when they are
/// opened) are what they look like.
[[nodiscard]] file_type typeOf(DWORD attributes, DWORD tag);
[[nodiscard]] file_type typeOf(const WIN32_FIND_DATAW &found);

[[nodiscard]] std::uintmax_t sizeOf(DWORD high, DWORD low);

/// One entry itself, links too; of the names only those of a listing are filled in. What another
/// program keeps from being looked at is found by its name like in a listing.
[[nodiscard]] bool lookUp(const path &entry, WIN32_FIND_DATAW &found);

/// An entry that is not there is no error of a look at it; under an impossible name nothing is.
[[nodiscard]] file_status noStatus(std::error_code &error);

} // namespace venlo::disk
