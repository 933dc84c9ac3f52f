#pragma once

#include <QString>

namespace venlo
{

/// Creates a folder, including missing parent folders. True when it is there afterwards.
[[nodiscard]] bool F_CreateFld(const QString &path);

/// Creates the user data folder (private to the user) with a copy of the initial database. Both
/// appear together by one rename, so that a killed start never leaves a folder without a database.
/// True when the folder is there afterwards; another process may have made it meanwhile.
[[nodiscard]] bool createUserDataFolder(const QString &path, const QString &initialDatabase);

} // namespace venlo
