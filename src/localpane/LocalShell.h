#pragma once

#include <QModelIndex>
#include <QString>
#include <QStringList>

#include "platform/ShellFileOperation.h"

namespace venlo
{

class LocalViews;
class OperationGate;
class WindowDesk;

/// Runs the shell's file operations for the local pane, one at a time, and brings its views up to
/// date afterwards in any case.
class LocalShell
{
public:
    LocalShell(LocalViews &views, WindowDesk &desk, OperationGate &gate);

    /// Takes a turn for it. False, and nothing done, while another operation runs.
    bool run(const ShellFileOrder &order);
    /// Reads again what lies in these folders as far as it is shown.
    void bringUpToDate(const QStringList &folders);
    /// The node that stands for a folder; invalid when the tree does not hold it.
    [[nodiscard]] QModelIndex nodeOf(const QString &folder) const;

private:
    /// Selects the nearest folder above the selected one that is still there.
    void leaveWhatIsGone();

    LocalViews &m_views;
    WindowDesk &m_desk;
    OperationGate &m_gate;
};

} // namespace venlo
