#pragma once

#include <system_error>

#include <QString>

namespace venlo
{

/// True when the entry has a recycle bin it can go to, which lies on its own file system.
[[nodiscard]] bool hasRecycleBin(const QString &path);

/// Moves a file, folder or link (itself) there. False when the system refuses.
[[nodiscard]] bool moveToRecycleBin(const QString &path, std::error_code &why);

} // namespace venlo
