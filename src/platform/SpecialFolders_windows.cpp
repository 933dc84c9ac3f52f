#include "platform/SpecialFolders.h"

#include <windows.h>

#include <shlobj.h>

#include <QDir>
#include <QSettings>

namespace venlo
{

namespace
{
QString registryPath()
{
    return QStringLiteral("HKEY_CURRENT_USER\\Software\\VenloTools\\Path");
}
} // namespace

QString FsGtSpFld(SpecialFolder folder)
{
    const KNOWNFOLDERID &id =
        folder == SpecialFolder::ApplicationData ? FOLDERID_RoamingAppData : FOLDERID_Documents;
    wchar_t *found = nullptr;
    QString path;
    if (SUCCEEDED(SHGetKnownFolderPath(id, KF_FLAG_DEFAULT, nullptr, &found)))
        path = QString::fromWCharArray(found);
    CoTaskMemFree(found);
    while (path.endsWith(QLatin1Char('\\')))
        path.chop(1);
    return QDir::toNativeSeparators(path);
}

QString programSetting(const QString &key)
{
    return QSettings(registryPath(), QSettings::NativeFormat).value(key).toString();
}

void setProgramSetting(const QString &key, const QString &value)
{
    QSettings(registryPath(), QSettings::NativeFormat).setValue(key, value);
}

} // namespace venlo
