#include "localpane/LocalDrops.h"

#include <algorithm>

#include <QDropEvent>
#include <QMimeData>
#include <QTimer>
#include <QUrl>

#include "ftp/Session.h"
#include "localpane/FolderPaths.h"
#include "localpane/LocalSelection.h"
#include "localpane/LocalShell.h"
#include "localpane/LocalViews.h"
#include "platform/FileClipboard.h"
#include "platform/FilesystemPath.h"
#include "shared/OperationGate.h"
#include "views/FolderTree.h"
#include "views/PaneView.h"
#include "views/RowList.h"

namespace venlo
{

namespace
{
/// Shift alone moves; with Ctrl or Alt besides it copies. A source that only lends its files keeps
/// them in any case.
bool movesFiles(const QDropEvent &event)
{
    return event.modifiers() == Qt::ShiftModifier &&
           event.possibleActions().testFlag(Qt::MoveAction);
}
} // namespace

LocalDrops::LocalDrops(Needs needs) : m(needs) {}

std::unique_ptr<QMimeData> LocalDrops::dragData(const QTreeView &from)
{
    const QStringList paths = m.selection.paths(&from == &m.views.TrView());
    if (paths.isEmpty())
        return nullptr;
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls << QUrl::fromLocalFile(path);
    auto data = std::make_unique<QMimeData>();
    data->setUrls(urls);
    m_ours = true;
    return data;
}

void LocalDrops::dragEnded(Qt::DropAction action)
{
    left();
    m_ours = false;
    if (action != Qt::IgnoreAction && !m.gate.busy())
        m.shell.bringUpToDate({});
}

bool LocalDrops::isFolderRow(const QModelIndex &row) const
{
    if (!row.isValid())
        return false;
    const RowList::Row &entry = m.views.rows().row(row.row());
    return entry.tag == EntryTag::FD && !entry.viewOnly;
}

QString LocalDrops::targetOf(const QTreeView &view, const QModelIndex &under) const
{
    const QString folder = m.views.NodePath();
    if (&view == &m.views.TrView()) {
        const bool isFolder = under.isValid() && m.views.tree().tag(under) == EntryTag::FD &&
                              !isUnusableName(m.views.tree().text(under));
        return isFolder ? m.views.tree().path(under) : QString();
    }
    return isFolderRow(under)
               ? m.views.pathIn(folder, m.views.rows().row(under.row()).texts.value(0))
               : folder;
}

Qt::DropAction LocalDrops::actionFor(const QDropEvent &event, const QString &target) const
{
    if (target.isEmpty() || m.gate.busy() || event.mimeData() == nullptr)
        return Qt::IgnoreAction;
    // A folder whose name is still being typed is on no disk; bringing the tree up to date would
    // take it from under the person's hands.
    if (!m.selection.selectedNode().isValid())
        return Qt::IgnoreAction;
    if (hasRemoteEntries(*event.mimeData()))
        return remoteEntries(*event.mimeData(), m.session.currentSite()) ? Qt::CopyAction
                                                                         : Qt::IgnoreAction;
    const QStringList paths = localPaths(*event.mimeData());
    if (paths.isEmpty() || (paths.size() == 1 && isSameFolder(paths.constFirst(), target)))
        return Qt::IgnoreAction;
    const bool allThere = std::all_of(paths.begin(), paths.end(), [&target](const QString &path) {
        return isSameFolder(parentFolder(path), target);
    });
    // Let go where it was taken up: only Ctrl says that a second one is wanted there.
    if (allThere && m_ours && !event.modifiers().testFlag(Qt::ControlModifier))
        return Qt::IgnoreAction;
    return movesFiles(event) ? Qt::MoveAction : Qt::CopyAction;
}

void LocalDrops::mark(const QTreeView &view, const QModelIndex &under)
{
    if (&view == &m.views.TrView()) {
        m.views.tree().setDropTarget(under);
        const bool closed = under.isValid() && !m.views.TrView().isExpanded(under);
        m.views.expandSoon(closed ? m.views.tree().key(under) : QString());
        return;
    }
    m.views.rows().setDropTarget(isFolderRow(under) ? under.row() : -1);
}

Qt::DropAction LocalDrops::over(const QTreeView &view, const QModelIndex &under,
                                const QDropEvent &event)
{
    const Qt::DropAction action = actionFor(event, targetOf(view, under));
    if (action == Qt::IgnoreAction) {
        left();
        // What cannot be dropped on a folder may still be on one below it.
        if (&view == &m.views.TrView() && under.isValid() && !m.gate.busy() &&
            !m.views.TrView().isExpanded(under))
            m.views.expandSoon(m.views.tree().key(under));
        return action;
    }
    mark(view, under);
    return action;
}

void LocalDrops::left()
{
    m.views.tree().setDropTarget({});
    m.views.rows().setDropTarget(-1);
    m.views.expandSoon(QString());
}

Qt::DropAction LocalDrops::dropped(const QTreeView &view, const QModelIndex &under,
                                   const QDropEvent &event)
{
    const QString target = targetOf(view, under);
    const Qt::DropAction action = actionFor(event, target);
    left();
    if (action == Qt::IgnoreAction)
        return action;
    if (hasRemoteEntries(*event.mimeData())) {
        const auto entries = remoteEntries(*event.mimeData(), m.session.currentSite());
        // Once the drag is over: a download would hold its source.
        QTimer::singleShot(0, &m.context, [&views = m.views, entries = *entries, target] {
            views.raiseFetchWanted(entries, target);
        });
        return Qt::CopyAction;
    }
    ShellFileOrder order;
    order.verb = action == Qt::MoveAction ? ShellVerb::Move : ShellVerb::Copy;
    order.from = localPaths(*event.mimeData());
    order.to = target;
    if (!m.shell.run(order))
        return Qt::IgnoreAction;
    // The source must not delete what we have moved, nor what a person has kept.
    return action == Qt::MoveAction ? Qt::TargetMoveAction : Qt::CopyAction;
}

void LocalDrops::droppedOnRoot(const QString &firstPath)
{
    if (m.gate.busy())
        return;
    const QString folder =
        firstPath.contains(QLatin1Char('.')) ? parentFolder(firstPath) : tidyFolder(firstPath);
    if (folderExists(folder))
        m.views.ShowRoot(folder);
}

} // namespace venlo
