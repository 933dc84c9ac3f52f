#include "sync/LocalFolder.h"

#include <system_error>

#include <QDir>

#include "platform/Disk.h"
#include "platform/EntryLook.h"
#include "platform/FilesystemPath.h"

namespace venlo
{

namespace
{
LocalEntry passed(LocalEntry entry, const QString &why)
{
    entry.kind = LocalEntry::Kind::Passed;
    entry.why = why;
    return entry;
}

LocalEntry unread(LocalEntry entry, const QString &why)
{
    entry.unread = true;
    return passed(std::move(entry), why);
}

/// The kind of an entry that is no link comes with the folder's listing, so that one look at a file
/// is enough.
LocalEntry describe(const disk::directory_entry &item)
{
    const EntryLook info(shownPath(item.path()));
    LocalEntry entry;
    entry.name = info.fileName();
    if (entry.name.contains(QChar(QChar::ReplacementCharacter)))
        return unread(entry, QStringLiteral("名前が文字として読めません"));
    const QString gone = QStringLiteral("ﾘﾝｸ先がないか読み取れません");
    std::error_code error;
    if (!item.exists(error) || error)
        return unread(entry, gone);
    if (item.is_directory(error)) {
        if (info.isSymbolicLink() || info.isJunction())
            return passed(entry, QStringLiteral("ﾌｫﾙﾀﾞへのﾘﾝｸです"));
        entry.kind = LocalEntry::Kind::Folder;
        return entry;
    }
    if (!item.is_regular_file(error))
        return passed(entry, QStringLiteral("通常のﾌｧｲﾙではありません"));
    if (!info.exists())
        return unread(entry, gone);
    entry.size = info.size();
    entry.modified = info.lastModified();
    return entry;
}

Error unreadable(const QString &path, const std::error_code &error)
{
    return {ErrorClass::Local, path + QStringLiteral(" : ") + systemWords(error), 0};
}
} // namespace

Result<std::vector<LocalEntry>> readLocalFolder(const QString &path)
{
    std::error_code error;
    std::vector<LocalEntry> entries;
    disk::directory_iterator item(filesystemPath(path), error);
    const disk::directory_iterator end;
    while (!error && item != end) {
        entries.push_back(describe(*item));
        item.increment(error);
    }
    if (error)
        return unreadable(path, error);
    return entries;
}

QString entryPath(const QString &folder, const LocalEntry &entry)
{
    const QString path = QDir::fromNativeSeparators(folder);
    return path.endsWith(QLatin1Char('/')) ? path + entry.name
                                           : path + QLatin1Char('/') + entry.name;
}

} // namespace venlo
