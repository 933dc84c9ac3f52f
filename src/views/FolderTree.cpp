#include "views/FolderTree.h"

#include "views/FolderNode.h"

#include <iterator>
#include <utility>

namespace venlo
{

namespace
{

QString rootKey()
{
    return QStringLiteral("N0000");
}

} // namespace

FolderTree::FolderTree(QChar separator, QObject *parent)
    : QAbstractItemModel(parent), m_separator(separator), m_keys(QLatin1Char('N'), 4, 1),
      m_top(std::make_unique<Node>())
{
}

FolderTree::~FolderTree() = default;

void FolderTree::clear()
{
    beginResetModel();
    m_byKey.clear();
    m_top = std::make_unique<Node>();
    endResetModel();
}

QModelIndex FolderTree::setRoot(const QString &text)
{
    beginResetModel();
    m_byKey.clear();
    m_top = std::make_unique<Node>();
    auto node = std::make_unique<Node>();
    node->parent = m_top.get();
    node->key = rootKey();
    node->text = text;
    m_byKey.insert(node->key, node.get());
    m_top->children.push_back(std::move(node));
    endResetModel();
    return root();
}

QModelIndex FolderTree::root() const
{
    return m_top->children.empty() ? QModelIndex() : indexOf(*m_top->children.front());
}

FolderTree::Node *FolderTree::nodeOf(const QModelIndex &index) const
{
    if (!index.isValid() || index.model() != this)
        return nullptr;
    return static_cast<Node *>(index.internalPointer());
}

QModelIndex FolderTree::indexOf(const Node &node) const
{
    return node.parent ? createIndex(node.row, 0, &node) : QModelIndex();
}

std::unique_ptr<FolderTree::Node> FolderTree::makeNode(Node &parent, const Entry &entry)
{
    const std::optional<QString> key = m_keys.next();
    if (!key)
        return nullptr;
    auto node = std::make_unique<Node>();
    node->parent = &parent;
    node->key = *key;
    node->text = entry.text;
    node->tag = entry.tag;
    node->pale = entry.pale;
    if (entry.hasSubFolders) {
        // A folder without the key for its placeholder would look as if it had no folders.
        auto placeholder = makeNode(*node, placeholderEntry());
        if (!placeholder)
            return nullptr;
        node->children.push_back(std::move(placeholder));
    }
    return node;
}

FolderTree::Entry FolderTree::placeholderEntry()
{
    return {QStringLiteral("?"), false, false, EntryTag::DM};
}

void FolderTree::remember(Node &node)
{
    m_byKey.insert(node.key, &node);
    for (const auto &child : node.children)
        remember(*child);
}

void FolderTree::forget(const Node &node)
{
    m_byKey.remove(node.key);
    for (const auto &child : node.children)
        forget(*child);
}

bool FolderTree::addChildren(const QModelIndex &parent, const std::vector<Entry> &entries)
{
    Node *const to = nodeOf(parent);
    if (!to)
        return false;
    std::vector<std::unique_ptr<Node>> made;
    made.reserve(entries.size());
    for (const Entry &entry : entries) {
        auto node = makeNode(*to, entry);
        if (!node)
            break;
        made.push_back(std::move(node));
    }
    if (made.empty())
        return entries.empty();
    const auto first = to->children.size();
    const bool all = made.size() == entries.size();
    beginInsertRows(parent, to->count(), to->count() + static_cast<int>(made.size()) - 1);
    std::move(made.begin(), made.end(), std::back_inserter(to->children));
    to->renumber(first);
    for (size_t i = first; i < to->children.size(); ++i)
        remember(*to->children[i]);
    endInsertRows();
    return all;
}

QModelIndex FolderTree::addChild(const QModelIndex &parent, const Entry &entry)
{
    return addChildren(parent, {entry}) ? indexOf(*nodeOf(parent)->children.back()) : QModelIndex();
}

void FolderTree::markUnread(const QModelIndex &node)
{
    if (const Node *const at = nodeOf(node); at && at->children.empty())
        addChild(node, placeholderEntry());
}

bool FolderTree::isUnread(const QModelIndex &node) const
{
    const Node *const at = nodeOf(node);
    // The tag too: elsewhere than on Windows a folder may really be called "?".
    return at && !at->children.empty() && at->children.front()->tag == EntryTag::DM &&
           at->children.front()->text == placeholderEntry().text;
}

void FolderTree::removeChildren(const QModelIndex &node)
{
    Node *const at = nodeOf(node);
    if (!at || at->children.empty())
        return;
    beginRemoveRows(node, 0, at->count() - 1);
    for (const auto &child : at->children)
        forget(*child);
    // Destroyed after the views were told: they may still compare the old indexes.
    const auto gone = std::exchange(at->children, {});
    endRemoveRows();
}

void FolderTree::remove(const QModelIndex &node)
{
    const Node *const at = nodeOf(node);
    if (!at)
        return;
    Node &from = *at->parent;
    const auto row = static_cast<size_t>(at->row);
    beginRemoveRows(node.parent(), at->row, at->row);
    forget(*at);
    const auto gone = std::move(from.children[row]);
    from.children.erase(from.children.begin() + at->row);
    from.renumber(row);
    endRemoveRows();
}

} // namespace venlo
