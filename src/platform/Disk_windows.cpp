#include "platform/Disk_windows.h"

#include <utility>
#include <vector>

#include <windows.h>

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
file_type typeOf(DWORD attributes, DWORD tag)
{
    const bool reparse = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    if (reparse && (tag == IO_REPARSE_TAG_SYMLINK || tag == IO_REPARSE_TAG_MOUNT_POINT))
        return file_type::symlink;
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? file_type::directory : file_type::regular;
}

std::uintmax_t sizeOf(DWORD high, DWORD low)
{
    constexpr unsigned half = 32;
    return (std::uintmax_t{high} << half) | low;
}

/// An entry that is not there is no error of a look at it; under an impossible name nothing is.
file_status noStatus(std::error_code &error)
{
    error = lastError();
    if (error != std::errc::no_such_file_or_directory && error.value() != ERROR_INVALID_NAME)
        return file_status(file_type::none);
    error.clear();
    return file_status(file_type::not_found);
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

/// Of one entry itself. What another program keeps from being looked at is found by its name like
/// in a listing.
bool lookUp(const path &entry, WIN32_FIND_DATAW &found)
{
    WIN32_FILE_ATTRIBUTE_DATA plain = {};
    if (GetFileAttributesExW(entry.c_str(), GetFileExInfoStandard, &plain) != FALSE) {
        found = {};
        found.dwFileAttributes = plain.dwFileAttributes;
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

file_type typeOf(const WIN32_FIND_DATAW &found)
{
    return typeOf(found.dwFileAttributes, found.dwReserved0);
}

bool isDots(const wchar_t *name)
{
    return name[0] == L'.' && (name[1] == L'\0' || (name[1] == L'.' && name[2] == L'\0'));
}
} // namespace

// --- One entry of a listing ---

directory_entry::directory_entry(const class path &where, std::error_code &error)
    : m_path(where), m_type(disk::symlink_status(where, error).type()),
      m_size(m_type == file_type::regular ? disk::file_size(where, error) : 0)
{
}

directory_entry::directory_entry(class path where, file_type type, std::uintmax_t size)
    : m_path(std::move(where)), m_type(type), m_size(size)
{
}

file_status directory_entry::symlink_status(std::error_code &error) const
{
    error.clear();
    return file_status(m_type);
}

file_type directory_entry::behindLinks(std::error_code &error) const
{
    error.clear();
    if (m_type != file_type::symlink)
        return m_type;
    BY_HANDLE_FILE_INFORMATION found = {};
    const OpenEntry target(m_path);
    if (!target.look(found))
        return noStatus(error).type();
    return typeOf(found.dwFileAttributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_REPARSE_POINT), 0);
}

bool directory_entry::exists(std::error_code &error) const
{
    const file_type type = behindLinks(error);
    return type != file_type::not_found && type != file_type::none;
}

bool directory_entry::is_directory(std::error_code &error) const
{
    return behindLinks(error) == file_type::directory;
}

bool directory_entry::is_regular_file(std::error_code &error) const
{
    return behindLinks(error) == file_type::regular;
}

std::uintmax_t directory_entry::file_size(std::error_code &error) const
{
    if (m_type == file_type::symlink)
        return disk::file_size(m_path, error);
    error.clear();
    return m_size;
}

// --- Listings ---

struct directory_iterator::Search {
    explicit Search(class path where) : folder(std::move(where)) {}
    ~Search()
    {
        if (handle != INVALID_HANDLE_VALUE)
            FindClose(handle);
    }
    Search(const Search &) = delete;
    Search &operator=(const Search &) = delete;

    /// Goes to the next entry with a name of its own; false at the end, or where error says so.
    [[nodiscard]] bool next(std::error_code &error)
    {
        WIN32_FIND_DATAW found = {};
        do {
            if (!step(found)) {
                const DWORD why = GetLastError();
                // The top of an empty drive has not even ".".
                const bool end = why == ERROR_NO_MORE_FILES ||
                                 (why == ERROR_FILE_NOT_FOUND && handle == INVALID_HANDLE_VALUE &&
                                  GetFileAttributesW(folder.c_str()) != INVALID_FILE_ATTRIBUTES);
                error = end ? std::error_code()
                            : std::error_code(static_cast<int>(why), std::system_category());
                return false;
            }
        } while (isDots(found.cFileName));
        error.clear();
        entry = directory_entry(folder / found.cFileName, typeOf(found),
                                sizeOf(found.nFileSizeHigh, found.nFileSizeLow));
        return true;
    }

    class path folder;
    HANDLE handle = INVALID_HANDLE_VALUE;
    directory_entry entry;

private:
    bool step(WIN32_FIND_DATAW &found)
    {
        if (handle != INVALID_HANDLE_VALUE)
            return FindNextFileW(handle, &found) != FALSE;
        if (folder.empty()) { // the current one is not meant
            SetLastError(ERROR_PATH_NOT_FOUND);
            return false;
        }
        handle = FindFirstFileExW((folder / L"*").c_str(), FindExInfoBasic, &found,
                                  FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
        return handle != INVALID_HANDLE_VALUE;
    }
};

directory_iterator::directory_iterator(const path &folder, std::error_code &error)
    : m_search(std::make_shared<Search>(folder))
{
    increment(error);
}

directory_iterator &directory_iterator::increment(std::error_code &error)
{
    if (m_search && !m_search->next(error))
        m_search.reset();
    return *this;
}

const directory_entry &directory_iterator::operator*() const
{
    return m_search->entry;
}

// --- Single questions ---

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
