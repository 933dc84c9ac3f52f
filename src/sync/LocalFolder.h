#pragma once

#include <vector>

#include <QDateTime>
#include <QString>

#include "ftp/LocalPath.h"
#include "shared/Result.h"

namespace venlo
{

/// One entry of a local folder.
struct LocalEntry {
    enum class Kind {
        File,
        Folder,
        Passed ///< neither is to be compared: a link to a folder, a dead link, a device, a name
               ///< that is no text
    };
    QString name;
    Kind kind = Kind::File;
    qint64 size = 0;     ///< bytes; 0 for folders
    QDateTime modified;  ///< local time; of the file a link points to
    QString why;         ///< of Passed
    bool unread = false; ///< Passed because nothing can be said about it
};

/// Everything in a folder, hidden entries included, in the file system's order. An error when the
/// folder cannot be read to its end.
[[nodiscard]] Result<std::vector<LocalEntry>> readLocalFolder(const QString &path);

/// The path of an entry, "/" separators.
[[nodiscard]] QString entryPath(const QString &folder, const LocalEntry &entry);

} // namespace venlo
