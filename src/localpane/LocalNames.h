#pragma once

#include <QModelIndex>
#include <QString>

namespace venlo
{

class LocalShell;
class LocalViews;
class OperationGate;
class WindowDesk;

/// New folders and renames: entries whose name a person types into the tree or the list.
class LocalNames
{
public:
    LocalNames(LocalViews &views, WindowDesk &desk, OperationGate &gate, LocalShell &shell,
               QObject &context);

    /// Adds an entry that is not on the disk yet and edits its name.
    void startNewFolder(bool inTree);
    void startRename(bool inTree);
    /// Carries the edited name out on the disk. False, after a message, when that is refused; the
    /// editor then stays open.
    [[nodiscard]] bool entered(const QModelIndex &index, const QString &text, bool inTree);
    /// Takes a new entry away again.
    void abandoned(const QModelIndex &index, bool inTree);

private:
    void newNode();
    void newRow();
    [[nodiscard]] bool nodeEntered(const QModelIndex &node, const QString &text);
    [[nodiscard]] bool rowEntered(int row, const QString &text);
    [[nodiscard]] bool make(const QString &folder, const QString &name);
    [[nodiscard]] bool rename(const QString &folder, const QString &before, const QString &name);
    [[nodiscard]] bool refused(const QString &name, const QString &why);
    void nodeNamed(const QString &parent, const QString &path, bool made);
    /// Runs once the editor is closed.
    template <typename Action>
    void afterEditing(Action action);

    LocalViews &m_views;
    WindowDesk &m_desk;
    OperationGate &m_gate;
    LocalShell &m_shell;
    QObject &m_context;
};

} // namespace venlo
