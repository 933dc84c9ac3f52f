#pragma once

#include <functional>
#include <memory>

#include <QObject>

#include "ftppane/RemoteBrowser.h"
#include "ftppane/uFtp.h"
#include "views/FolderTree.h"
#include "views/PaneView.h"
#include "views/RowList.h"
#include "views/SortState.h"

class QLabel;
class QSplitter;

namespace venlo
{

class SiteHeader;
class sfFlst;

/// What the FTP pane is made of, and the pane as its tree and list see it. Lives as long as the
/// pane.
struct uFtp::Parts final : public QObject, public DragPartner {
    /// A registered site's connection fields.
    struct Site {
        QString sSvr;
        QString sUsr;
        QString sPwd;
        QString sPxy;
        bool bPsv = false;
        bool bSvDb = false;
    };

    Parts(uFtp &pane, Rooms given);
    ~Parts() override;

    // Layout
    void build();
    void buildViews();
    void connectHeader();
    void connectViews();
    void placeSplitter();
    bool eventFilter(QObject *object, QEvent *event) override;

    // A person's commands
    /// Runs a command in a turn of its own; false when another operation runs. A store that fails
    /// is said in one message.
    bool run(const std::function<void()> &command);
    void guarded(const std::function<void()> &command);
    void look();
    void keysOut();
    void raiseKeysOut();

    // Sites
    void fillSites();
    void readSite();
    void showUnconnected();
    /// Selects an entry without connecting; another site than the connected one disconnects first.
    void selectSite(int index);
    void siteChosen(int index);
    /// False when it could not be connected; the person knows why.
    bool connectSite();
    [[nodiscard]] bool openSession();
    void showSession(const QString &startDir);
    void disconnectSite();
    void cClear();
    void editSites();

    // Going about
    void nodeChosen();
    void chosenMeanwhile();
    void settleChoice();
    void closeUnread(const QModelIndex &node);
    void nodeExpanded(const QModelIndex &node);
    void rowEntered(const QModelIndex &index);
    void keyWanted(PaneKey key, bool forTree);
    void sortBy(int column);
    void showSort();
    /// Lists the subtree of a directory anew and counts the folders below the list.
    void relist(const QString &dir);
    void reload();
    void updateAll();

    // Menus
    void popUpMenu(const QPoint &at, bool forTree);
    void menuPicked(int index, bool forTree);
    void popUpElse();
    void elsePicked(int index);
    void openFile(bool textEditor);
    void showFileList();

    // What lies on the server
    void newFolder(bool forTree);
    void newNode();
    void newRow();
    void rename(bool forTree);
    [[nodiscard]] bool nodeNamed(const QModelIndex &node, const QString &name);
    [[nodiscard]] bool rowNamed(const QModelIndex &index, const QString &name);
    void nameAbandoned(const QModelIndex &index, bool inTree);
    /// Carries one change out and says why it was refused.
    [[nodiscard]] bool change(const std::function<void(bool &ok)> &operation, const QString &name);
    /// The name the cache holds for an entry that was to be renamed.
    [[nodiscard]] QString nameAfter(const QString &dir, const QString &before,
                                    const QString &wanted);
    void remove(bool forTree);
    void removeNode();
    void removeRows();

    // Transfers
    /// What a command is about: the selected node, or the selected rows.
    [[nodiscard]] QList<RemoteEntry> entries(bool forTree) const;
    void download(bool forTree);
    void startTransfers();
    [[nodiscard]] QList<QUrl> fetchForOthers(const QList<RemoteEntry> &wanted);
    void copy(bool forTree);
    void paste(bool forTree);
    void store(const QStringList &paths, const QString &dir);
    [[nodiscard]] QString dirUnder(const QTreeView &view, const QModelIndex &under) const;
    [[nodiscard]] bool takes(const QDropEvent &event) const;
    [[nodiscard]] std::unique_ptr<QMimeData> dragData(const QTreeView &from) override;
    [[nodiscard]] Qt::DropActions dragActions() const override { return Qt::CopyAction; }
    void dragEnded(Qt::DropAction action) override;
    [[nodiscard]] Qt::DropAction dragOver(const QTreeView &view, const QModelIndex &under,
                                          const QDropEvent &event) override;
    void dragLeft(const QTreeView &view) override;
    [[nodiscard]] Qt::DropAction dropped(const QTreeView &view, const QModelIndex &under,
                                         const QDropEvent &event) override;

    uFtp &q;
    Rooms rooms;
    SiteHeader *header;
    FolderTree *nodes;
    RowList *list;
    PaneView *treeView;
    PaneView *listView;
    QWidget *pTrv = nullptr;
    QSplitter *splitter = nullptr;
    QLabel *note = nullptr; ///< what is to be known of the shown list
    std::unique_ptr<RemoteBrowser> browser;
    std::unique_ptr<sfFlst> fileList;
    SortState sort;
    Site site;             ///< the selected one's
    QString connectedSite; ///< name of the site that is shown
    bool on = false;       ///< the connected flag
    int treeHeight = -1;   ///< not placed yet; -1: the default
    bool placed = false;
    bool settled = false;     ///< someone has gone about since the pane was built
    bool ranOut = false;      ///< keysRanOut was raised
    bool tells = false;       ///< a refusal is being said here
    bool choosing = false;    ///< nodeChosen is on its way
    bool filling = false;     ///< the operation that runs only shows a folder
    bool chosenWaits = false; ///< a folder was picked while the pane was changing
};

} // namespace venlo
