#include "platform/ShellFileOperation.h"

#include "platform/ShellFileWorker.h"

namespace venlo
{

ShellFileReport runShellFileOperation(const ShellFileOrder &order, ShellFileWatcher &watcher)
{
    return ShellFileWorker(order, watcher).run();
}

} // namespace venlo
