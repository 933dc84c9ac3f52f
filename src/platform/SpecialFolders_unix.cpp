#include "platform/SpecialFolders.h"

#include <QDir>
#include <QSettings>
#include <QStandardPaths>

namespace venlo
{

namespace
{
/// One file for all tools of the family, in the folder XDG_CONFIG_HOME names or ~/.config.
QString settingsPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/VenloTools.ini");
}

QString folderOf(SpecialFolder folder)
{
    switch (folder) {
    case SpecialFolder::ApplicationData:
        return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    case SpecialFolder::MyDocuments:
        return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    case SpecialFolder::SendTo:
        return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
               QStringLiteral("/applications");
    }
    return {};
}

QString inPathSection(const QString &key)
{
    return QStringLiteral("Path/") + key;
}
} // namespace

QString FsGtSpFld(SpecialFolder folder)
{
    return QDir::cleanPath(folderOf(folder));
}

QUrl computerFolder()
{
    return QUrl::fromLocalFile(QDir::rootPath());
}

QString programSetting(const QString &key)
{
    return QSettings(settingsPath(), QSettings::IniFormat).value(inPathSection(key)).toString();
}

void setProgramSetting(const QString &key, const QString &value)
{
    QSettings(settingsPath(), QSettings::IniFormat).setValue(inPathSection(key), value);
}

} // namespace venlo
