#pragma once

#include <memory>

#include <QDeadlineTimer>
#include <QObject>

#include "localpane/IconList.h"
#include "localpane/LocalListFill.h"
#include "localpane/LocalTreeFill.h"
#include "localpane/LocalViews.h"
#include "localpane/uFile.h"
#include "views/FolderTree.h"
#include "views/PaneView.h"
#include "views/RowList.h"
#include "views/SortState.h"

class QSplitter;
class QTimer;

namespace venlo
{

class LocalCommands;
class RootBar;

/// What the local pane is made of, and the pane as its commands see it. Lives as long as the pane.
struct uFile::Parts final : public QObject, public LocalViews {
    Parts(uFile &pane, Rooms given);
    ~Parts() override;

    [[nodiscard]] QWidget &pane() override { return q; }
    [[nodiscard]] FolderTree &tree() override { return *nodes; }
    [[nodiscard]] PaneView &TrView() override { return *treeView; }
    [[nodiscard]] RowList &rows() override { return *list; }
    [[nodiscard]] PaneView &LsView() override { return *listView; }
    [[nodiscard]] QString NodePath() const override { return treeFill->selectedPath(); }
    [[nodiscard]] QString pathIn(const QString &folder, const QString &name) const override;
    void select(const QModelIndex &node) override;
    void readNode(const QModelIndex &node) override { treeFill->readNode(node); }
    void ExpandNode(const QModelIndex &node) override { treeFill->ExpandNode(node); }
    void UpdateList() override;
    void ShowRoot(const QString &root) override;
    void setBusy(bool busy) override;
    void expandSoon(const QString &nodeKey) override { expandKey = nodeKey; }
    void requestUpload(bool wholeFolder) override;
    void raiseEAct(const QString &job) override { Q_EMIT q.eAct(job); }
    void raiseEOpnFL(int mode, const QString &selection) override;
    void raiseFetchWanted(const QList<RemoteEntry> &entries, const QString &folder) override;

    // Layout
    void build();
    void buildTree();
    void buildList();
    void connectViews();
    void connectBar();
    void placeSplitter();
    [[nodiscard]] QString columnWidths() const;
    void setColumnWidths(const QString &texts);
    bool eventFilter(QObject *object, QEvent *event) override;

    // Going about
    /// False when the tree does not show the folder.
    [[nodiscard]] bool open(const QString &folder);
    void nodeChosen(const QModelIndex &node);
    void rowClicked(const QModelIndex &index);
    void rowEntered(const QModelIndex &index);
    void keyWanted(PaneKey key, bool forTree);
    void toParent();
    void findRoot();
    void sortBy(int column);
    void popUpMenu(const QPoint &at, bool forTree);
    void ReFresh();

    // Keeping current
    /// Nothing but the watch's own waiting keeps it from running.
    [[nodiscard]] bool busy() const;
    void tick();
    void expandHovered();
    void look();
    /// A look in the middle of somebody else's operation: it asks nothing, takes nothing from under
    /// a person and little of the operation's time. What it leaves out the next look makes good.
    void lookMeanwhile();
    /// Says that a folder is gone and shows the nearest one above it.
    void vanished(const QString &folder);
    void keysOut(bool quietly);
    void askToBeginAnew();

    // Uploads
    void upload(bool wholeFolder, const QString &source, const QString &target);

    uFile &q;
    Rooms rooms;
    FolderTree *nodes;
    RowList *list;
    PaneView *treeView;
    PaneView *listView;
    QSplitter *splitter = nullptr;
    QWidget *pTrv = nullptr;
    RootBar *bar = nullptr;
    std::unique_ptr<LocalTreeFill> treeFill;
    std::unique_ptr<LocalListFill> listFill;
    std::unique_ptr<LocalCommands> commands;
    IconList ImgLst;
    SortState sort;
    QTimer *Timer1 = nullptr;
    QString syncMark;
    QString expandKey;   ///< of the node that a drag hovers over
    int treeHeight = -1; ///< not placed yet; -1: the default
    int busyCount = 0;
    bool placed = false;
    bool looking = false;   ///< the watch is at work or a message about a lost folder shows
    bool owesTree = false;  ///< a look in the middle of an operation left something out
    bool owesList = false;  ///< a look in the middle of an operation left something out
    QDeadlineTimer rest{0}; ///< until which no look is taken in the middle of one
    qint64 treeLook = 0;    ///< milliseconds that the last look at the root's folders took
    bool settled = false;   ///< someone has gone about since the pane was built
    bool ranOut = false;    ///< keysRanOut was raised
};

} // namespace venlo
