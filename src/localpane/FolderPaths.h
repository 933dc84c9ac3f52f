#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace venlo
{

/// How the local pane writes folders: native separators and no trailing one, "/" and "C:\\"
/// excepted. A bare "C:" always means "C:\\". An empty text stays empty.
[[nodiscard]] QString tidyFolder(const QString &path);

/// The top of the system's tree that a path lies in: "/", "C:\\" or a network share.
[[nodiscard]] QString topOf(const QString &path);
/// A folder above which there is none, as the watch knows it.
[[nodiscard]] bool isBareDrive(const QString &folder);
/// The folder that holds a path; the top's own is the top.
[[nodiscard]] QString parentFolder(const QString &path);

/// Letter case as the system's file names compare.
[[nodiscard]] Qt::CaseSensitivity nameCase();
[[nodiscard]] bool isSameFolder(const QString &one, const QString &other);
/// The names that lead from a folder to one at or below it; found is false when it lies elsewhere.
[[nodiscard]] QStringList namesBelow(const QString &root, const QString &path, bool &found);

[[nodiscard]] bool folderExists(const QString &path);
/// When a folder's entries last changed, and whether that was so short a time before the look that
/// a change after it may carry the same date.
struct FolderStamp {
    QDateTime date;
    bool fresh = false;
    [[nodiscard]] static FolderStamp of(const QString &folder);
};
/// The path itself, or the nearest folder above it that exists; where the whole drive is gone, the
/// person's home folder.
[[nodiscard]] QString nearestExisting(const QString &path);

} // namespace venlo
