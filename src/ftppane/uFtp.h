#pragma once

#include <memory>
#include <vector>

#include <QStringList>
#include <QWidget>

#include "views/RemoteEntries.h"

namespace venlo
{

class Database;
class DirectoryCache;
class FetchFolder;
class OperationGate;
class RemoteOperations;
class Session;
class WindowDesk;
class pfFtp;
class sfMsg;
struct Flags;

/// The FTP pane: picks a registered site, connects, shows the remote tree and list from the cache
/// of remote listings, and changes what lies on the server. Everything that needs the whole window
/// it asks of its host. Public members take no turn of the gate; what a person starts here does.
class uFtp : public QWidget
{
    Q_OBJECT

public:
    struct Rooms {
        WindowDesk &desk;
        Flags &flags;
        OperationGate &gate;
        Database &database;
        Session &session;
        DirectoryCache &cache;
        RemoteOperations &operations;
        pfFtp &menus;
        sfMsg &window;
        /// What other programs were given; stays when the pane is built anew.
        std::vector<std::unique_ptr<FetchFolder>> &handedOut;
    };
    explicit uFtp(Rooms rooms, QWidget *parent = nullptr);
    ~uFtp() override;

    /// The connected flag: what the last connect gave.
    [[nodiscard]] bool cOn() const;
    /// Shows itself unconnected, tree and list empty. The session is not touched.
    void cClear();
    /// cClear when the session is not connected any more.
    void lookAtSession();
    /// Disconnects the session and shows that.
    void disconnectSite();
    /// Fills the site list from the registry; keeps the selected site where it is still there.
    void fillSites();
    /// Index of the selected site; an index beyond the last entry selects nothing (-1).
    [[nodiscard]] int iCbSvr() const;
    void setICbSvr(int index);
    /// Shows a session that was connected elsewhere: selects the site and shows its start path.
    void showConnected(const QString &site);
    /// Selects the site, connects where needed and goes to the path; an empty path only connects.
    /// False when it could not be connected or a part of the path is missing; the person knows why.
    bool SetSync(const QString &site, const QString &remotePath);
    /// Full path of the selected node, server text first; empty when none is selected.
    [[nodiscard]] QString FsFllPh() const;
    void setFsFllPh(const QString &path);
    /// The remote path a node path stands for: from the first "/" on, "/" for a bare server.
    [[nodiscard]] QString remotePath() const;
    [[nodiscard]] QString FsSvr() const;
    /// Reads the shown folder from the cache again and redraws tree and list.
    void ReFresh();
    /// True while a change is carried out whose refusal this pane says itself.
    [[nodiscard]] bool tellsRefusals() const;
    [[nodiscard]] int TrvHi() const;
    void setTrvHi(int height);
    /// Widths of the list's columns, joined by ",".
    [[nodiscard]] QString LsClsWd() const;
    void setLsClsWd(const QString &widths);

    /// Takes over what the saved layout does not hold from a pane that this one replaces: the sort.
    void takeOver(const uFtp &earlier);

Q_SIGNALS:
    void eBfrGet(QString &localFolder, bool &proceed);
    void eEndGet();
    void eAct(const QString &word);
    void eOpnFL(const QString &remoteDir, const QString &name, bool textEditor);
    void eSync(const QString &sSync);
    void eMsg(const QString &text);
    /// Local files were dropped or pasted here: upload them into the directory (its remote path).
    void storeWanted(const QStringList &localPaths, const QString &remoteDir);
    /// The keys of the nodes or rows ran out: the host builds the pane anew.
    void keysRanOut();

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace venlo
