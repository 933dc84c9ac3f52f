#include "localpane/LocalTreeFill.h"

#include <algorithm>

#include <QFileInfo>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QSet>

#include "localpane/FolderPaths.h"
#include "localpane/FolderReader.h"
#include "shared/FrontEnd.h"
#include "views/PaneView.h"

namespace venlo
{

namespace
{
FolderTree::Entry entryOf(const SubFolder &folder)
{
    return {folder.name, folder.hasSubFolders, folder.hidden, EntryTag::FD};
}
} // namespace

LocalTreeFill::LocalTreeFill(FolderTree &tree, PaneView &view, FrontEnd &frontEnd)
    : m_tree(tree), m_view(view), m_frontEnd(frontEnd)
{
    connect(&view, &QTreeView::expanded, this, &LocalTreeFill::ExpandNode);
}

QString LocalTreeFill::root() const
{
    return m_tree.text(m_tree.root());
}

QString LocalTreeFill::selectedPath() const
{
    // A new entry is no folder yet, though one of its name may lie beside it: what shows is still
    // the folder it stands in.
    const QModelIndex node = m_view.currentIndex();
    return m_tree.path(m_tree.tag(node) == EntryTag::NW ? node.parent() : node);
}

bool LocalTreeFill::changed() const
{
    return QFileInfo(root()).lastModified() != m_stamp.date;
}

bool LocalTreeFill::differs()
{
    if (!m_stamp.fresh)
        return false;
    m_stamp.fresh = FolderStamp::of(root()).fresh;
    const auto folders = readSubFolders(root());
    const QModelIndex top = m_tree.root();
    if (!folders || m_tree.isUnread(top))
        return false;
    const auto &now = folders.value();
    return static_cast<int>(now.size()) != m_tree.rowCount(top) ||
           std::any_of(now.begin(), now.end(), [&](const SubFolder &folder) {
               return !m_tree.child(top, folder.name, Qt::CaseSensitive).isValid();
           });
}

void LocalTreeFill::showRoot(const QString &root)
{
    const QScopedValueRollback<int> quiet(m_quiet, m_quiet + 1);
    m_stamp = FolderStamp::of(root);
    const QPersistentModelIndex node = m_tree.setRoot(root);
    addSubFolders(node);
    m_view.expand(node);
    select(node);
}

void LocalTreeFill::refill()
{
    const QScopedValueRollback<int> quiet(m_quiet, m_quiet + 1);
    const Kept kept = keep(m_tree.root());
    showRoot(root());
    restore(kept);
}

bool LocalTreeFill::addNewFolders()
{
    const QPersistentModelIndex top = m_tree.root();
    m_stamp = FolderStamp::of(root());
    const auto folders = readSubFolders(root());
    if (!folders || m_tree.isUnread(top))
        return false;
    QSet<QString> left;
    for (int row = 0; row < m_tree.rowCount(top); ++row)
        left.insert(m_tree.text(m_tree.index(row, 0, top)));
    std::vector<FolderTree::Entry> added;
    for (const SubFolder &folder : folders.value()) {
        if (!left.remove(folder.name))
            added.push_back(entryOf(folder));
    }
    return m_tree.addChildren(top, added) && added.empty() && left.isEmpty();
}

void LocalTreeFill::ExpandNode(const QModelIndex &node)
{
    if (!m_tree.isUnread(node))
        return;
    const QScopedValueRollback<int> quiet(m_quiet, m_quiet + 1);
    m_tree.removeChildren(node);
    addSubFolders(node);
}

void LocalTreeFill::readNode(const QModelIndex &node)
{
    if (!node.isValid())
        return;
    const QScopedValueRollback<int> quiet(m_quiet, m_quiet + 1);
    const QPersistentModelIndex kept(node);
    const Kept before = keep(node);
    if (node == m_tree.root())
        m_stamp = FolderStamp::of(root());
    m_tree.removeChildren(node);
    addSubFolders(kept);
    restore(before);
}

void LocalTreeFill::addSubFolders(const QModelIndex &node)
{
    const QString path = m_tree.path(node);
    if (!folderExists(path)) {
        m_frontEnd.message(path + QStringLiteral(" が存在しません"));
        return;
    }
    const auto folders = readSubFolders(path);
    if (!folders) {
        unreadable(node, folders.error().words);
        return;
    }
    std::vector<FolderTree::Entry> entries;
    entries.reserve(folders.value().size());
    for (const SubFolder &folder : folders.value())
        entries.push_back(entryOf(folder));
    if (!m_tree.addChildren(node, entries))
        Q_EMIT ranOut();
}

void LocalTreeFill::unreadable(const QModelIndex &node, const QString &why)
{
    // A childless node would say that there are none.
    m_tree.markUnread(node);
    m_view.collapse(node);
    m_frontEnd.addStatus(why);
}

LocalTreeFill::Kept LocalTreeFill::keep(const QModelIndex &below) const
{
    Kept kept;
    collectExpanded(below, kept.expanded);
    kept.selected = selectedPath();
    kept.scroll = m_view.verticalScrollBar()->value();
    return kept;
}

void LocalTreeFill::collectExpanded(const QModelIndex &node, QStringList &paths) const
{
    if (m_view.isExpanded(node))
        paths.append(m_tree.path(node));
    const int children = m_tree.rowCount(node);
    for (int row = 0; row < children; ++row) {
        const QModelIndex child = m_tree.index(row, 0, node);
        if (m_tree.rowCount(child) > 0)
            collectExpanded(child, paths);
    }
}

void LocalTreeFill::restore(const Kept &kept)
{
    bool found = false;
    for (const QString &path : kept.expanded) {
        const QModelIndex node = walk(path, false, found);
        if (found)
            m_view.expand(node);
    }
    if (!kept.selected.isEmpty() && kept.selected != selectedPath())
        select(walk(kept.selected, false, found));
    m_view.verticalScrollBar()->setValue(kept.scroll);
}

QModelIndex LocalTreeFill::walk(const QString &path, bool again, bool &found)
{
    QPersistentModelIndex node = m_tree.root();
    const QStringList names = namesBelow(root(), path, found);
    for (const QString &name : names) {
        const QModelIndex child = childOf(node, name, again);
        found = child.isValid();
        if (!found)
            break;
        node = child;
    }
    return node;
}

QModelIndex LocalTreeFill::childOf(const QModelIndex &node, const QString &name, bool again)
{
    const QPersistentModelIndex parent(node);
    const bool wasUnread = m_tree.isUnread(node);
    ExpandNode(node);
    const QModelIndex child = m_tree.child(parent, name, nameCase());
    if (child.isValid() || wasUnread || !again)
        return child;
    readNode(parent);
    return m_tree.child(parent, name, nameCase());
}

bool LocalTreeFill::GoToPath(const QString &path)
{
    if (!m_tree.root().isValid() || !folderExists(path))
        return false;
    const QScopedValueRollback<int> quiet(m_quiet, m_quiet + 1);
    bool found = false;
    const QPersistentModelIndex node = walk(tidyFolder(path), true, found);
    if (!found)
        return false;
    m_view.expand(node);
    select(node);
    return true;
}

void LocalTreeFill::select(const QModelIndex &node)
{
    const QScopedValueRollback<int> quiet(m_quiet, m_quiet + 1);
    m_view.setCurrentIndex(node);
    m_tree.setOpenNode(node);
    m_view.scrollTo(node);
}

} // namespace venlo
