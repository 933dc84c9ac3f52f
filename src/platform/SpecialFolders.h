#pragma once

#include <QString>
#include <QUrl>

namespace venlo
{

enum class SpecialFolder {
    ApplicationData,
    MyDocuments,
    SendTo ///< shortcuts the desktop offers files to; the user's applications where there is none
};

/// Path of a special folder of the user, native separators, no trailing one.
[[nodiscard]] QString FsGtSpFld(SpecialFolder folder);

/// Where a person who has to pick a folder begins when nothing better is known: the top of
/// everything this computer has, on Windows above the drives.
[[nodiscard]] QUrl computerFolder();

/// The per-user program setting under "VenloTools", section "Path": the registry on Windows, a
/// QSettings file elsewhere.
[[nodiscard]] QString programSetting(const QString &key);
void setProgramSetting(const QString &key, const QString &value);

} // namespace venlo
