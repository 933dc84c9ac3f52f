#pragma once

#include <functional>

#include <QDateTime>
#include <QString>

class QFile;

namespace venlo
{

/// Makes a folder or file private to its owner (0700, 0600; on Windows the profile's own rights
/// already are). False when the system refuses.
bool makePrivateFolder(const QString &path);
bool makePrivateFile(const QString &path);
/// Whether others than the owner have any right on a file or folder, links followed. Never on
/// Windows, where the profile's own rights hold.
[[nodiscard]] bool openToOthers(const QString &path);

/// Forces an open file's content to the disk. False when the system reports an error.
[[nodiscard]] bool flushToDisk(QFile &file);

/// Where an open file lies by now, which a folder's move or a link in its place makes another path
/// than it was opened by. Empty when the system does not tell.
[[nodiscard]] QString presentPath(const QFile &file);

/// When a folder's new entry is forced to the disk: at once, or by flushFolder, once for many.
enum class FolderFlush { Now, Later };

/// Puts a finished file in place of another in one step (rename). The old file stays as it was
/// when this fails. The folder's entry is forced to the disk too where the system can.
[[nodiscard]] bool replaceFile(const QString &from, const QString &to,
                               FolderFlush flush = FolderFlush::Now);

/// Makes the renames in a folder survive a power cut. Some file systems cannot; the renames stand
/// all the same. Nothing is left to do on Windows, where each is written through.
void flushFolder(const QString &folder);

/// Renames a folder that is complete into place; fails when the target exists.
[[nodiscard]] bool moveFolderIntoPlace(const QString &from, const QString &to);

/// Sets the last-modified time.
bool setModifiedTime(const QString &path, const QDateTime &time);

/// Deletes a folder with everything in it, never following a link. why gets the system's words.
[[nodiscard]] bool removeFolderTree(const QString &path, QString &why);
/// The same, asking before every entry whether to go on; why stays empty when it was told not to.
[[nodiscard]] bool removeFolderTree(const QString &path, QString &why,
                                    const std::function<bool()> &goOn);

} // namespace venlo
