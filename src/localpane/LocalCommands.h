#pragma once

#include <memory>

#include <QObject>

#include "views/PaneView.h"

class QDropEvent;

namespace venlo
{

class LocalViews;
class OperationGate;
class Session;
class WindowDesk;

/// The commands of the local pane: what its menu, its keys, label editing, the clipboard and drags
/// do with files and folders. Copy, move and delete are the system's shell operations.
class LocalCommands : public QObject, public DragPartner
{
    Q_OBJECT

public:
    struct Rooms {
        WindowDesk &desk;
        OperationGate &gate;
        Session &session; ///< names the site whose entries a drop may hold
    };
    LocalCommands(LocalViews &views, Rooms rooms, QObject *parent = nullptr);
    ~LocalCommands() override;

    /// A command of the folder menu; only the menu name "FOLD" (letter case ignored) is handled.
    /// forTree: the command is given for the tree, otherwise for the list.
    void RunMenuCommand(const QString &menuName, int index, bool forTree);
    /// verb: "移動", "複写" or "削除"; from: paths joined by NUL.
    void RunShellFileOp(const QString &verb, const QString &from, const QString &to, bool silent,
                        bool noConfirm);
    /// The whole list as text on the clipboard.
    void copyListText();
    /// What a pane's own key asks for, in the tree or in the list.
    void keyWanted(PaneKey key, bool forTree);
    /// The end of label editing; true when the text was accepted.
    [[nodiscard]] bool nameEntered(const QModelIndex &index, const QString &text, bool inTree);
    void nameAbandoned(const QModelIndex &index, bool inTree);
    /// A folder or file dropped on the roots box or the folder button becomes the root.
    void droppedOnRoot(const QString &firstPath);

    [[nodiscard]] std::unique_ptr<QMimeData> dragData(const QTreeView &from) override;
    [[nodiscard]] Qt::DropActions dragActions() const override;
    void dragEnded(Qt::DropAction action) override;
    [[nodiscard]] Qt::DropAction dragOver(const QTreeView &view, const QModelIndex &under,
                                          const QDropEvent &event) override;
    void dragLeft(const QTreeView &view) override;
    [[nodiscard]] Qt::DropAction dropped(const QTreeView &view, const QModelIndex &under,
                                         const QDropEvent &event) override;

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace venlo
