// How a person goes about in the local pane.
#include <QDir>
#include <QPointer>

#include "ftp/LocalPath.h"
#include "localpane/FolderPaths.h"
#include "localpane/LocalCommands.h"
#include "localpane/RootBar.h"
#include "localpane/uFileParts.h"
#include "mainwin/popup/pfFtp.h"
#include "shared/OperationGate.h"
#include "shared/WindowDesk.h"

namespace venlo
{

QString uFile::Parts::pathIn(const QString &folder, const QString &name) const
{
    return localChild(folder, name);
}

void uFile::Parts::raiseEOpnFL(int mode, const QString &selection)
{
    Q_EMIT q.eOpnFL(mode, selection);
}

void uFile::Parts::raiseFetchWanted(const QList<RemoteEntry> &entries, const QString &folder)
{
    Q_EMIT q.fetchWanted(entries, folder);
}

/// The text may hold a second folder, behind a CR: the one to show below the root.
void uFile::Parts::ShowRoot(const QString &root)
{
    const QString wanted = root.section(QLatin1Char('\r'), 0, 0);
    const QString top = tidyFolder(wanted);
    if (top.isEmpty() || !folderExists(top)) {
        bar->showRoot(treeFill->root());
        if (!top.isEmpty())
            rooms.desk.message(wanted + QStringLiteral(" が存在しません"));
        // A pane that begins with a folder that is gone begins with what is left of its path.
        const QString nearest = QDir::isAbsolutePath(top) ? nearestExisting(top) : QString();
        if (treeFill->root().isEmpty() && folderExists(nearest))
            ShowRoot(nearest);
        return;
    }
    bar->enter(top);
    treeFill->showRoot(top);
    const QString inside = tidyFolder(root.section(QLatin1Char('\r'), 1));
    if (inside.isEmpty() || !open(inside))
        listFill->FillList(top);
}

bool uFile::Parts::open(const QString &folder)
{
    if (!treeFill->GoToPath(folder))
        return false;
    listFill->FillList(treeFill->selectedPath());
    return true;
}

void uFile::Parts::select(const QModelIndex &node)
{
    treeFill->select(node);
    const QString folder = NodePath();
    if (folderExists(folder))
        listFill->FillList(folder);
    else if (!folder.isEmpty())
        vanished(folder);
}

void uFile::Parts::UpdateList()
{
    treeFill->readNode(treeView->currentIndex());
    listFill->UpdateList();
}

void uFile::Parts::nodeChosen(const QModelIndex &node)
{
    nodes->setOpenNode(node);
    // A new entry has no folder yet.
    if (treeFill->quiet() || !node.isValid() || nodes->tag(node) != EntryTag::FD)
        return;
    settled = true;
    select(node);
}

void uFile::Parts::rowClicked(const QModelIndex &index)
{
    const RowList::Row &row = list->row(index.row());
    if (row.tag == EntryTag::FL && !row.viewOnly && !busy())
        Q_EMIT q.eSlcFL(false, pathIn(NodePath(), row.texts.value(LocalListFill::Name)));
}

void uFile::Parts::rowEntered(const QModelIndex &index)
{
    const RowList::Row &row = list->row(index.row());
    if (row.viewOnly || row.tag == EntryTag::NW)
        return;
    const QString path = pathIn(NodePath(), row.texts.value(LocalListFill::Name));
    if (row.tag == EntryTag::FL) {
        if (!busy())
            Q_EMIT q.eSlcFL(true, path);
        return;
    }
    settled = true;
    if (!open(path) && !folderExists(path))
        vanished(path);
}

void uFile::Parts::keyWanted(PaneKey key, bool forTree)
{
    if (key == PaneKey::Refresh)
        q.ReFresh();
    else if (key == PaneKey::Parent)
        toParent();
    else if (!rooms.gate.busy())
        commands->keyWanted(key, forTree);
}

void uFile::Parts::toParent()
{
    const QModelIndex node = treeView->currentIndex();
    if (!node.parent().isValid())
        return;
    settled = true;
    const QString name = nodes->text(node);
    select(node.parent());
    listFill->selectName(EntryTag::FD, name);
}

void uFile::Parts::findRoot()
{
    const QString root = treeFill->root();
    const QString chosen = rooms.desk.pickFolder(root, QStringLiteral("ﾌｫﾙﾀﾞの指定"));
    if (chosen.isEmpty())
        return;
    settled = true;
    ShowRoot(chosen);
}

void uFile::Parts::sortBy(int column)
{
    sort.click(column);
    list->sort(sort.column(), sort.order());
    listView->showSort(sort.column(), sort.order());
}

void uFile::Parts::popUpMenu(const QPoint &at, bool forTree)
{
    if (rooms.gate.busy())
        return;
    const QPointer<uFile> self(&q);
    rooms.menus.setPickIndex(-1);
    rooms.menus.popUp(pfFtp::TREE, at);
    if (self == nullptr || rooms.menus.pickIndex() < 0)
        return;
    commands->RunMenuCommand(rooms.menus.pickGroup().toUpper(), rooms.menus.pickIndex(), forTree);
}

void uFile::Parts::ReFresh()
{
    const QString folder = NodePath();
    if (folder.isEmpty())
        return;
    if (!folderExists(folder)) {
        vanished(folder);
        return;
    }
    treeFill->readNode(treeView->currentIndex());
    listFill->FillList(folder);
}

} // namespace venlo
