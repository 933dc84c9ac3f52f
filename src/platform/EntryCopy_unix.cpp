#include "platform/EntryCopy.h"

#include <cerrno>
#include <cstdio>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace venlo
{

namespace
{
constexpr size_t chunkSize = 262144;
constexpr mode_t permissions = 0777; // set-id bits are not handed on
constexpr mode_t whileWriting = 0600;

std::error_code lastError()
{
    return {errno, std::generic_category()};
}

/// An open file; closed with its scope.
class OpenFile
{
public:
    OpenFile(const std::filesystem::path &path, int flags)
        : m_fd(open(path.c_str(), flags | O_CLOEXEC | O_NOFOLLOW, whileWriting))
    {
    }
    ~OpenFile()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;

    [[nodiscard]] int fd() const { return m_fd; }
    /// Some file systems report a full disk only here.
    [[nodiscard]] bool close()
    {
        const int fd = m_fd;
        m_fd = -1;
        return ::close(fd) == 0;
    }

private:
    int m_fd;
};

ssize_t readSome(int fd, char *data)
{
    ssize_t count = 0;
    do
        count = read(fd, data, chunkSize);
    while (count < 0 && errno == EINTR);
    return count;
}

bool writeAll(int fd, const char *data, size_t count)
{
    while (count > 0) {
        const ssize_t written = write(fd, data, count);
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return false;
        data += written;
        count -= static_cast<size_t>(written);
    }
    return true;
}

CopyEnd copyBytes(int from, int to, const CopyTick &tick)
{
    std::vector<char> chunk(chunkSize);
    for (;;) {
        const ssize_t count = readSome(from, chunk.data());
        if (count == 0)
            return CopyEnd::Done;
        if (count < 0 || !writeAll(to, chunk.data(), static_cast<size_t>(count)))
            return CopyEnd::Failed;
        if (!tick(count))
            return CopyEnd::Cancelled;
    }
}

CopyEnd copyOpen(int from, OpenFile &to, bool durable, const CopyTick &tick)
{
    struct stat status = {};
    if (fstat(from, &status) != 0)
        return CopyEnd::Failed;
    const CopyEnd end = copyBytes(from, to.fd(), tick);
    if (end != CopyEnd::Done)
        return end;
    // A file system without permissions refuses them; the content counts.
    (void)fchmod(to.fd(), status.st_mode & permissions);
    const timespec times[2] = {status.st_atim, status.st_mtim};
    (void)futimens(to.fd(), times);
    if (durable && fsync(to.fd()) != 0)
        return CopyEnd::Failed;
    return to.close() ? CopyEnd::Done : CopyEnd::Failed;
}
} // namespace

CopyEnd copyFileWhole(const std::filesystem::path &from, const std::filesystem::path &to,
                      bool durable, const CopyTick &tick, std::error_code &why)
{
    // Not to hang on a pipe that took the file's place.
    const OpenFile source(from, O_RDONLY | O_NONBLOCK);
    if (source.fd() < 0) {
        why = lastError();
        return CopyEnd::Failed;
    }
    OpenFile target(to, O_WRONLY | O_CREAT | O_EXCL);
    if (target.fd() < 0) {
        why = lastError();
        return CopyEnd::Failed;
    }
    const CopyEnd end = copyOpen(source.fd(), target, durable, tick);
    if (end == CopyEnd::Failed)
        why = lastError();
    if (end != CopyEnd::Done)
        unlink(to.c_str());
    return end;
}

void keepLook(const std::filesystem::path &from, const std::filesystem::path &to)
{
    struct stat status = {};
    if (lstat(from.c_str(), &status) != 0)
        return;
    if (S_ISDIR(status.st_mode))
        (void)chmod(to.c_str(), status.st_mode & permissions);
    const timespec times[2] = {status.st_atim, status.st_mtim};
    (void)utimensat(AT_FDCWD, to.c_str(), times, AT_SYMLINK_NOFOLLOW);
}

bool renameEntry(const std::filesystem::path &from, const std::filesystem::path &to, bool replace,
                 std::error_code &why)
{
    if (!replace) {
#ifdef RENAME_NOREPLACE
        if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
            return true;
        if (errno != EINVAL && errno != ENOSYS) {
            why = lastError();
            return false;
        }
#endif
        struct stat there = {};
        if (lstat(to.c_str(), &there) == 0) {
            why = std::make_error_code(std::errc::file_exists);
            return false;
        }
    }
    if (rename(from.c_str(), to.c_str()) == 0)
        return true;
    why = lastError();
    return false;
}

void flushFolder(const std::filesystem::path &folder)
{
    const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    (void)fsync(fd);
    close(fd);
}

} // namespace venlo
