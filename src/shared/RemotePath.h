#pragma once

#include <QString>

namespace venlo
{

/// Normal form of a remote directory without a server prefix: "/" for the root, otherwise a
/// leading "/" and no trailing one. Removes one trailing "/" only, as the cache expects.
[[nodiscard]] QString normalisedRemoteDir(const QString &dir);

/// Full path of an entry of a directory in normal form; never begins with "//".
[[nodiscard]] QString remoteChild(const QString &dir, const QString &name);

/// Splits a remote path at its last "/". The directory of a first-level path is "/".
void sjSplitPath(const QString &path, QString &dir, QString &name);

/// True when path is dir itself or lies below it; compares whole path components, letter case
/// included.
[[nodiscard]] bool isBelowOrSame(const QString &path, const QString &dir);

/// The same without regard to letter case, as the store compares.
[[nodiscard]] bool isBelowOrSameFolded(const QString &path, const QString &dir);

} // namespace venlo
