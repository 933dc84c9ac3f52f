#pragma once

#include <QIcon>
#include <QString>

#include "platform/EntryLook.h"

namespace venlo
{

/// A file's or folder's small icon as the system's desktop draws it, and the number under which the
/// system keeps it: the same for everything that looks the same.
struct FileIcon {
    qint64 number = 0;
    QIcon icon;
};
[[nodiscard]] FileIcon fileIcon(const QString &path);

/// The system's name for the type of a file, in the user's language.
[[nodiscard]] QString fileTypeName(const QString &path);

/// The attribute letters of an entry in the order R, S, H, A: read-only, system, hidden, archive.
/// Elsewhere than on Windows R is not writable and H a name that begins with ".".
[[nodiscard]] QString attributeLetters(const EntryLook &info);

} // namespace venlo
