#include "platform/RecycleBin.h"

#include <cerrno>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>

#include "platform/EntryCopy.h"
#include "platform/EntryNames.h"
#include "platform/FilesystemPath.h"

namespace venlo
{

// The trash layout of freedesktop.org, version 1.0: "files" holds what was
// thrown away, "info" a text of the same name that says where it was.

namespace
{
constexpr mode_t privateMode = 0700;
constexpr mode_t infoMode = 0600;
constexpr int attempts = 1000;

struct Bin {
    QString folder;
    QString top; ///< paths in its info files are relative to this, absolute when empty
};

std::optional<dev_t> deviceOf(const QString &path)
{
    struct stat status = {};
    if (lstat(QFile::encodeName(path).constData(), &status) != 0)
        return std::nullopt;
    return status.st_dev;
}

/// Makes a private folder unless it is there; a link in its place is refused.
bool ownFolder(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    mkdir(name.constData(), privateMode);
    struct stat status = {};
    return lstat(name.constData(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid() &&
           faccessat(AT_FDCWD, name.constData(), W_OK | X_OK, AT_EACCESS) == 0;
}

bool prepare(const QString &bin)
{
    return ownFolder(bin) && ownFolder(bin + QStringLiteral("/files")) &&
           ownFolder(bin + QStringLiteral("/info"));
}

/// The folder at which the file system of a folder is mounted.
QString topFolder(const QString &folder, dev_t device)
{
    QString top = folder;
    while (top != QLatin1String("/")) {
        const QString above = QFileInfo(top).path();
        if (deviceOf(above) != device)
            break;
        top = above;
    }
    return top;
}

/// A ".Trash" that the administrator made counts only as a real folder with the sticky bit.
bool isSharedBin(const QString &path)
{
    struct stat status = {};
    return lstat(QFile::encodeName(path).constData(), &status) == 0 && S_ISDIR(status.st_mode) &&
           (status.st_mode & S_ISVTX) != 0;
}

std::optional<Bin> binFor(const QString &path)
{
    const auto device = deviceOf(path);
    const QString folder = QFileInfo(QFileInfo(path).absolutePath()).canonicalFilePath();
    // A mount point itself can be moved nowhere.
    if (!device || folder.isEmpty() || deviceOf(folder) != device)
        return std::nullopt;
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (!data.isEmpty() && QDir().mkpath(data) && deviceOf(data) == device &&
        prepare(data + QStringLiteral("/Trash")))
        return Bin{data + QStringLiteral("/Trash"), QString()};
    const QString top = topFolder(folder, *device);
    const QString user = QString::number(geteuid());
    const QDir at(top);
    if (isSharedBin(at.filePath(QStringLiteral(".Trash"))) &&
        prepare(at.filePath(QStringLiteral(".Trash/") + user)))
        return Bin{at.filePath(QStringLiteral(".Trash/") + user), top};
    if (prepare(at.filePath(QStringLiteral(".Trash-") + user)))
        return Bin{at.filePath(QStringLiteral(".Trash-") + user), top};
    return std::nullopt;
}

QByteArray infoText(const Bin &bin, const QString &path)
{
    const QString shown = bin.top.isEmpty() ? path : QDir(bin.top).relativeFilePath(path);
    return "[Trash Info]\nPath=" + QFile::encodeName(shown).toPercentEncoding("/") +
           "\nDeletionDate=" +
           QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")).toLatin1() +
           "\n";
}

/// Takes the name in the bin by making its info file; false when that name is taken.
bool writeInfo(const QString &file, const QByteArray &text, std::error_code &why)
{
    const QByteArray name = QFile::encodeName(file);
    const int fd =
        open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, infoMode);
    const bool whole =
        fd >= 0 && write(fd, text.constData(), static_cast<size_t>(text.size())) == text.size();
    if (!whole)
        why = {errno, std::generic_category()};
    if (fd >= 0)
        close(fd);
    if (fd >= 0 && !whole)
        unlink(name.constData());
    return whole;
}

/// Leaves room for the number and for ".trashinfo"; the info file knows the whole name.
constexpr qsizetype longestInBin = 240; // bytes of 255

QString nameInBin(const QString &name, int attempt)
{
    const QString base = shortenedName(name, longestInBin);
    return attempt == 0 ? base : base + QLatin1Char('.') + QString::number(attempt + 1);
}
} // namespace

bool hasRecycleBin(const QString &path)
{
    return binFor(path).has_value();
}

bool moveToRecycleBin(const QString &path, std::error_code &why)
{
    if (!deviceOf(path)) {
        why = {errno, std::generic_category()};
        return false;
    }
    const auto bin = binFor(path);
    if (!bin) {
        why = std::make_error_code(std::errc::not_supported);
        return false;
    }
    const QFileInfo info(path);
    // The folder's real path, the entry itself: a link is thrown away, not what it points to.
    const QString real =
        QDir(QFileInfo(info.absolutePath()).canonicalFilePath()).filePath(info.fileName());
    const QByteArray text = infoText(*bin, real);
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const QString name = nameInBin(info.fileName(), attempt);
        const QString note =
            bin->folder + QStringLiteral("/info/") + name + QStringLiteral(".trashinfo");
        why.clear();
        if (!writeInfo(note, text, why)) {
            if (why == std::errc::file_exists)
                continue;
            return false;
        }
        if (renameEntry(filesystemPath(real),
                        filesystemPath(bin->folder + QStringLiteral("/files/") + name), false, why))
            return true;
        unlink(QFile::encodeName(note).constData());
        if (why != std::errc::file_exists)
            return false;
    }
    return false;
}

} // namespace venlo
