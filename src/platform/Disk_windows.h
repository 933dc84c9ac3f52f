#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <system_error>

/// The parts of std::filesystem that this program looks at the disk with, asked of the system
/// itself: paths of any length (filesystemPath), junctions and symbolic links told apart, times and
/// sizes as they came with the folder's listing. Names and meanings are the standard's.
namespace venlo::disk
{

using std::filesystem::file_status;
using std::filesystem::file_time_type;
using std::filesystem::file_type;
using std::filesystem::path;
using std::filesystem::perms;

/// An entry as the folder's listing told it.
class directory_entry
{
public:
    directory_entry() = default;
    directory_entry(const path &where, std::error_code &error);
    directory_entry(path where, file_type type, std::uintmax_t size);

    [[nodiscard]] const path &path() const { return m_path; }
    /// Of the entry itself, also when it is a link.
    [[nodiscard]] file_status symlink_status(std::error_code &error) const;
    /// Of what a link leads to.
    [[nodiscard]] bool exists(std::error_code &error) const;
    [[nodiscard]] bool is_directory(std::error_code &error) const;
    [[nodiscard]] bool is_regular_file(std::error_code &error) const;
    [[nodiscard]] std::uintmax_t file_size(std::error_code &error) const;

private:
    [[nodiscard]] file_type behindLinks(std::error_code &error) const;

    std::filesystem::path m_path;
    file_type m_type = file_type::none;
    std::uintmax_t m_size = 0;
};

/// The entries of one folder without "." and ".."; the folder is open until the end is reached.
class directory_iterator
{
public:
    directory_iterator() = default;
    directory_iterator(const path &folder, std::error_code &error);

    directory_iterator &increment(std::error_code &error);
    const directory_entry &operator*() const;
    const directory_entry *operator->() const { return &**this; }
    bool operator==(const directory_iterator &other) const { return m_search == other.m_search; }

private:
    struct Search;
    std::shared_ptr<Search> m_search; ///< null at the end
};

[[nodiscard]] file_status symlink_status(const path &entry, std::error_code &error);
[[nodiscard]] std::uintmax_t file_size(const path &entry, std::error_code &error);
[[nodiscard]] file_time_type last_write_time(const path &entry, std::error_code &error);
[[nodiscard]] bool is_empty(const path &folder, std::error_code &error);
[[nodiscard]] bool equivalent(const path &one, const path &other, std::error_code &error);
[[nodiscard]] path canonical(const path &entry, std::error_code &error);
bool create_directory(const path &folder, std::error_code &error);
/// Read-only entries go too.
bool remove(const path &entry, std::error_code &error);
/// Links to files; to a folder the system makes none without being told what it leads to.
void copy_symlink(const path &from, const path &to, std::error_code &error);
/// The rights of a new folder come from the one above it.
void permissions(const path &entry, perms rights, std::error_code &error);

} // namespace venlo::disk
