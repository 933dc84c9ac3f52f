#include "mainwin/MainTransfers.h"

#include <utility>

#include "db/Database.h"
#include "ftp/DirectoryCache.h"
#include "ftp/RemoteOperations.h"
#include "ftp/Session.h"
#include "ftppane/Download.h"
#include "ftppane/OperationScopes.h"
#include "ftppane/uFtp.h"
#include "localpane/Upload.h"
#include "localpane/uFile.h"
#include "mainwin/popup/sfMsg.h"
#include "shared/Flags.h"
#include "shared/OperationGate.h"
#include "shared/RemotePath.h"
#include "shared/WindowDesk.h"
#include "sync/SyncRunner.h"

namespace venlo
{

MainTransfers::MainTransfers(MainRooms &rooms, MainPanes &panes) : m_rooms(rooms), m_panes(panes) {}

bool MainTransfers::confirm(const QString &target, const QString &words) const
{
    if (target.isEmpty())
        return false;
    return m_rooms.flags.batch || m_rooms.desk.question(target + words);
}

bool MainTransfers::confirmUpload(const QString &target) const
{
    return confirm(target, QStringLiteral("にｱｯﾌﾟﾛｰﾄﾞします"));
}

bool MainTransfers::confirmDownload(const QString &target) const
{
    return confirm(target, QStringLiteral("にﾀﾞｳﾝﾛｰﾄﾞします"));
}

void MainTransfers::store(const QStringList &localPaths, const QString &remoteDir)
{
    if (localPaths.isEmpty())
        return;
    const auto turn = m_rooms.gate.begin();
    const QString shown = m_rooms.session.server() + remoteDir;
    if (!turn || !m_rooms.session.connected() || !confirmUpload(shown))
        return;
    m_rooms.operations.standingAnswer = OverwriteMode::Ask;
    m_rooms.operations.resetCounts();
    {
        const ShownMessages messages(*m_panes.window);
        Upload upload(m_rooms.operations, *m_panes.window,
                      [this](const QString &text) { m_rooms.desk.setMessageLine(text); });
        (void)upload.run(localPaths, remoteDir); // what was given up is told by the failure report
    }
    m_rooms.desk.setMessageLine({});
    m_panes.ftp->ReFresh();
}

void MainTransfers::fetch(const QList<RemoteEntry> &entries, const QString &folder)
{
    if (entries.isEmpty())
        return;
    const auto turn = m_rooms.gate.begin();
    if (!turn || !m_rooms.session.connected() || !confirmDownload(folder))
        return;
    m_rooms.operations.standingAnswer = OverwriteMode::Ask;
    m_rooms.operations.resetCounts();
    {
        const ShownMessages messages(*m_panes.window);
        Download download(m_rooms.operations, *m_panes.window,
                          [this](const QString &text) { m_rooms.desk.setMessageLine(text); });
        (void)download.run(entries, folder);
    }
    m_rooms.desk.setMessageLine({});
    m_panes.file->ReFresh();
}

void MainTransfers::noteOutcome(const Outcome &outcome)
{
    if (m_synchronising && outcome.kind == Outcome::Kind::DeletedRemote)
        m_deleted += outcome.from;
}

void MainTransfers::forgetDeleted()
{
    const QStringList deleted = std::exchange(m_deleted, {});
    if (deleted.isEmpty() || !m_rooms.session.connected())
        return;
    Transaction transaction(m_rooms.database);
    for (const QString &path : deleted) {
        QString dir;
        QString name;
        sjSplitPath(path, dir, name);
        m_rooms.cache.forgetFile(dir, name);
    }
    transaction.commit();
}

void MainTransfers::synchronise(bool down)
{
    const auto turn = m_rooms.gate.begin();
    if (!turn)
        return;
    const FlagScope running(m_synchronising);
    const FlagScope unattended(m_rooms.flags.unattendedTransfer);
    const auto report = m_rooms.syncRunner.run(
        {m_panes.file->NodePath(), m_panes.ftp->FsFllPh(), down, QString(), false});
    m_rooms.desk.setMessageLine({});
    forgetDeleted();
    if (report.result == 1 && m_rooms.session.connected())
        m_panes.ftp->ReFresh(); // the comparison has listed the server anew, in both directions
    if (down)
        m_panes.file->ReFresh();
}

} // namespace venlo
