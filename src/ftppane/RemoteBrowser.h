#pragma once

#include <functional>
#include <vector>

#include <QObject>
#include <QPersistentModelIndex>
#include <QString>
#include <QStringList>

#include "views/FolderTree.h"
#include "views/RowList.h"

namespace venlo
{

class DirectoryCache;
class PaneView;
class Session;
class WindowDesk;

/// Fills the remote tree and list from the cache of listings and goes about in them. What could
/// not be listed stays unread in the tree and is noted below the list: it never looks empty. The
/// cache may ask the server, so that events run meanwhile; a store that fails throws DbError.
class RemoteBrowser final : public QObject
{
    Q_OBJECT

public:
    struct Rooms {
        WindowDesk &desk;
        Session &session;
        DirectoryCache &cache;
    };
    struct Views {
        FolderTree &nodes;
        PaneView &tree;
        RowList &rows;
        PaneView &list;
    };
    RemoteBrowser(Rooms rooms, Views views, QObject *parent = nullptr);

    void clear();
    /// Shows a start path (server text, then the directory) as the root, expanded and selected.
    void showPath(const QString &path);
    /// Walks down to a directory; false, after a message, when a part of it is missing or could
    /// not be looked at: the deepest node that was found is selected.
    [[nodiscard]] bool goTo(const QString &path);
    /// Reads the sub-folders of a node that was not read yet. False when they could not be listed:
    /// the node stays unread.
    [[nodiscard]] bool readNode(const QModelIndex &node);
    /// Says that a folder could not be listed, unless the person knows: the connection has gone, or
    /// Cancel was pressed.
    void sayUnlisted(const QString &path);
    /// Selects a node and fills the list for it.
    void show(const QModelIndex &node);
    /// Enters a folder of the list.
    void enter(const QString &name);
    void toParent();
    /// Reads the shown folder again; selection and expanded nodes stay.
    void refresh();
    /// Selects the shown node again, after a click that nothing came of.
    void selectShown();

    /// The node whose folder the list shows; invalid for none.
    [[nodiscard]] QModelIndex shown() const { return m_shown; }
    /// Remote directory of a node, "/" for a bare server.
    [[nodiscard]] QString dirOf(const QModelIndex &node) const;
    [[nodiscard]] QString shownDir() const { return dirOf(m_shown); }
    /// Set while tree and list are being changed by the pane itself: clicks mean nothing then.
    [[nodiscard]] bool &busy() { return m_busy; }
    /// The keys ran out. Says so.
    void overflow() { Q_EMIT ranOut(); }

Q_SIGNALS:
    void ranOut();
    /// What is to be known of the shown list, empty when it is whole.
    void noted(const QString &text);

private:
    void fillList(const QModelIndex &node);
    /// The rows of a directory as the cache has them now; notes how far they can be trusted.
    [[nodiscard]] std::vector<RowList::Row> readRows(const QString &dir);
    /// Brings the shown rows up to date in place, as far as their order stays the same by it.
    [[nodiscard]] bool updateRows(const std::vector<RowList::Row> &rows);
    void addRows(std::vector<RowList::Row> rows);
    void noteTrust(const QString &dir, bool empty);
    class Children;
    [[nodiscard]] bool addChildren(const QPersistentModelIndex &parent, const QString &dir,
                                   const QStringList &names);
    [[nodiscard]] QStringList subFolders(const QString &dir);
    /// True also where it is not known.
    [[nodiscard]] bool mayHaveSubFolders(const QString &dir);
    /// A listing of the directory failed, was cancelled or is not whole.
    [[nodiscard]] bool isDoubtful(const QString &dir) const;
    void syncNode(const QModelIndex &node);
    void syncChild(const QModelIndex &child);
    void markUnread(const QModelIndex &node);
    void removeVanished(const QModelIndex &node, const QStringList &names);
    /// Asks the cache; entries that it could not hold are said once, and what it holds is asked
    /// for.
    void tolerant(const std::function<void()> &ask);
    void sayMisfits();

    struct Kept;
    [[nodiscard]] Kept keepSelection() const;
    void restoreSelection(const Kept &kept);

    Rooms m_rooms;
    FolderTree &m_nodes;
    PaneView &m_tree;
    RowList &m_rows;
    PaneView &m_list;
    QPersistentModelIndex m_shown;
    QString m_misfits;
    int m_fill = 0; ///< counts the fills: a newer one ends those before
    bool m_busy = false;
};

} // namespace venlo
