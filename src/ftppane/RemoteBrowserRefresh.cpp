// How the remote tree and list take up what has changed in the cache.
#include "ftppane/RemoteBrowser.h"

#include <QItemSelection>
#include <QScrollBar>
#include <QSet>

#include "ftp/DirectoryCache.h"
#include "ftppane/OperationScopes.h"
#include "ftppane/RemoteRows.h"
#include "shared/Flags.h"
#include "shared/RemotePath.h"
#include "views/PaneView.h"

namespace venlo
{

/// The list's selection by names, which outlives its rows.
struct RemoteBrowser::Kept {
    std::vector<std::pair<EntryTag, QString>> selected;
    std::pair<EntryTag, QString> current;
    int scrolled = 0;
};

RemoteBrowser::Kept RemoteBrowser::keepSelection() const
{
    Kept kept;
    const auto entryOf = [this](int row) {
        return std::pair(m_rows.row(row).tag, m_rows.text(row, 0));
    };
    for (const QModelIndex &index : m_list.selectionModel()->selectedRows())
        kept.selected.push_back(entryOf(index.row()));
    if (m_list.currentIndex().isValid())
        kept.current = entryOf(m_list.currentIndex().row());
    kept.scrolled = m_list.verticalScrollBar()->value();
    return kept;
}

void RemoteBrowser::restoreSelection(const Kept &kept)
{
    if (const int row = m_rows.rowOf(kept.current.first, kept.current.second); row >= 0)
        m_list.selectionModel()->setCurrentIndex(m_rows.index(row, 0),
                                                 QItemSelectionModel::NoUpdate);
    QItemSelection selection;
    for (const auto &[tag, name] : kept.selected) {
        if (const int row = m_rows.rowOf(tag, name); row >= 0)
            selection.select(m_rows.index(row, 0), m_rows.index(row, 0));
    }
    m_list.selectionModel()->select(selection,
                                    QItemSelectionModel::Select | QItemSelectionModel::Rows);
    m_list.verticalScrollBar()->setValue(kept.scrolled);
}

void RemoteBrowser::refresh()
{
    const QPersistentModelIndex at = m_shown;
    if (!at.isValid())
        return;
    const WaitCursor cursor;
    const FlagScope busy(m_busy);
    syncNode(at);
    if (!at.isValid() || m_shown != at)
        return;
    const int fill = ++m_fill;
    std::vector<RowList::Row> rows = readRows(dirOf(at));
    if (fill != m_fill || updateRows(rows))
        return;
    const Kept kept = keepSelection();
    m_rows.clear();
    addRows(std::move(rows));
    restoreSelection(kept);
}

bool RemoteBrowser::updateRows(const std::vector<RowList::Row> &rows)
{
    std::vector<RowList::Row> added;
    QSet<QString> there;
    for (const RowList::Row &row : rows) {
        there.insert(row.texts.value(RemoteColumn::SortKey));
        if (m_rows.rowOf(row.tag, row.texts.value(RemoteColumn::Name)) < 0)
            added.push_back(row);
    }
    // Without an order new folders would come behind the files.
    if (!added.empty() && m_rows.sortColumn() < 0)
        return false;
    std::vector<int> gone;
    for (int row = 0; row < m_rows.count(); ++row) {
        if (!there.contains(m_rows.text(row, RemoteColumn::SortKey)))
            gone.push_back(row);
    }
    m_rows.remove(std::move(gone));
    for (const RowList::Row &row : rows) {
        const int at = m_rows.rowOf(row.tag, row.texts.value(RemoteColumn::Name));
        for (const int column : {RemoteColumn::Modified, RemoteColumn::Size}) {
            if (at >= 0 && m_rows.text(at, column) != row.texts.value(column))
                m_rows.setText(at, column, row.texts.value(column));
        }
    }
    addRows(std::move(added));
    return true;
}

/// Takes out what is gone and adds what is new; what stays keeps its nodes.
void RemoteBrowser::syncNode(const QModelIndex &node)
{
    const QPersistentModelIndex at(node);
    const QString dir = dirOf(node);
    const QStringList names = subFolders(dir);
    if (!at.isValid())
        return;
    if (names.isEmpty() && isDoubtful(dir)) {
        markUnread(at);
        return;
    }
    if (m_nodes.isUnread(at)) {
        if (names.isEmpty())
            m_nodes.removeChildren(at);
        return;
    }
    removeVanished(at, names);
    QSet<QString> there;
    for (int row = 0; row < m_nodes.rowCount(at); ++row) {
        const QModelIndex child = m_nodes.index(row, 0, at);
        there.insert(m_nodes.text(child));
        syncChild(child);
    }
    QStringList added;
    for (const QString &name : names) {
        if (!there.contains(name))
            added.append(name);
    }
    if (!addChildren(at, dir, added))
        Q_EMIT ranOut();
}

void RemoteBrowser::removeVanished(const QModelIndex &node, const QStringList &names)
{
    const QSet<QString> there(names.begin(), names.end());
    for (int row = m_nodes.rowCount(node) - 1; row >= 0; --row) {
        const QModelIndex child = m_nodes.index(row, 0, node);
        if (m_nodes.tag(child) == EntryTag::FD && !there.contains(m_nodes.text(child)))
            m_nodes.remove(child);
    }
}

/// By what is cached: the server is not asked about folders that nobody opened.
void RemoteBrowser::syncChild(const QModelIndex &child)
{
    if (m_nodes.tag(child) != EntryTag::FD)
        return;
    const QString dir = dirOf(child);
    QString folders;
    QString files;
    m_rooms.cache.cachedNames(dir, folders, files);
    const bool childless = m_nodes.rowCount(child) == 0;
    if (childless || m_nodes.isUnread(child)) {
        if (childless && (!folders.isEmpty() || isDoubtful(dir)))
            markUnread(child);
        else if (!childless && folders.isEmpty() && !files.isEmpty() && !isDoubtful(dir))
            m_nodes.removeChildren(child);
        return;
    }
    if (m_tree.isExpanded(child) && !folders.isEmpty()) {
        syncNode(child);
        return;
    }
    m_nodes.removeChildren(child);
    if (!folders.isEmpty() || files.isEmpty())
        markUnread(child);
}

} // namespace venlo
