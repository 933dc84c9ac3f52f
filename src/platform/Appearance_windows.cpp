#include "platform/Appearance.h"

#include <QSettings>

namespace venlo
{

bool darkDesktop()
{
    const QSettings personal(QStringLiteral("HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\"
                                            "CurrentVersion\\Themes\\Personalize"),
                             QSettings::NativeFormat);
    return personal.value(QStringLiteral("AppsUseLightTheme"), 1).toInt() == 0;
}

/// The system's classic controls stay light.
bool styleFollowsDarkDesktop()
{
    return false;
}

} // namespace venlo
