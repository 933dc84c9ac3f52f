#include "startup/settings/ShellHelpers.h"

#include <tuple>
#include <utility>

#include <QDir>
#include <QFileInfo>

#include "platform/ShellOpen.h"
#include "platform/SpecialFolders.h"
#include "shared/FrontEnd.h"

namespace venlo
{

namespace
{
void openThroughShortcut(const QString &shortcut, const QString &target)
{
    const QString written = writeShortcut(shortcut, target);
    if (!written.isEmpty())
        std::ignore = openShortcut(written, target);
}

/// The program's file: named "….exe" on Windows; elsewhere by its base name.
QString executableIn(const ProgramPlaces &places)
{
    const QString stem = places.programFolder + places.baseName;
    const QString windowsName = stem + QStringLiteral(".exe");
    return QFileInfo::exists(stem) && !QFileInfo::exists(windowsName) ? stem : windowsName;
}
} // namespace

ShellHelpers::ShellHelpers(ProgramPlaces places, QString userDataFolder, QString helpAddress,
                           FrontEnd &frontEnd)
    : m_places(std::move(places)), m_userDataFolder(std::move(userDataFolder)),
      m_helpAddress(std::move(helpAddress)), m_frontEnd(frontEnd)
{
}

QString ShellHelpers::helpBase() const
{
    if (m_helpAddress.isEmpty())
        return m_places.programFolder + QDir::toNativeSeparators(QStringLiteral("apData/help/"));
    return m_helpAddress.endsWith(QLatin1Char('/')) ? m_helpAddress
                                                    : m_helpAddress + QLatin1Char('/');
}

void ShellHelpers::W_Help(const QString &page)
{
    QString name = page.toLower();
    if (!name.contains(QLatin1Char('.')))
        name += QStringLiteral(".htm");
    openThroughShortcut(m_userDataFolder + m_places.baseName + QStringLiteral("_help.lnk"),
                        helpBase() + name);
}

void ShellHelpers::W_HtmView(const QString &path)
{
    const QString folder = m_userDataFolder + QStringLiteral("Wrk");
    if (QDir().mkpath(folder))
        openThroughShortcut(folder + QStringLiteral("/htm_view.lnk"), path);
}

void ShellHelpers::W_SendTo()
{
    const QString folder = FsGtSpFld(SpecialFolder::SendTo);
    const QString shortcut = folder + QLatin1Char('/') + m_places.baseName + QStringLiteral(".lnk");
    if (!QDir().mkpath(folder) || writeShortcut(shortcut, executableIn(m_places)).isEmpty())
        return;
    m_frontEnd.message(m_places.programFolder + m_places.baseName +
                       QStringLiteral(".exe のｼｮｰﾄｶｯﾄを ") + QDir::toNativeSeparators(folder) +
                       QStringLiteral(" に作成しました"));
}

void ShellHelpers::W_ExpFd(const QString &path, bool open)
{
    if (path.isEmpty())
        return;
    const QFileInfo info(path);
    if (open)
        std::ignore = openWithAssociated(path);
    else
        std::ignore = exploreFolder(info.isDir() ? path : info.absolutePath());
}

void ShellHelpers::BrowseFolder(QString &path, QString &title)
{
    if (!QFileInfo(path).isDir())
        path.clear();
    if (title.isEmpty())
        title = QStringLiteral("ﾌｫﾙﾀﾞの指定");
    path = m_frontEnd.pickFolder(path, title);
}

} // namespace venlo
