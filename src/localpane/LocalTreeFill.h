#pragma once

#include <QObject>
#include <QPersistentModelIndex>
#include <QStringList>

#include "localpane/FolderPaths.h"
#include "views/FolderTree.h"

namespace venlo
{

class FrontEnd;
class PaneView;

/// Reads local folders into the tree. Whatever is read again keeps its expanded nodes, the selected
/// node as far as it still exists, and the scroll position. While it moves the selection itself it
/// is quiet: the list is not to follow.
class LocalTreeFill : public QObject
{
    Q_OBJECT

public:
    LocalTreeFill(FolderTree &tree, PaneView &view, FrontEnd &frontEnd);

    /// Rebuilds the tree with that folder, which exists, as its root, expanded and selected.
    void showRoot(const QString &root);
    /// Rebuilds the tree from its root.
    void refill();
    /// Adds the folders that are new in the root behind the others, and nothing else; says nothing.
    /// True when there is nothing left for refill to do.
    [[nodiscard]] bool addNewFolders();
    /// Replaces the placeholder of an unread node by its sub-folders.
    void ExpandNode(const QModelIndex &node);
    /// Reads a node's sub-folders again.
    void readNode(const QModelIndex &node);
    /// Selects and expands the folder's node, reading on the way. False, and nothing selected, when
    /// it is not to be found below the root.
    [[nodiscard]] bool GoToPath(const QString &path);
    void select(const QModelIndex &node);

    [[nodiscard]] QString root() const;
    [[nodiscard]] QString selectedPath() const;
    /// True when the root's own date is no longer the one it was read at.
    [[nodiscard]] bool changed() const;
    /// A look at the folders themselves where the date could not tell of a change that came right
    /// behind the last look.
    [[nodiscard]] bool differs();
    [[nodiscard]] bool quiet() const { return m_quiet > 0; }

Q_SIGNALS:
    /// The keys of the nodes ran out.
    void ranOut();

private:
    /// What reading again must not lose.
    struct Kept {
        QStringList expanded; ///< outer ones first
        QString selected;
        int scroll = 0;
    };
    [[nodiscard]] Kept keep(const QModelIndex &below) const;
    void collectExpanded(const QModelIndex &node, QStringList &paths) const;
    void restore(const Kept &kept);
    /// Adds the sub-folders of a childless node; says why when they cannot be read.
    void addSubFolders(const QModelIndex &node);
    void unreadable(const QModelIndex &node, const QString &why);
    /// The deepest known node on the way to a folder. again: folders that seem to be missing are
    /// looked for once more on the disk.
    [[nodiscard]] QModelIndex walk(const QString &path, bool again, bool &found);
    [[nodiscard]] QModelIndex childOf(const QModelIndex &node, const QString &name, bool again);

    FolderTree &m_tree;
    PaneView &m_view;
    FrontEnd &m_frontEnd;
    FolderStamp m_stamp;
    int m_quiet = 0;
};

} // namespace venlo
