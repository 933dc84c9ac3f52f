#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include "mainwin/MainPanes.h"
#include "mainwin/MainRooms.h"
#include "shared/FrontEnd.h"
#include "views/RemoteEntries.h"

namespace venlo
{

/// Transfers that pass between the panes, and the synchronisations of what they show.
class MainTransfers
{
public:
    MainTransfers(MainRooms &rooms, MainPanes &panes);

    /// The question before an upload or a download; an empty target refuses, the batch flag agrees.
    [[nodiscard]] bool confirmUpload(const QString &target) const;
    [[nodiscard]] bool confirmDownload(const QString &target) const;

    /// Local files were dropped or pasted on the FTP pane.
    void store(const QStringList &localPaths, const QString &remoteDir);
    /// Remote entries were dropped or pasted on the local pane.
    void fetch(const QList<RemoteEntry> &entries, const QString &folder);

    /// Makes the server equal to the local folder, or the other way round.
    void synchronise(bool down);
    /// It runs: its own review says what came of it.
    [[nodiscard]] bool synchronising() const { return m_synchronising; }
    /// What a synchronisation did.
    void noteOutcome(const Outcome &outcome);

private:
    /// The deletions of a synchronisation leave the cache alone, which a pane would then show.
    void forgetDeleted();
    [[nodiscard]] bool confirm(const QString &target, const QString &words) const;

    MainRooms &m_rooms;
    MainPanes &m_panes;
    bool m_synchronising = false;
    QStringList m_deleted; ///< remote files that the synchronisation deleted
};

} // namespace venlo
