#include "localpane/LocalShell.h"

#include <QScopeGuard>
#include <QWidget>

#include "localpane/FileOperationWatcher.h"
#include "localpane/FolderPaths.h"
#include "localpane/LocalViews.h"
#include "shared/OperationGate.h"
#include "shared/WindowDesk.h"
#include "views/FolderTree.h"
#include "views/PaneView.h"

namespace venlo
{

LocalShell::LocalShell(LocalViews &views, WindowDesk &desk, OperationGate &gate)
    : m_views(views), m_desk(desk), m_gate(gate)
{
}

bool LocalShell::run(const ShellFileOrder &order)
{
    const OperationGate::Turn turn = m_gate.begin(OperationGate::Reach::Disk);
    if (!turn)
        return false;
    m_views.setBusy(true);
    const auto idle = qScopeGuard([this] { m_views.setBusy(false); });
    {
        FileOperationWatcher watcher(m_desk, m_views.pane());
        ShellFileOrder owned = order;
        owned.owner = static_cast<quintptr>(m_views.pane().window()->winId());
        runShellFileOperation(owned, watcher);
    }
    QStringList touched;
    for (const QString &path : order.from)
        touched << parentFolder(path);
    if (!order.to.isEmpty())
        touched << order.to;
    touched.removeDuplicates();
    bringUpToDate(touched);
    return true;
}

QModelIndex LocalShell::nodeOf(const QString &folder) const
{
    const FolderTree &tree = m_views.tree();
    QModelIndex node = tree.root();
    if (!node.isValid())
        return {};
    bool found = false;
    const QStringList names = namesBelow(tree.text(node), tidyFolder(folder), found);
    for (qsizetype i = 0; found && node.isValid() && i < names.size(); ++i)
        node = tree.child(node, names.at(i), nameCase());
    return found ? node : QModelIndex();
}

void LocalShell::leaveWhatIsGone()
{
    QModelIndex node = m_views.TrView().currentIndex();
    if (!node.isValid() || folderExists(m_views.tree().path(node)))
        return;
    while (node.parent().isValid() && !folderExists(m_views.tree().path(node)))
        node = node.parent();
    m_views.select(node);
}

void LocalShell::bringUpToDate(const QStringList &folders)
{
    leaveWhatIsGone();
    const QString shown = m_views.NodePath();
    for (const QString &folder : folders) {
        const QModelIndex node = nodeOf(folder);
        // The shown folder is read below; what was never read has nothing to be brought up to date.
        if (node.isValid() && !isSameFolder(folder, shown) && !m_views.tree().isUnread(node) &&
            folderExists(folder))
            m_views.readNode(node);
    }
    if (folderExists(shown))
        m_views.UpdateList();
}

} // namespace venlo
