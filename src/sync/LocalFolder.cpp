#include "sync/LocalFolder.h"

#include <filesystem>
#include <system_error>

#include <QDir>
#include <QFileInfo>

namespace venlo
{

namespace
{
namespace fs = std::filesystem;

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

LocalEntry describe(const fs::directory_entry &item)
{
    const QFileInfo info(item.path());
    LocalEntry entry;
    entry.name = info.fileName();
    if (entry.name.contains(QChar(QChar::ReplacementCharacter)))
        return unread(entry, QStringLiteral("名前が文字として読めません"));
    std::error_code error;
    const fs::file_status status = item.status(error);
    if (error || !fs::exists(status))
        return unread(entry, QStringLiteral("ﾘﾝｸ先がないか読み取れません"));
    if (fs::is_directory(status)) {
        if (info.isSymbolicLink() || info.isJunction())
            return passed(entry, QStringLiteral("ﾌｫﾙﾀﾞへのﾘﾝｸです"));
        entry.kind = LocalEntry::Kind::Folder;
        return entry;
    }
    if (!fs::is_regular_file(status))
        return passed(entry, QStringLiteral("通常のﾌｧｲﾙではありません"));
    entry.size = static_cast<qint64>(item.file_size(error));
    if (error)
        return unread(entry, QStringLiteral("ﾘﾝｸ先がないか読み取れません"));
    entry.modified = info.lastModified();
    return entry;
}

Error unreadable(const QString &path, const std::error_code &error)
{
    return {ErrorClass::Local,
            path + QStringLiteral(" : ") + QString::fromLocal8Bit(error.message().c_str()), 0};
}
} // namespace

Result<std::vector<LocalEntry>> readLocalFolder(const QString &path)
{
    std::error_code error;
    std::vector<LocalEntry> entries;
    fs::directory_iterator item(QDir(path).filesystemPath(), error);
    const fs::directory_iterator end;
    while (!error && item != end) {
        entries.push_back(describe(*item));
        item.increment(error);
    }
    if (error)
        return unreadable(path, error);
    return entries;
}

} // namespace venlo
