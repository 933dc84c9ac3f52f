#pragma once

#include "shared/Result.h"

#include <QString>

namespace venlo
{

/// A local folder without its trailing separator; the root of a tree becomes empty, so that a
/// separator and a name can follow.
[[nodiscard]] QString withoutTrailingSeparator(const QString &folder);

/// Full path of an entry of a local folder, native separator between them.
[[nodiscard]] QString localChild(const QString &folder, const QString &name);

/// True for a symbolic link or a junction; shortcuts are ordinary files.
[[nodiscard]] bool isLink(const QString &path);

/// The last component of a local path.
[[nodiscard]] QString localName(const QString &path);

/// Creates a local folder and its missing ancestors; the value tells whether it had to be made.
[[nodiscard]] Result<bool> sjLocFold(const QString &folder);

} // namespace venlo
