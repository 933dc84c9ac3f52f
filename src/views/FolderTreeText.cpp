// What the nodes of a FolderTree are and how they show.
#include "views/FolderTree.h"

#include "views/FolderNode.h"
#include "views/PaleText.h"

#include <algorithm>

#include <QFont>

namespace venlo
{

QString FolderTree::key(const QModelIndex &node) const
{
    const Node *const at = nodeOf(node);
    return at ? at->key : QString();
}

QString FolderTree::text(const QModelIndex &node) const
{
    const Node *const at = nodeOf(node);
    return at ? at->text : QString();
}

EntryTag FolderTree::tag(const QModelIndex &node) const
{
    const Node *const at = nodeOf(node);
    return at ? at->tag : EntryTag::FD;
}

void FolderTree::setText(const QModelIndex &node, const QString &text)
{
    Node *const at = nodeOf(node);
    if (!at || at->text == text)
        return;
    at->text = text;
    at->iconKnown = {};
    Q_EMIT dataChanged(node, node);
}

void FolderTree::setTag(const QModelIndex &node, EntryTag tag)
{
    Node *const at = nodeOf(node);
    if (!at || at->tag == tag)
        return;
    at->tag = tag;
    Q_EMIT dataChanged(node, node);
}

QString FolderTree::path(const QModelIndex &node) const
{
    QStringList texts;
    for (const Node *at = nodeOf(node); at && at->parent; at = at->parent)
        texts.prepend(at->text);
    QString joined;
    for (const QString &text : texts) {
        if (!joined.isEmpty() && !joined.endsWith(m_separator))
            joined += m_separator;
        joined += text;
    }
    return joined;
}

QModelIndex FolderTree::child(const QModelIndex &node, const QString &text,
                              Qt::CaseSensitivity sensitivity) const
{
    const Node *const at = nodeOf(node);
    if (!at)
        return {};
    const auto find = [at, &text](Qt::CaseSensitivity how) {
        return std::find_if(at->children.begin(), at->children.end(), [&](const auto &child) {
            return child->tag != EntryTag::DM && child->text.compare(text, how) == 0;
        });
    };
    // Where names differ in case only, the one that was asked for comes first.
    auto found = find(Qt::CaseSensitive);
    if (found == at->children.end() && sensitivity == Qt::CaseInsensitive)
        found = find(Qt::CaseInsensitive);
    return found == at->children.end() ? QModelIndex() : indexOf(**found);
}

QModelIndex FolderTree::node(const QString &key) const
{
    const Node *const at = m_byKey.value(key);
    return at ? indexOf(*at) : QModelIndex();
}

void FolderTree::setIconSource(IconSource source)
{
    m_iconSource = std::move(source);
}

void FolderTree::setDropTarget(const QModelIndex &node)
{
    const QModelIndex old = m_dropTarget;
    if (old == node)
        return;
    m_dropTarget = node;
    for (const QModelIndex &changed : {old, node}) {
        if (changed.isValid())
            Q_EMIT dataChanged(changed, changed, {Qt::FontRole});
    }
}

void FolderTree::setOpenNode(const QModelIndex &node)
{
    const QModelIndex old = m_openNode;
    if (old == node)
        return;
    m_openNode = node;
    for (const QModelIndex &changed : {old, node}) {
        if (changed.isValid())
            Q_EMIT dataChanged(changed, changed, {Qt::DecorationRole});
    }
}

QModelIndex FolderTree::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    const Node *const at = parent.isValid() ? nodeOf(parent) : m_top.get();
    return indexOf(*at->children[static_cast<size_t>(row)]);
}

QModelIndex FolderTree::parent(const QModelIndex &child) const
{
    const Node *const at = nodeOf(child);
    return at ? indexOf(*at->parent) : QModelIndex();
}

int FolderTree::rowCount(const QModelIndex &parent) const
{
    const Node *const at = parent.isValid() ? nodeOf(parent) : m_top.get();
    return at ? at->count() : 0;
}

int FolderTree::columnCount(const QModelIndex & /*parent*/) const
{
    return 1;
}

QVariant FolderTree::data(const QModelIndex &index, int role) const
{
    Node *const at = nodeOf(index);
    if (!at)
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return at->text;
    case entryTagRole:
        return static_cast<int>(at->tag);
    case Qt::DecorationRole:
        return icon(*at);
    case Qt::ForegroundRole:
        return at->pale ? QVariant(paleText()) : QVariant();
    case Qt::FontRole:
        if (m_dropTarget == index) {
            QFont bold;
            bold.setBold(true);
            return bold;
        }
        return {};
    default:
        return {};
    }
}

QVariant FolderTree::icon(Node &node) const
{
    if (!m_iconSource || node.tag == EntryTag::DM)
        return {};
    const QModelIndex index = indexOf(node);
    const size_t open = m_openNode == index ? 1 : 0;
    if (!node.iconKnown[open]) {
        node.icons[open] = m_iconSource(index, open == 1);
        node.iconKnown[open] = true;
    }
    return node.icons[open];
}

Qt::ItemFlags FolderTree::flags(const QModelIndex &index) const
{
    const Node *const at = nodeOf(index);
    if (!at)
        return Qt::ItemIsDropEnabled;
    if (at->tag == EntryTag::DM)
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsDragEnabled |
           Qt::ItemIsDropEnabled;
}

} // namespace venlo
