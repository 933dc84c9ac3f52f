#include "localpane/LocalSelection.h"

#include <algorithm>

#include <QItemSelectionModel>

#include "localpane/LocalViews.h"
#include "platform/FilesystemPath.h"
#include "shared/FrontEnd.h"
#include "views/FolderTree.h"
#include "views/PaneView.h"
#include "views/RowList.h"

namespace venlo
{

namespace
{
/// Two digits, looked for anywhere in the text.
bool isIn(const QString &digits, int index)
{
    return digits.contains(QStringLiteral("%1").arg(index, 2, 10, QLatin1Char('0')));
}
} // namespace

CollectFlags collectFlags(int index)
{
    return {!isIn(QStringLiteral("05.06.12"), index), isIn(QStringLiteral("01.02.15.17ﾞ"), index),
            index == 0};
}

bool collectsFirst(int index)
{
    return !isIn(QStringLiteral("03.07.13.15"), index);
}

LocalSelection::LocalSelection(LocalViews &views, FrontEnd &frontEnd)
    : m_views(views), m_frontEnd(frontEnd)
{
}

bool LocalSelection::usable(const QString &name) const
{
    if (!isUnusableName(name))
        return true;
    m_frontEnd.addStatus(name.simplified() + QStringLiteral(" は扱えない文字を含むため対象外です"));
    return false;
}

QModelIndex LocalSelection::selectedNode() const
{
    const QModelIndex node = m_views.TrView().currentIndex();
    return node.isValid() && m_views.tree().tag(node) == EntryTag::FD ? node : QModelIndex();
}

QModelIndexList LocalSelection::selectedRows() const
{
    QModelIndexList rows = m_views.LsView().selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end());
    return rows;
}

QStringList LocalSelection::paths(bool forTree, bool filesOnly) const
{
    if (forTree) {
        const QModelIndex node = selectedNode();
        if (filesOnly || !node.isValid() || !usable(m_views.tree().text(node)))
            return {};
        return {m_views.tree().path(node)};
    }
    QStringList paths;
    const QString folder = m_views.NodePath();
    for (const QModelIndex &index : selectedRows()) {
        const RowList::Row &row = m_views.rows().row(index.row());
        if (row.tag == EntryTag::NW || (filesOnly && row.tag == EntryTag::FD))
            continue;
        const QString name = row.texts.value(0);
        if (usable(name) && !row.viewOnly)
            paths << m_views.pathIn(folder, name);
    }
    return paths;
}

QString LocalSelection::collect(bool forTree, CollectFlags flags) const
{
    QStringList found = paths(forTree, flags.filesOnly);
    if (found.isEmpty() && flags.folderItself && selectedRows().isEmpty())
        found = QStringList(m_views.NodePath());
    return found.join(flags.forHost ? QChar(QLatin1Char(',')) : QChar(0));
}

QString LocalSelection::targetFolder(bool forTree) const
{
    QString folder = m_views.NodePath();
    const QModelIndexList rows = selectedRows();
    if (forTree || rows.size() != 1)
        return folder;
    const RowList::Row &row = m_views.rows().row(rows.constFirst().row());
    return row.tag == EntryTag::FD && !row.viewOnly ? m_views.pathIn(folder, row.texts.value(0))
                                                    : folder;
}

} // namespace venlo
