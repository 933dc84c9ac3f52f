#include "sync/BatchRunner.h"

#include <optional>

#include "db/Database.h"
#include "ftp/DirectoryCache.h"
#include "ftp/RemoteOperations.h"
#include "ftp/Session.h"
#include "shared/Flags.h"
#include "shared/FrontEnd.h"
#include "sync/PatternHost.h"
#include "sync/SyncRunner.h"
#include "sync/WaitScope.h"
#include "sync/WindowHost.h"

namespace venlo
{

namespace
{
QString startingText()
{
    return QStringLiteral("同期ﾊﾟﾀｰﾝを指定して起動中です");
}

bool unknown(const ShownPattern &shown)
{
    return shown.state == ShownPattern::State::Unknown ||
           shown.state == ShownPattern::State::NoSuchSite;
}
} // namespace

BatchRunner::BatchRunner(Rooms rooms) : m_rooms(rooms) {}

int BatchRunner::RunSyncPattern(const QString &sSync, bool upwards)
{
    std::optional<WaitScope> wait(std::in_place, m_rooms.frontEnd, startingText());
    const ShownPattern shown = m_rooms.patternHost.SyncPtn(sSync);
    const bool complete = !shown.localFolder.isEmpty() && !shown.remoteFolder.isEmpty();
    int result = complete ? 0 : -1;
    bool leftOver = true;
    if (complete && shown.state == ShownPattern::State::Shown)
        result = synchronise(sSync, shown.localFolder, shown.remoteFolder, upwards, leftOver);
    wait.reset();
    printResult(shown.localFolder, shown.remoteFolder, upwards, result);
    if (unknown(shown))
        return Unusable;
    return leftOver ? NotCarriedOut : Ok;
}

int BatchRunner::synchronise(const QString &sSync, const QString &localFolder,
                             const QString &remoteFolder, bool upwards, bool &leftOver)
{
    const FlagScope unattended(m_rooms.flags.unattendedTransfer);
    const auto report = m_rooms.syncRunner.run({localFolder, remoteFolder, !upwards, sSync, true});
    if (upwards)
        refreshKeptCache(remoteFolder);
    leftOver = report.leftOver;
    return report.result;
}

void BatchRunner::refreshKeptCache(const QString &remoteFolder)
{
    if (!m_rooms.session.SiteKeepsCache())
        return;
    try {
        m_rooms.cache.caRefresh(remoteFolder);
    } catch (const DbError &error) {
        m_rooms.frontEnd.warn(error.words());
    }
}

void BatchRunner::printResult(const QString &localFolder, const QString &remoteFolder, bool upwards,
                              int result)
{
    QString text = upwards ? localFolder + QStringLiteral(" ⇒ ") + remoteFolder
                           : remoteFolder + QStringLiteral(" ⇒ ") + localFolder;
    if (result < 0)
        text += QStringLiteral(" の同期は実行されませんでした");
    else if (result == 0)
        text += QStringLiteral(" の同期は実行できませんでした");
    else
        text += QStringLiteral(" の同期は実行されました");
    m_rooms.frontEnd.printResult(text);
}

int BatchRunner::OpenSite(const QString &site)
{
    if (m_rooms.window == nullptr) {
        m_rooms.frontEnd.warn(QStringLiteral("画面を表示できません"));
        return Unusable;
    }
    bool ok = false;
    ConnectSite(site, ok);
    if (!ok)
        return m_siteKnown ? NotCarriedOut : Unusable;
    m_rooms.window->showMainWindow(site);
    m_opened = true;
    return Ok;
}

int BatchRunner::OpenPattern(const QString &sSync)
{
    if (m_rooms.window == nullptr) {
        m_rooms.frontEnd.warn(QStringLiteral("画面を表示できません"));
        return Unusable;
    }
    const WaitScope wait(m_rooms.frontEnd, startingText());
    const ShownPattern shown = m_rooms.patternHost.SyncPtn(sSync);
    m_rooms.window->showMainWindow({});
    m_opened = true;
    if (unknown(shown))
        return Unusable;
    return shown.state == ShownPattern::State::Shown ? Ok : NotCarriedOut;
}

} // namespace venlo
