#include "platform/DiskLook_windows.h"

#include <vector>

namespace venlo::disk
{

namespace
{
std::error_code lastError()
{
    return {static_cast<int>(GetLastError()), std::system_category()};
}

void note(bool fine, std::error_code &error)
{
    error = fine ? std::error_code() : lastError();
}

/// Of a reparse point, 0 where it cannot be told.
DWORD tagOf(const path &entry)
{
    FILE_ATTRIBUTE_TAG_INFO tag = {};
    const OpenEntry itself(entry, FILE_FLAG_OPEN_REPARSE_POINT);
    const bool told =
        itself.isOpen() && GetFileInformationByHandleEx(itself.handle(), FileAttributeTagInfo, &tag,
                                                        sizeof tag) != FALSE;
    return told ? tag.ReparseTag : 0;
}
} // namespace

bool lookUp(const path &entry, WIN32_FIND_DATAW &found)
{
    WIN32_FILE_ATTRIBUTE_DATA plain = {};
    if (GetFileAttributesExW(entry.c_str(), GetFileExInfoStandard, &plain) != FALSE) {
        found = {};
        found.dwFileAttributes = plain.dwFileAttributes;
        found.ftCreationTime = plain.ftCreationTime;
        found.ftLastWriteTime = plain.ftLastWriteTime;
        found.nFileSizeHigh = plain.nFileSizeHigh;
        found.nFileSizeLow = plain.nFileSizeLow;
        if ((plain.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0)
            found.dwReserved0 = tagOf(entry);
        return true;
    }
    const DWORD why = GetLastError();
    if (why != ERROR_ACCESS_DENIED && why != ERROR_SHARING_VIOLATION)
        return false;
    const HANDLE search = FindFirstFileW(entry.c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        FindClose(search);
        return true;
    }
    SetLastError(why);
    return false;
}

file_type typeOf(DWORD attributes, DWORD tag)
{
    const bool reparse = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    if (reparse && (tag == IO_REPARSE_TAG_SYMLINK || tag == IO_REPARSE_TAG_MOUNT_POINT))
        return file_type::symlink;
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? file_type::directory : file_type::regular;
}

file_type typeOf(const WIN32_FIND_DATAW &found)
{
    return typeOf(found.dwFileAttributes, found.dwReserved0);
}

std::uintmax_t sizeOf(DWORD high, DWORD low)
{
    constexpr unsigned half = 32;
    return (std::uintmax_t{high} << half) | low;
}

file_status noStatus(std::error_code &error)
{
    error = lastError();
    if (error != std::errc::no_such_file_or_directory && error.value() != ERROR_INVALID_NAME)
        return file_status(file_type::none);
    error.clear();
    return file_status(file_type::not_found);
}

file_status symlink_status(const path &entry, std::error_code &error)
{
    error.clear();
    WIN32_FIND_DATAW found = {};
    return lookUp(entry, found) ? file_status(typeOf(found)) : noStatus(error);
}

std::uintmax_t file_size(const path &entry, std::error_code &error)
{
    BY_HANDLE_FILE_INFORMATION found = {};
    const OpenEntry open(entry);
    note(open.look(found), error);
    return error ? static_cast<std::uintmax_t>(-1)
                 : sizeOf(found.nFileSizeHigh, found.nFileSizeLow);
}

file_time_type last_write_time(const path &entry, std::error_code &error)
{
    BY_HANDLE_FILE_INFORMATION found = {};
    const OpenEntry open(entry);
    note(open.look(found), error);
    if (error)
        return file_time_type::min();
    // Only compared with others of its kind; the shift keeps it within the range of a finer clock.
    const std::uintmax_t steps =
        sizeOf(found.ftLastWriteTime.dwHighDateTime, found.ftLastWriteTime.dwLowDateTime);
    using Steps = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
    constexpr auto yearsBetween = std::chrono::seconds(11'644'473'600 + 6'437'664'000);
    return file_time_type(std::chrono::duration_cast<file_time_type::duration>(
        Steps(static_cast<std::int64_t>(steps)) - yearsBetween));
}

bool is_empty(const path &folder, std::error_code &error)
{
    return directory_iterator(folder, error) == directory_iterator() && !error;
}

bool equivalent(const path &one, const path &other, std::error_code &error)
{
    BY_HANDLE_FILE_INFORMATION left = {};
    BY_HANDLE_FILE_INFORMATION right = {};
    const OpenEntry first(one);
    const OpenEntry second(other);
    note(first.look(left) && second.look(right), error);
    return !error && left.dwVolumeSerialNumber == right.dwVolumeSerialNumber &&
           left.nFileIndexHigh == right.nFileIndexHigh && left.nFileIndexLow == right.nFileIndexLow;
}

path canonical(const path &entry, std::error_code &error)
{
    const OpenEntry open(entry);
    note(open.isOpen(), error);
    if (error)
        return {};
    std::vector<wchar_t> name(32768); // the longest path the system has
    const DWORD length = GetFinalPathNameByHandleW(
        open.handle(), name.data(), static_cast<DWORD>(name.size()), FILE_NAME_NORMALIZED);
    // Not every file system can tell.
    return length == 0 ? entry : path(name.data(), name.data() + length);
}

bool create_directory(const path &folder, std::error_code &error)
{
    note(CreateDirectoryW(folder.c_str(), nullptr) != FALSE, error);
    return !error;
}

bool remove(const path &entry, std::error_code &error)
{
    const DWORD attributes = GetFileAttributesW(entry.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        (void)noStatus(error);
        return false;
    }
    const bool readOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (readOnly)
        SetFileAttributesW(entry.c_str(),
                           attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
    const bool folder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    note((folder ? RemoveDirectoryW(entry.c_str()) : DeleteFileW(entry.c_str())) != FALSE, error);
    if (error && readOnly)
        SetFileAttributesW(entry.c_str(), attributes);
    return !error;
}

void copy_symlink(const path &from, const path &to, std::error_code &error)
{
    note(CopyFileExW(from.c_str(), to.c_str(), nullptr, nullptr, nullptr,
                     COPY_FILE_COPY_SYMLINK | COPY_FILE_FAIL_IF_EXISTS) != FALSE,
         error);
}

void permissions(const path & /*entry*/, perms /*rights*/, std::error_code &error)
{
    error.clear();
}

} // namespace venlo::disk
