#pragma once

#include <QStringList>

namespace venlo
{

/// Takes every right on the program's files in the user data folder away from others than their
/// owner: the database holds passwords, the error log may. The folder itself only where it is the
/// program's own. A line for the second log about each that was open to others; empty when none
/// was, or there is no such folder. userDataFolder ends with a separator.
[[nodiscard]] QStringList closeToOthers(const QString &userDataFolder, bool ownFolder);

} // namespace venlo
