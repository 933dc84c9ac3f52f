#pragma once

#include <QDateTime>
#include <QString>

#include "platform/EntryLook.h"

namespace venlo
{

/// Size and time of a local file, links followed, to see whether it changed, came or went.
struct FileStamp {
    qint64 size = -1;   ///< bytes
    QDateTime modified; ///< invalid where there is no file

    FileStamp() = default;
    explicit FileStamp(const EntryLook &file)
    {
        if (file.isFile()) {
            size = file.size();
            modified = file.lastModified();
        }
    }
    explicit FileStamp(const QString &path) : FileStamp(EntryLook(path)) {}
    [[nodiscard]] bool isFile() const { return modified.isValid(); }
    bool operator==(const FileStamp &) const = default;
};

} // namespace venlo
