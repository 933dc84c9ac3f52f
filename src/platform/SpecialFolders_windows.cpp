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

const KNOWNFOLDERID &idOf(SpecialFolder folder)
{
    switch (folder) {
    case SpecialFolder::ApplicationData:
        return FOLDERID_RoamingAppData;
    case SpecialFolder::SendTo:
        return FOLDERID_SendTo;
    case SpecialFolder::MyDocuments:
        break;
    }
    return FOLDERID_Documents;
}

QString pathOf(SpecialFolder folder, KNOWN_FOLDER_FLAG how)
{
    wchar_t *found = nullptr;
    QString path;
    if (SUCCEEDED(SHGetKnownFolderPath(idOf(folder), how, nullptr, &found)))
        path = QString::fromWCharArray(found);
    CoTaskMemFree(found);
    return path;
}
} // namespace

QString FsGtSpFld(SpecialFolder folder)
{
    // Made where a new profile has none yet; where that fails (a share that is not connected) its
    // place is known all the same.
    QString path = pathOf(folder, KF_FLAG_CREATE);
    if (path.isEmpty())
        path = pathOf(folder, KF_FLAG_DONT_VERIFY);
    while (path.endsWith(QLatin1Char('\\')))
        path.chop(1);
    return QDir::toNativeSeparators(path);
}

QUrl computerFolder()
{
    // FOLDERID_ComputerFolder, as the folder dialog takes it: it has no path.
    return QUrl(QStringLiteral("clsid:0AC0837C-BBF8-452A-850D-79D08E667CA7"));
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
