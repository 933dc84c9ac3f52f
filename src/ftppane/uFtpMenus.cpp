// How a person goes about in the FTP pane: clicks, keys and menus.
#include <algorithm>
#include <utility>

#include <QAction>
#include <QLabel>

#include "ftp/DirectoryCache.h"
#include "ftp/Session.h"
#include "ftppane/OperationScopes.h"
#include "ftppane/RemoteRows.h"
#include "ftppane/SiteHeader.h"
#include "ftppane/uFtpParts.h"
#include "mainwin/popup/pfFtp.h"
#include "mainwin/popup/sfFlst.h"
#include "shared/Flags.h"
#include "shared/OperationGate.h"

namespace venlo
{

void uFtp::Parts::nodeChosen()
{
    choosing = false;
    const QModelIndex node = treeView->currentIndex();
    if (browser->busy() || !on || !node.isValid() || nodes->tag(node) != EntryTag::FD)
        return;
    const bool shown = run([&] {
        const FlagScope now(filling);
        browser->show(node);
    });
    if (!shown)
        browser->selectShown();
}

/// A person picked a folder while the pane was changing: it is shown behind that, and a listing
/// that is under way only to be looked at is not waited for.
void uFtp::Parts::chosenMeanwhile()
{
    const QModelIndex node = treeView->currentIndex();
    if (!on || !node.isValid() || node == browser->shown() || nodes->tag(node) != EntryTag::FD)
        return;
    chosenWaits = true;
    if (filling)
        rooms.desk.requestCancel();
}

/// The tree never stands on another folder than the one that commands are about.
void uFtp::Parts::settleChoice()
{
    if (rooms.gate.busy() || browser->busy() || choosing || treeView->editingName())
        return;
    const bool waits = std::exchange(chosenWaits, false);
    if (!on || !browser->shown().isValid() || treeView->currentIndex() == browser->shown())
        return;
    if (waits)
        nodeChosen();
    else
        browser->selectShown();
}

/// What was opened while it could not be read closes again.
void uFtp::Parts::closeUnread(const QModelIndex &node)
{
    if (!node.isValid() || !nodes->isUnread(node))
        return;
    const FlagScope busy(browser->busy());
    treeView->collapse(node);
}

void uFtp::Parts::nodeExpanded(const QModelIndex &node)
{
    const QPersistentModelIndex at(node);
    if (!on || !at.isValid() || !nodes->isUnread(at))
        return;
    if (browser->busy()) {
        closeUnread(at);
        return;
    }
    bool read = false;
    run([&] { read = browser->readNode(at); });
    if (!at.isValid())
        return;
    const FlagScope busy(browser->busy());
    treeView->setExpanded(at, read);
}

void uFtp::Parts::rowEntered(const QModelIndex &index)
{
    if (!on || list->row(index.row()).tag != EntryTag::FD)
        return;
    const QString name = list->text(index.row(), RemoteColumn::Name);
    run([&] {
        const FlagScope now(filling);
        browser->enter(name);
    });
}

void uFtp::Parts::keyWanted(PaneKey key, bool forTree)
{
    if (!on)
        return;
    switch (key) {
    case PaneKey::Delete: // makes a folder: nothing is ever deleted by a key here
        newFolder(forTree);
        return;
    case PaneKey::Rename:
        rename(forTree);
        return;
    case PaneKey::Refresh:
        reload();
        return;
    case PaneKey::Parent:
        run([this] {
            const FlagScope now(filling);
            browser->toParent();
        });
        return;
    case PaneKey::Copy:
        copy(forTree);
        return;
    case PaneKey::Paste:
        paste(forTree);
        return;
    case PaneKey::Cut:
    case PaneKey::CopyText:
        return;
    }
}

void uFtp::Parts::sortBy(int column)
{
    sort.click(column);
    showSort();
}

void uFtp::Parts::showSort()
{
    list->sort(sort.column(), sort.order());
    listView->showSort(sort.column(), sort.order());
}

void uFtp::Parts::relist(const QString &dir)
{
    rooms.cache.setRefreshReport([this](int folders) {
        note->setText(QStringLiteral("%1 個のﾌｫﾙﾀﾞの情報を取得しました").arg(folders));
        note->show();
    });
    const WaitCursor cursor;
    try {
        rooms.cache.caRefresh(dir);
    } catch (...) {
        rooms.cache.setRefreshReport({});
        throw;
    }
    rooms.cache.setRefreshReport({});
}

void uFtp::Parts::reload()
{
    if (on)
        run([this] {
            relist(browser->shownDir());
            browser->refresh();
        });
}

void uFtp::Parts::updateAll()
{
    run([this] {
        const QString start = nodes->text(nodes->root());
        relist(QStringLiteral("/"));
        look();
        if (on)
            browser->showPath(start);
    });
}

void uFtp::Parts::popUpMenu(const QPoint &at, bool forTree)
{
    if (!on || rooms.gate.busy())
        return;
    const QList<RemoteEntry> chosen = entries(forTree);
    const bool file = std::any_of(chosen.begin(), chosen.end(), [](const RemoteEntry &entry) {
        return entry.tag == EntryTag::FL;
    });
    rooms.menus.bItem(forTree ? browser->shown().isValid() : !chosen.isEmpty());
    for (const int index : {0, 1}) {
        QAction *open = rooms.menus.entry(pfFtp::FTP, index);
        open->setEnabled(open->isEnabled() && file && !forTree);
    }
    rooms.menus.setPickIndex(-1);
    rooms.menus.popUp(pfFtp::FTP, at);
    if (on && rooms.menus.pickIndex() >= 0)
        menuPicked(rooms.menus.pickIndex(), forTree);
}

void uFtp::Parts::menuPicked(int index, bool forTree)
{
    switch (index) {
    case 0:
    case 1:
        openFile(index == 1);
        return;
    case 3:
        download(forTree);
        return;
    case 4:
        Q_EMIT q.eAct(QStringLiteral("同期"));
        return;
    case 6:
        remove(forTree);
        return;
    case 7:
        rename(forTree);
        return;
    case 9:
        newFolder(forTree);
        return;
    case 11:
        showFileList();
        return;
    case 12:
        reload();
        return;
    default:
        return;
    }
}

void uFtp::Parts::popUpElse()
{
    if (rooms.gate.busy())
        return;
    for (const int index : {2, 5, 8})
        rooms.menus.entry(pfFtp::ELSE, index)->setEnabled(on);
    rooms.menus.setPickIndex(-1);
    rooms.menus.popUp(pfFtp::ELSE, header->menuPlace());
    if (rooms.menus.pickIndex() < 0)
        return;
    if (rooms.menus.pickedPattern())
        Q_EMIT q.eSync(rooms.menus.pickGroup());
    else
        elsePicked(rooms.menus.pickIndex());
}

void uFtp::Parts::elsePicked(int index)
{
    switch (index) {
    case 0:
        editSites();
        return;
    case 2:
        updateAll();
        return;
    case 5:
        Q_EMIT q.eAct(QStringLiteral("登録"));
        return;
    case 6:
        Q_EMIT q.eAct(QStringLiteral("編集"));
        return;
    case 8:
        Q_EMIT q.eAct(QStringLiteral("切断"));
        return;
    default:
        return;
    }
}

/// The current row's file when it is selected, otherwise the first selected one.
void uFtp::Parts::openFile(bool textEditor)
{
    const QItemSelectionModel *selection = listView->selectionModel();
    int at = -1;
    for (const QModelIndex &index : selection->selectedRows()) {
        const bool file = list->row(index.row()).tag == EntryTag::FL;
        if (file && (at < 0 || index.row() == selection->currentIndex().row()))
            at = index.row();
    }
    if (at >= 0)
        Q_EMIT q.eOpnFL(browser->shownDir(), list->text(at, RemoteColumn::Name), textEditor);
}

void uFtp::Parts::showFileList()
{
    if (!fileList)
        fileList = std::make_unique<sfFlst>(rooms.database, rooms.session, rooms.desk, &q);
    fileList->Act(browser->shownDir());
}

} // namespace venlo
