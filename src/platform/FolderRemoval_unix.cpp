#include <cerrno>
#include <memory>
#include <system_error>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>

#include "platform/Files.h"

namespace venlo
{

namespace
{
/// An open folder; closed with its scope.
class Folder
{
public:
    explicit Folder(int fd = -1) : m_fd(fd) {}
    ~Folder() { reset(-1); }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;

    [[nodiscard]] int fd() const { return m_fd; }
    void reset(int fd)
    {
        if (m_fd >= 0)
            close(m_fd);
        m_fd = fd;
    }

private:
    int m_fd;
};

struct CloseDir {
    void operator()(DIR *dir) const { closedir(dir); }
};

constexpr int openFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

/// Deletes a folder's content. Works on names below one open folder at a time, so that neither a
/// link put in the way meanwhile nor a deep tree leads it elsewhere or out of descriptors. Stops
/// at the first thing the system refuses.
class FolderRemoval
{
public:
    explicit FolderRemoval(const std::function<bool()> &goOn) : m_goOn(goOn) {}

    /// Empties the folder; errno tells the reason of a failure, 0 when it was told to stop.
    [[nodiscard]] bool empty(const char *path)
    {
        if (!enter(open(path, openFlags), QByteArray()))
            return false;
        while (!m_levels.empty()) {
            Level &level = m_levels.back();
            if (level.subfolders.empty()) {
                if (!leave())
                    return false;
                continue;
            }
            const QByteArray name = level.subfolders.back();
            level.subfolders.pop_back();
            if (!enter(openat(m_here.fd(), name.constData(), openFlags), name))
                return false;
        }
        return true;
    }

private:
    struct Level {
        dev_t device = 0;
        ino_t inode = 0;
        QByteArray name;
        std::vector<QByteArray> subfolders; ///< still to be deleted
    };

    bool enter(int fd, const QByteArray &name)
    {
        if (fd < 0)
            return false;
        m_here.reset(fd);
        struct stat status = {};
        if (fstat(fd, &status) != 0)
            return false;
        m_levels.push_back({status.st_dev, status.st_ino, name, {}});
        return deleteFiles(m_levels.back());
    }

    /// Deletes everything that is no folder and notes the folders.
    bool deleteFiles(Level &level) const
    {
        const int copy = fcntl(m_here.fd(), F_DUPFD_CLOEXEC, 0);
        const std::unique_ptr<DIR, CloseDir> entries(copy < 0 ? nullptr : fdopendir(copy));
        if (!entries)
            return false;
        for (;;) {
            errno = 0;
            const dirent *entry = readdir(entries.get());
            if (entry == nullptr)
                return errno == 0;
            const QByteArray name(entry->d_name);
            if (name == "." || name == "..")
                continue;
            if (m_goOn && !m_goOn()) {
                errno = 0;
                return false;
            }
            struct stat status = {};
            if (fstatat(m_here.fd(), name.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0)
                return false;
            if (S_ISDIR(status.st_mode))
                level.subfolders.push_back(name);
            else if (unlinkat(m_here.fd(), name.constData(), 0) != 0)
                return false;
        }
    }

    /// Goes up from an emptied folder and removes it. The topmost one stays for the caller.
    bool leave()
    {
        const QByteArray name = m_levels.back().name;
        m_levels.pop_back();
        if (m_levels.empty())
            return true;
        const int parent = openat(m_here.fd(), "..", openFlags);
        if (parent < 0)
            return false;
        m_here.reset(parent);
        struct stat status = {};
        if (fstat(parent, &status) != 0)
            return false;
        const Level &level = m_levels.back();
        if (status.st_dev != level.device || status.st_ino != level.inode) {
            errno = ESTALE; // the folder was moved away meanwhile
            return false;
        }
        return unlinkat(parent, name.constData(), AT_REMOVEDIR) == 0;
    }

    const std::function<bool()> &m_goOn;
    Folder m_here;
    std::vector<Level> m_levels;
};

bool removeAll(const QByteArray &path, const std::function<bool()> &goOn)
{
    struct stat status = {};
    if (lstat(path.constData(), &status) != 0)
        return false;
    if (S_ISLNK(status.st_mode))
        return unlink(path.constData()) == 0;
    return FolderRemoval(goOn).empty(path.constData()) && rmdir(path.constData()) == 0;
}
} // namespace

bool removeFolderTree(const QString &path, QString &why)
{
    return removeFolderTree(path, why, {});
}

bool removeFolderTree(const QString &path, QString &why, const std::function<bool()> &goOn)
{
    QByteArray name = QFile::encodeName(path);
    while (name.size() > 1 && name.endsWith('/')) // "link/" would mean what the link points at
        name.chop(1);
    errno = EINVAL;
    if (name != "/" && removeAll(name, goOn))
        return true;
    if (errno != 0)
        why = QString::fromLocal8Bit(std::system_category().message(errno).c_str());
    return false;
}

} // namespace venlo
