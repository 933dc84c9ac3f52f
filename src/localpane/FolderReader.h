#pragma once

#include <functional>
#include <optional>
#include <vector>

#include <QDateTime>
#include <QDeadlineTimer>
#include <QString>
#include <QStringList>

#include "shared/Result.h"

namespace venlo
{

class FrontEnd;

/// One entry of a local folder as the pane shows it.
struct DiskEntry {
    QString name;
    bool folder = false;   ///< also a link to a folder
    bool link = false;     ///< a symbolic link or a junction
    bool hidden = false;   ///< as the system marks hidden entries
    bool viewOnly = false; ///< a name that no operation may touch, see isOddName
    qint64 size = 0;       ///< bytes; 0 for folders
    QDateTime created;     ///< the modification date where the file system keeps no other
    QDateTime modified;
    QString letters; ///< attribute letters
};

/// Names that hold CR, LF or TAB, which separate names in lists, or bytes that are no text.
[[nodiscard]] bool isOddName(const QString &name);

/// The extension: what stands behind the last "."; empty without one.
[[nodiscard]] QString extensionOf(const QString &name);
/// True when a list with that filter shows the file: the filter is "*.*", empty, or holds the
/// extension anywhere (letter case ignored), so that no extension always passes.
[[nodiscard]] bool passesFilter(const QString &name, const QString &filter);

/// Everything in a folder, in the file system's order. An error when it cannot be read to its end.
/// goOn is asked behind every entry; false ends the reading with what there is.
[[nodiscard]] Result<std::vector<DiskEntry>> readFolder(const QString &path,
                                                        const std::function<bool()> &goOn = {});

/// A sub-folder as the tree shows it; those with odd names are not among them.
struct SubFolder {
    QString name;
    bool hidden = false;
    bool hasSubFolders = false;
};
[[nodiscard]] Result<std::vector<SubFolder>> readSubFolders(const QString &path);

/// Names of the files of a folder that pass the filter, odd ones left out. Nothing, after a
/// message, when the folder does not exist or cannot be read.
[[nodiscard]] std::optional<QStringList> fileNames(FrontEnd &frontEnd, const QString &folder,
                                                   const QString &filter);

/// Size of the files that a folder upload would send, -1 when they are not counted in time.
[[nodiscard]] qint64 bytesBelow(const QString &folder, QDeadlineTimer inTime);

} // namespace venlo
