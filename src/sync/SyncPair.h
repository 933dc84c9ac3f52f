#pragma once

#include <QString>

namespace venlo
{

/// A local folder, an FTP directory and which of them is made equal to the other.
struct SyncPair {
    QString sLph;      ///< local folder, native separators
    QString sFph;      ///< remote folder, in normal form once a comparison has taken it
    bool down = false; ///< true: the local side is made equal to the FTP side

    /// Local path of a relative path of the work tables ("." is the root), native separators.
    [[nodiscard]] QString localPath(const QString &relative) const;
    /// Remote directory of a relative path of the work tables.
    [[nodiscard]] QString remotePath(const QString &relative) const;
};

/// Relative path of a file as one text: "/name" in the roots, "/folder/name" below.
[[nodiscard]] QString relativeFile(const QString &sPh, const QString &sFL);

/// The relative path of the folder that holds a folder: "." for a first-level one.
[[nodiscard]] QString relativeParent(const QString &sPh);

} // namespace venlo
