#include "platform/DiskLook_windows.h"

#include <utility>

namespace venlo::disk
{

namespace
{
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

} // namespace venlo::disk
