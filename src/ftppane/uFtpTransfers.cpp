// What leaves the FTP pane and comes to it: downloads, the clipboard and drags.
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QDropEvent>
#include <QFileInfo>
#include <QPointer>
#include <QUrl>

#include "ftp/FetchFolder.h"
#include "ftp/LocalPath.h"
#include "ftp/RemoteOperations.h"
#include "ftp/Session.h"
#include "ftppane/Download.h"
#include "ftppane/OperationScopes.h"
#include "ftppane/RemoteFetchData.h"
#include "ftppane/RemoteRows.h"
#include "ftppane/uFtpParts.h"
#include "shared/NameList.h"
#include "shared/OperationGate.h"
#include "shared/RemotePath.h"
#include "shared/WindowDesk.h"

namespace venlo
{

namespace
{
QStringList localPaths(const QMimeData &data)
{
    QStringList paths;
    for (const QUrl &url : data.urls()) {
        if (url.isLocalFile())
            paths.append(QDir::toNativeSeparators(url.toLocalFile()));
    }
    return paths;
}
} // namespace

QList<RemoteEntry> uFtp::Parts::entries(bool forTree) const
{
    QList<RemoteEntry> chosen;
    if (!browser->shown().isValid())
        return chosen;
    const QString dir = browser->shownDir();
    if (!forTree) {
        for (const QModelIndex &index : listView->selectionModel()->selectedRows()) {
            const EntryTag tag = list->row(index.row()).tag;
            if (tag == EntryTag::FD || tag == EntryTag::FL)
                chosen.append({dir, list->text(index.row(), RemoteColumn::Name), tag});
        }
        return chosen;
    }
    if (dir != QLatin1String("/")) {
        RemoteEntry entry;
        sjSplitPath(dir, entry.dir, entry.name);
        entry.tag = EntryTag::FD;
        return {entry};
    }
    // "/" has no name of its own: it is what lies in it.
    QString folders;
    QString files;
    rooms.cache.cachedNames(dir, folders, files);
    for (const QString &name : splitNames(folders))
        chosen.append({dir, name, EntryTag::FD});
    for (const QString &name : splitNames(files))
        chosen.append({dir, name, EntryTag::FL});
    return chosen;
}

void uFtp::Parts::startTransfers()
{
    rooms.operations.standingAnswer = OverwriteMode::Ask;
    rooms.operations.resetCounts();
}

void uFtp::Parts::download(bool forTree)
{
    run([&] {
        QString localFolder;
        bool proceed = false;
        Q_EMIT q.eBfrGet(localFolder, proceed);
        const QList<RemoteEntry> wanted = entries(forTree);
        if (!proceed || localFolder.isEmpty() || wanted.isEmpty())
            return;
        const ShownMessages window(rooms.window);
        startTransfers();
        Download work(rooms.operations, rooms.window,
                      [this](const QString &text) { Q_EMIT q.eMsg(text); });
        // What was given up is counted by the operations and told by the host.
        (void)work.run(wanted, withoutTrailingSeparator(localFolder));
        Q_EMIT q.eEndGet();
    });
}

/// Files for another program, in a folder of their own. All or nothing: half a folder would look
/// like a whole one there.
QList<QUrl> uFtp::Parts::fetchForOthers(const QList<RemoteEntry> &wanted)
{
    QList<QUrl> urls;
    run([&] {
        auto folder = std::make_unique<FetchFolder>();
        if (folder->path().isEmpty())
            return;
        const ShownMessages window(rooms.window);
        startTransfers();
        Download work(rooms.operations, rooms.window,
                      [this](const QString &text) { Q_EMIT q.eMsg(text); });
        const bool whole = work.run(wanted, QDir::toNativeSeparators(folder->path()));
        Q_EMIT q.eMsg(QString());
        if (!whole || rooms.operations.counts().givenUp > 0)
            return;
        for (const RemoteEntry &entry : wanted) {
            const QString path = QDir(folder->path()).filePath(entry.name);
            if (QFileInfo::exists(path))
                urls.append(QUrl::fromLocalFile(path));
        }
        folder->remember();
        rooms.handedOut.push_back(std::move(folder));
    });
    return urls;
}

void uFtp::Parts::copy(bool forTree)
{
    const QList<RemoteEntry> chosen = entries(forTree);
    if (chosen.isEmpty())
        return;
    auto data = std::make_unique<QMimeData>();
    setRemoteEntries(*data, rooms.session.currentSite(), chosen);
    QApplication::clipboard()->setMimeData(data.release());
}

void uFtp::Parts::paste(bool forTree)
{
    const QMimeData *data = QApplication::clipboard()->mimeData();
    if (data == nullptr || hasRemoteEntries(*data))
        return;
    QString dir = browser->shownDir();
    const QModelIndexList selected = listView->selectionModel()->selectedRows();
    if (!forTree && selected.size() == 1)
        dir = dirUnder(*listView, selected.constFirst());
    store(localPaths(*data), dir);
}

void uFtp::Parts::store(const QStringList &paths, const QString &dir)
{
    if (on && !paths.isEmpty() && !rooms.gate.busy())
        Q_EMIT q.storeWanted(paths, dir);
}

QString uFtp::Parts::dirUnder(const QTreeView &view, const QModelIndex &under) const
{
    if (under.isValid() && &view == treeView)
        return browser->dirOf(under);
    if (under.isValid() && list->row(under.row()).tag == EntryTag::FD)
        return remoteChild(browser->shownDir(), list->text(under.row(), RemoteColumn::Name));
    return browser->shownDir();
}

std::unique_ptr<QMimeData> uFtp::Parts::dragData(const QTreeView &from)
{
    const QList<RemoteEntry> chosen = entries(&from == treeView);
    if (!on || chosen.isEmpty())
        return nullptr;
    const QPointer<Parts> self(this);
    auto data = std::make_unique<RemoteFetchData>(
        [self, chosen] { return self ? self->fetchForOthers(chosen) : QList<QUrl>(); });
    setRemoteEntries(*data, rooms.session.currentSite(), chosen);
    return data;
}

void uFtp::Parts::dragEnded(Qt::DropAction /*action*/) {}

/// Remote entries first: asking them for urls would fetch them.
bool uFtp::Parts::takes(const QDropEvent &event) const
{
    return on && !rooms.gate.busy() && (event.possibleActions() & Qt::CopyAction) &&
           event.mimeData() != nullptr && !hasRemoteEntries(*event.mimeData()) &&
           event.mimeData()->hasUrls() && !localPaths(*event.mimeData()).isEmpty();
}

Qt::DropAction uFtp::Parts::dragOver(const QTreeView &view, const QModelIndex &under,
                                     const QDropEvent &event)
{
    const bool taken = takes(event);
    if (&view == treeView) {
        nodes->setDropTarget(taken ? (under.isValid() ? under : browser->shown()) : QModelIndex());
    } else {
        const bool folder = taken && under.isValid() && list->row(under.row()).tag == EntryTag::FD;
        list->setDropTarget(folder ? under.row() : -1);
    }
    return taken ? Qt::CopyAction : Qt::IgnoreAction;
}

void uFtp::Parts::dragLeft(const QTreeView &view)
{
    if (&view == treeView)
        nodes->setDropTarget({});
    else
        list->setDropTarget(-1);
}

/// The upload begins behind the drop: its source waits for the answer.
Qt::DropAction uFtp::Parts::dropped(const QTreeView &view, const QModelIndex &under,
                                    const QDropEvent &event)
{
    if (!takes(event))
        return Qt::IgnoreAction;
    QMetaObject::invokeMethod(
        this,
        [this, paths = localPaths(*event.mimeData()), dir = dirUnder(view, under)] {
            store(paths, dir);
        },
        Qt::QueuedConnection);
    return Qt::CopyAction;
}

} // namespace venlo
