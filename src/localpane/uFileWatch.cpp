// How the local pane keeps itself current with the disk.
#include <utility>

#include <QApplication>
#include <QElapsedTimer>
#include <QScopedValueRollback>
#include <QTimer>

#include "localpane/FolderPaths.h"
#include "localpane/uFileParts.h"
#include "shared/OperationGate.h"
#include "shared/WindowDesk.h"

namespace venlo
{

bool uFile::Parts::busy() const
{
    return busyCount > 0 || rooms.gate.busy() || treeView->inHand() || listView->inHand();
}

void uFile::Parts::setBusy(bool busy)
{
    busyCount += busy ? 1 : -1;
    // What is moved and deleted meanwhile must not be open here.
    listFill->setMeasuring(busyCount == 0);
}

void uFile::Parts::tick()
{
    if (busyCount > 0 || looking)
        return;
    // What a drag hovers over opens while the drag is on.
    expandHovered();
    if (treeView->inHand() || listView->inHand() || listFill->filling())
        return;
    const QScopedValueRollback<bool> scope(looking, true);
    if (rooms.gate.busy()) {
        lookMeanwhile();
        return;
    }
    settled = true;
    look();
}

void uFile::Parts::expandHovered()
{
    const QModelIndex node = nodes->node(std::exchange(expandKey, QString()));
    if (node.isValid() && !treeView->isExpanded(node))
        treeView->expand(node);
}

void uFile::Parts::look()
{
    const QString root = treeFill->root();
    if (!root.isEmpty()) {
        if (!folderExists(root)) {
            vanished(root);
            return;
        }
        QElapsedTimer clock;
        clock.start();
        const bool owed = std::exchange(owesTree, false);
        if (owed || treeFill->changed() || treeFill->differs())
            treeFill->refill();
        treeLook = clock.elapsed();
    }
    const QString folder = listFill->folder();
    if (folder.isEmpty())
        return;
    const bool again = std::exchange(owesList, false) || listFill->unsure();
    if (!folderExists(folder))
        vanished(folder);
    else if (const QString chosen = NodePath(); !isSameFolder(chosen, folder))
        listFill->FillList(chosen); // reading the tree anew may have moved the selection
    else if (listFill->changed())
        listFill->refill();
    else if (again)
        listFill->UpdateList();
}

void uFile::Parts::lookMeanwhile()
{
    constexpr int longestLook = 100; // milliseconds for each side, in which Cancel is not heard
    constexpr int share = 50;        // of the time, one part is for looks
    if (!rest.hasExpired())
        return;
    QElapsedTimer clock;
    clock.start();
    // What is gone is said and left once the operation is through.
    const QString folder = listFill->folder();
    if (treeLook > longestLook) {
        owesTree = true; // a share, or hundreds of folders
    } else if (folderExists(treeFill->root()) && (treeFill->changed() || treeFill->differs())) {
        owesTree = !treeFill->addNewFolders() || owesTree;
        treeLook = clock.elapsed();
    }
    if (folderExists(folder) && isSameFolder(NodePath(), folder) &&
        (listFill->changed() || listFill->unsure())) {
        owesList = true; // the sizes at least
        listFill->updateQuietly(QDeadlineTimer(longestLook));
    }
    rest.setRemainingTime(clock.elapsed() * share);
}

void uFile::Parts::vanished(const QString &folder)
{
    const QScopedValueRollback<bool> scope(looking, true);
    const QString root = treeFill->root();
    const QString nearest = nearestExisting(folder);
    rooms.desk.message(folder + QStringLiteral(" が存在しません"));
    bool inside = false;
    static_cast<void>(namesBelow(root, nearest, inside));
    if (!inside || !treeFill->GoToPath(nearest)) {
        ShowRoot(nearest);
        return;
    }
    treeFill->readNode(treeView->currentIndex());
    listFill->FillList(nearest);
}

/// Beginning anew helps only when keys were spent on more than what is shown: not when the first
/// folders that a new pane shows already take all of them.
void uFile::Parts::keysOut(bool quietly)
{
    if (ranOut)
        return;
    ranOut = settled;
    if (!quietly)
        rooms.desk.message(QStringLiteral("項目の番号を使い切ったため､表示できない項目があります"));
    if (ranOut)
        QTimer::singleShot(0, this, &Parts::askToBeginAnew);
}

/// The host takes the pane away: not while something of the pane waits for its end further up.
void uFile::Parts::askToBeginAnew()
{
    constexpr int laterMilliseconds = 100;
    const bool waits = busy() || looking || listFill->filling() ||
                       QApplication::activeModalWidget() != nullptr ||
                       QApplication::activePopupWidget() != nullptr;
    if (waits)
        QTimer::singleShot(laterMilliseconds, this, &Parts::askToBeginAnew);
    else
        Q_EMIT q.keysRanOut();
}

} // namespace venlo
