#pragma once

#include <optional>

#include <QString>

namespace venlo
{

/// The first line of "UserData.ini" without trailing blanks; empty when nothing stands there,
/// nothing at all when there is no file that can be read. The text may be in UTF-8, in CP932 or,
/// marked by a byte order mark, in UTF-16.
[[nodiscard]] std::optional<QString> readUserDataToken(const QString &path);

} // namespace venlo
