#include "localpane/FolderReader.h"

#include <algorithm>
#include <system_error>

#include <QFileInfo>

#include "ftp/LocalPath.h"
#include "localpane/FolderPaths.h"
#include "platform/Disk.h"
#include "platform/EntryLook.h"
#include "platform/FileLook.h"
#include "platform/FilesystemPath.h"
#include "shared/FrontEnd.h"

namespace venlo
{

namespace
{
Error unreadable(const QString &path, const std::error_code &error)
{
    return {ErrorClass::Local, path + QStringLiteral(" : ") + systemWords(error), 0};
}

/// Visits every entry; visit returns false to end early.
template <typename Visit>
std::error_code visitEntries(const QString &path, Visit visit)
{
    std::error_code error;
    disk::directory_iterator item(filesystemPath(path), error);
    const disk::directory_iterator end;
    while (!error && item != end) {
        if (!visit(*item))
            break;
        item.increment(error);
    }
    return error;
}

QString nameOf(const disk::directory_entry &item)
{
    return shownPath(item.path().filename());
}

bool isFolder(const disk::directory_entry &item)
{
    std::error_code error;
    return item.is_directory(error) && !error;
}

DiskEntry describe(const disk::directory_entry &item)
{
    const EntryLook info(shownPath(item.path()));
    DiskEntry entry;
    entry.name = info.fileName();
    entry.folder = isFolder(item);
    entry.viewOnly = isOddName(entry.name);
    if (entry.name.contains(QChar(QChar::ReplacementCharacter))) {
        // Only the raw path finds it.
        std::error_code error;
        const auto size = entry.folder ? 0 : item.file_size(error);
        entry.size = error ? 0 : static_cast<qint64>(size);
        return entry;
    }
    entry.link = info.isSymbolicLink() || info.isJunction();
    entry.hidden = info.isHidden();
    entry.size = entry.folder || !info.isFile() ? 0 : info.size();
    entry.modified = info.lastModified();
    entry.created = info.birthTime();
    if (!entry.created.isValid())
        entry.created = entry.modified;
    entry.letters = attributeLetters(info);
    return entry;
}

/// A link to a folder is none.
bool isOwnFolder(const disk::directory_entry &item)
{
    std::error_code error;
    return isFolder(item) &&
           item.symlink_status(error).type() == std::filesystem::file_type::directory;
}

/// 0 of what is no file.
qint64 sizeOf(const disk::directory_entry &item)
{
    std::error_code error;
    if (!item.is_regular_file(error))
        return 0;
    const auto size = item.file_size(error);
    return error ? 0 : static_cast<qint64>(size);
}

bool hasSubFolders(const std::filesystem::path &folder)
{
    std::error_code error;
    disk::directory_iterator item(folder, error);
    for (const disk::directory_iterator end; !error && item != end; item.increment(error)) {
        if (isFolder(*item) && !isOddName(nameOf(*item)))
            return true;
    }
    return false;
}
} // namespace

bool isOddName(const QString &name)
{
    const bool separates = std::any_of(name.begin(), name.end(), [](QChar c) {
        return c == QLatin1Char('\r') || c == QLatin1Char('\n') || c == QLatin1Char('\t');
    });
    return separates || name.contains(QChar(QChar::ReplacementCharacter)) || !name.isValidUtf16();
}

QString extensionOf(const QString &name)
{
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QString() : name.mid(dot + 1);
}

bool passesFilter(const QString &name, const QString &filter)
{
    return filter.isEmpty() || filter == QLatin1String("*.*") ||
           filter.contains(extensionOf(name), Qt::CaseInsensitive);
}

Result<std::vector<DiskEntry>> readFolder(const QString &path, const std::function<bool()> &goOn)
{
    std::vector<DiskEntry> entries;
    const std::error_code error = visitEntries(path, [&](const disk::directory_entry &item) {
        entries.push_back(describe(item));
        return !goOn || goOn();
    });
    if (error)
        return unreadable(path, error);
    return entries;
}

Result<std::vector<SubFolder>> readSubFolders(const QString &path)
{
    std::vector<SubFolder> folders;
    const std::error_code error = visitEntries(path, [&](const disk::directory_entry &item) {
        if (!isFolder(item))
            return true;
        const QFileInfo info(shownPath(item.path()));
        if (!isOddName(info.fileName()))
            folders.push_back({info.fileName(), info.isHidden(), hasSubFolders(item.path())});
        return true;
    });
    if (error)
        return unreadable(path, error);
    std::sort(folders.begin(), folders.end(), [](const SubFolder &left, const SubFolder &right) {
        const int order = left.name.compare(right.name, Qt::CaseInsensitive);
        return order < 0 || (order == 0 && left.name < right.name);
    });
    return folders;
}

std::optional<QStringList> fileNames(FrontEnd &frontEnd, const QString &folder,
                                     const QString &filter)
{
    if (!folderExists(folder)) {
        frontEnd.message(folder + QStringLiteral("  が存在しません"));
        return std::nullopt;
    }
    QStringList names;
    const std::error_code error = visitEntries(folder, [&](const disk::directory_entry &item) {
        const QString name = nameOf(item);
        if (!isFolder(item) && !isOddName(name) && passesFilter(name, filter))
            names.append(name);
        return true;
    });
    if (error) {
        frontEnd.message(unreadable(folder, error).words);
        return std::nullopt;
    }
    return names;
}

qint64 bytesBelow(const QString &folder, QDeadlineTimer inTime)
{
    qint64 bytes = 0;
    std::vector<std::filesystem::path> waiting{filesystemPath(folder)};
    while (!waiting.empty()) {
        std::error_code error;
        disk::directory_iterator item(waiting.back(), error);
        waiting.pop_back();
        for (const disk::directory_iterator end; !error && item != end; item.increment(error)) {
            if (inTime.hasExpired())
                return -1;
            if (isOwnFolder(*item))
                waiting.push_back(item->path());
            else
                bytes += sizeOf(*item);
        }
    }
    return bytes;
}

} // namespace venlo
