#pragma once

#include <QString>
#include <QStringList>

namespace venlo
{

/// Desktop entries and MIME associations as freedesktop.org lays them down; only
/// where there is no shell that answers for them.

/// The value of a key in a group of a key file, escapes still in it; empty when it has none.
[[nodiscard]] QString desktopFileValue(const QString &file, const QString &group,
                                       const QString &key);

/// Text as the value of a key of type string: backslashes and control characters escaped.
[[nodiscard]] QString desktopFileText(const QString &text);

/// The Exec line of the program that opens files of a MIME type: the user's choice, the system's,
/// then any installed one. Programs that are not there or need a terminal are passed over; empty
/// when none is left.
[[nodiscard]] QString execOfMimeHandler(const QString &mimeType);

/// An Exec line as program and arguments with the file put in for its field codes, behind the last
/// argument where it has none. Empty when the line is broken.
[[nodiscard]] QStringList expandExec(const QString &exec, const QString &path);

} // namespace venlo
