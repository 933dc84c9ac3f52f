#pragma once

#include <QList>
#include <QModelIndex>
#include <QString>

#include "views/RemoteEntries.h"

class QWidget;

namespace venlo
{

class FolderTree;
class PaneView;
class RowList;

/// What the commands of the local pane work on; uFile implements it. Paths as in uFile.
class LocalViews
{
public:
    virtual ~LocalViews() = default;

    [[nodiscard]] virtual QWidget &pane() = 0;
    [[nodiscard]] virtual FolderTree &tree() = 0;
    [[nodiscard]] virtual PaneView &TrView() = 0;
    [[nodiscard]] virtual RowList &rows() = 0;
    [[nodiscard]] virtual PaneView &LsView() = 0;
    [[nodiscard]] virtual QString NodePath() const = 0;

    /// Joins a folder of the pane and a name.
    [[nodiscard]] virtual QString pathIn(const QString &folder, const QString &name) const = 0;
    /// Selects a node, which fills the list.
    virtual void select(const QModelIndex &node) = 0;
    /// Reads a node's sub-folders again, keeping selection and expanded nodes.
    virtual void readNode(const QModelIndex &node) = 0;
    /// Replaces the "?" placeholder of a node by its sub-folders.
    virtual void ExpandNode(const QModelIndex &node) = 0;
    /// Reads the current folder's node again and brings the list up to date in place.
    virtual void UpdateList() = 0;
    virtual void ShowRoot(const QString &root) = 0;
    /// While busy the watch and clicks do nothing. Nests.
    virtual void setBusy(bool busy) = 0;
    /// The node that the watch expands at its next tick (hovered by a drag); empty key: none.
    virtual void expandSoon(const QString &nodeKey) = 0;
    /// The upload request of a menu command: the whole shown folder, or the list's selected rows.
    virtual void requestUpload(bool wholeFolder) = 0;

    virtual void raiseEAct(const QString &job) = 0;
    virtual void raiseEOpnFL(int mode, const QString &selection) = 0;
    virtual void raiseFetchWanted(const QList<RemoteEntry> &entries, const QString &folder) = 0;
};

} // namespace venlo
