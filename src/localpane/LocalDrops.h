#pragma once

#include <memory>

#include <QModelIndex>
#include <QStringList>

class QDropEvent;
class QMimeData;
class QTreeView;

namespace venlo
{

class LocalSelection;
class LocalShell;
class LocalViews;
class OperationGate;
class Session;

/// Drags from and onto the local pane's tree and list.
class LocalDrops
{
public:
    struct Needs {
        LocalViews &views;
        LocalSelection &selection;
        LocalShell &shell;
        OperationGate &gate;
        Session &session;
        QObject &context;
    };
    explicit LocalDrops(Needs needs);

    [[nodiscard]] std::unique_ptr<QMimeData> dragData(const QTreeView &from);
    /// A drag that began here ended; a target outside may have moved the files.
    void dragEnded(Qt::DropAction action);
    /// Marks the target too.
    [[nodiscard]] Qt::DropAction over(const QTreeView &view, const QModelIndex &under,
                                      const QDropEvent &event);
    void left();
    [[nodiscard]] Qt::DropAction dropped(const QTreeView &view, const QModelIndex &under,
                                         const QDropEvent &event);
    /// A path with a dot anywhere counts as a file and stands for the folder it lies in.
    void droppedOnRoot(const QString &firstPath);

private:
    /// The folder that a drop here goes into, empty for none.
    [[nodiscard]] QString targetOf(const QTreeView &view, const QModelIndex &under) const;
    [[nodiscard]] bool isFolderRow(const QModelIndex &row) const;
    [[nodiscard]] Qt::DropAction actionFor(const QDropEvent &event, const QString &target) const;
    void mark(const QTreeView &view, const QModelIndex &under);

    Needs m;
    bool m_ours = false; ///< the drag that is on began here
};

} // namespace venlo
