#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QAbstractItemModel>
#include <QHash>
#include <QIcon>

#include "views/EntryTag.h"
#include "views/KeyCounter.h"

namespace venlo
{

/// The folders of a pane as a tree of one column. Folders that were not read yet carry one
/// placeholder child with the text "?". Paths are the node texts joined with the separator; a text
/// that already ends with it ("/") gets none added. The model reads nothing by itself.
class FolderTree : public QAbstractItemModel
{
    Q_OBJECT

public:
    /// What a node is made of. pale: drawn paler (hidden folders).
    struct Entry {
        QString text;
        bool hasSubFolders = false; ///< gets a placeholder child
        bool pale = false;
        EntryTag tag = EntryTag::FD;
    };
    using IconSource = std::function<QIcon(const QModelIndex &node, bool open)>;

    explicit FolderTree(QChar separator, QObject *parent = nullptr);
    ~FolderTree() override;

    void clear();
    /// Replaces everything by a root node: key "N0000", tag FD, no children.
    QModelIndex setRoot(const QString &text);
    [[nodiscard]] QModelIndex root() const;
    /// Appends children in one step. False when the keys ran out: those before stay.
    [[nodiscard]] bool addChildren(const QModelIndex &parent, const std::vector<Entry> &entries);
    /// One more child; invalid when the keys ran out.
    QModelIndex addChild(const QModelIndex &parent, const Entry &entry);
    /// Gives a childless node the placeholder child.
    void markUnread(const QModelIndex &node);
    /// True when its first child is the placeholder.
    [[nodiscard]] bool isUnread(const QModelIndex &node) const;
    void removeChildren(const QModelIndex &node);
    void remove(const QModelIndex &node);

    [[nodiscard]] QString key(const QModelIndex &node) const;
    [[nodiscard]] QString text(const QModelIndex &node) const;
    [[nodiscard]] EntryTag tag(const QModelIndex &node) const;
    void setText(const QModelIndex &node, const QString &text);
    void setTag(const QModelIndex &node, EntryTag tag);
    /// Full path of a node, empty for none.
    [[nodiscard]] QString path(const QModelIndex &node) const;
    /// The child of that text, placeholders left out; invalid when there is none.
    [[nodiscard]] QModelIndex child(const QModelIndex &node, const QString &text,
                                    Qt::CaseSensitivity sensitivity) const;
    /// The node with that key; invalid when it is gone.
    [[nodiscard]] QModelIndex node(const QString &key) const;

    /// Icons are asked for when a node is first painted, closed and open apart.
    void setIconSource(IconSource source);
    /// The node shown bold as the target of a drag; invalid for none.
    void setDropTarget(const QModelIndex &node);
    [[nodiscard]] QModelIndex dropTarget() const { return m_dropTarget; }
    /// The node whose open icon shows (the selected one).
    void setOpenNode(const QModelIndex &node);

    [[nodiscard]] KeyCounter &keys() { return m_keys; }

    [[nodiscard]] QModelIndex index(int row, int column, const QModelIndex &parent) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex &child) const override;
    [[nodiscard]] int rowCount(const QModelIndex &parent) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    struct Node;
    [[nodiscard]] Node *nodeOf(const QModelIndex &index) const;
    [[nodiscard]] QModelIndex indexOf(const Node &node) const;
    [[nodiscard]] std::unique_ptr<Node> makeNode(Node &parent, const Entry &entry);
    [[nodiscard]] static Entry placeholderEntry();
    void remember(Node &node);
    void forget(const Node &node);
    [[nodiscard]] QVariant icon(Node &node) const;

    QChar m_separator;
    KeyCounter m_keys;
    std::unique_ptr<Node> m_top; ///< holds the root node, never shown
    QHash<QString, Node *> m_byKey;
    IconSource m_iconSource;
    QPersistentModelIndex m_dropTarget;
    QPersistentModelIndex m_openNode;
};

} // namespace venlo
