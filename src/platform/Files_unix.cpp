#include "platform/Files.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>

namespace venlo
{

namespace
{
constexpr mode_t privateFolderMode = 0700;
constexpr mode_t privateFileMode = 0600;

int renameWithoutReplacing(const char *from, const char *to)
{
#ifdef RENAME_NOREPLACE
    const int result = renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE);
    if (result == 0 || (errno != EINVAL && errno != ENOSYS))
        return result;
#endif
    struct stat there = {};
    if (lstat(to, &there) == 0)
        return -1;
    return rename(from, to);
}
} // namespace

bool makePrivateFolder(const QString &path)
{
    return chmod(QFile::encodeName(path).constData(), privateFolderMode) == 0;
}

bool makePrivateFile(const QString &path)
{
    return chmod(QFile::encodeName(path).constData(), privateFileMode) == 0;
}

bool openToOthers(const QString &path)
{
    struct stat there = {};
    return stat(QFile::encodeName(path).constData(), &there) == 0 &&
           (there.st_mode & (S_IRWXG | S_IRWXO)) != 0;
}

bool flushToDisk(QFile &file)
{
    return file.flush() && fsync(file.handle()) == 0;
}

QString presentPath(const QFile &file)
{
    const QByteArray handle = "/proc/self/fd/" + QByteArray::number(file.handle());
    std::array<char, PATH_MAX> path = {};
    const ssize_t length = readlink(handle.constData(), path.data(), path.size());
    return length > 0 ? QFile::decodeName(QByteArray(path.data(), length)) : QString();
}

bool replaceFile(const QString &from, const QString &to, FolderFlush flush)
{
    if (rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) != 0)
        return false;
    if (flush == FolderFlush::Now)
        flushFolder(QFileInfo(to).absolutePath());
    return true;
}

void flushFolder(const QString &folder)
{
    const int fd = open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    fsync(fd);
    close(fd);
}

bool moveFolderIntoPlace(const QString &from, const QString &to)
{
    const QByteArray source = QFile::encodeName(from);
    const QByteArray target = QFile::encodeName(to);
    if (renameWithoutReplacing(source.constData(), target.constData()) != 0)
        return false;
    flushFolder(QFileInfo(to).absolutePath());
    return true;
}

bool setModifiedTime(const QString &path, const QDateTime &time)
{
    if (!time.isValid())
        return false;
    constexpr qint64 msPerSecond = 1000;
    constexpr qint64 nsPerMs = 1000000;
    const qint64 ms = time.toMSecsSinceEpoch();
    const qint64 second = ms >= 0 ? ms / msPerSecond : -((-ms + msPerSecond - 1) / msPerSecond);
    const timespec unchanged = {0, UTIME_OMIT};
    const timespec modified = {second, (ms - second * msPerSecond) * nsPerMs};
    const timespec times[2] = {unchanged, modified};
    return utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0) == 0;
}

} // namespace venlo
