#pragma once

#include <QString>

namespace venlo
{

/// One copy of a file as the comparison knows it.
struct FileCopy {
    QString time;    ///< "yy/MM/dd hh:mm"; empty when there is no such copy
    qint64 size = 0; ///< bytes, as the work tables have them
};

/// True when a file that both sides have is to be overwritten by the master's copy: always when
/// asked to, else when the master's time text is the greater one, else when the sizes differ by a
/// fifth or more. An empty master never replaces a copy that holds something; a master that holds
/// something always replaces an empty copy.
[[nodiscard]] bool overwriteStands(const FileCopy &master, const FileCopy &other, bool always);

} // namespace venlo
