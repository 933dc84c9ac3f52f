#pragma once

#include <QString>

namespace venlo
{

/// An address as it may be shown and logged: "user:password@host" is what somebody may have typed
/// or pasted, so that whatever stands before the last "@", but for a scheme, becomes "****".
[[nodiscard]] QString shownAddress(const QString &address);

} // namespace venlo
