#pragma once

#include <QString>

namespace venlo
{

/// Makes one folder; why gets the system's words when it refuses, also when the name is taken.
[[nodiscard]] bool makeFolder(const QString &path, QString &why);

/// The name without so many of its last characters that it has no more than these bytes.
[[nodiscard]] QString shortenedName(QString name, qsizetype longest);

/// Gives a file or folder another name in its file system. Never replaces anything.
[[nodiscard]] bool giveName(const QString &from, const QString &to, QString &why);

} // namespace venlo
