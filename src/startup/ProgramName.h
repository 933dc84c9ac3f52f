#pragma once

#include <QString>

namespace venlo
{

/// The name that the program's files and settings are found by: the executable's base name, where
/// a trailing "_dv" in any letter case is dropped.
[[nodiscard]] QString programBaseName(const QString &executableBaseName);

} // namespace venlo
