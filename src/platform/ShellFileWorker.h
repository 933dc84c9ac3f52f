#pragma once

#include "platform/ShellFileFlow.h"
#include "platform/ShellFileOperation.h"

namespace venlo
{

/// The shell operation done by ourselves, where the system has none or it cannot name the paths.
/// Blocks until done; the watcher lets events run.
class ShellFileWorker
{
public:
    ShellFileWorker(const ShellFileOrder &order, ShellFileWatcher &watcher);
    [[nodiscard]] ShellFileReport run();

private:
    void carryAll();
    void deleteAll();
    void deleteOne(const QString &path, bool toBin);
    void deleteForGood(const QString &path);
    [[nodiscard]] bool mayDelete(const QStringList &paths, bool forGood);

    const ShellFileOrder &m_order;
    ShellFileWatcher &m_watcher;
    ShellFileFlow m_flow;
};

} // namespace venlo
