#include "platform/ShellFileOperation.h"

#include <algorithm>
#include <string>

#include <windows.h>

#include <shellapi.h>

#include <QDir>
#include <QFileInfo>

#include "platform/ShellFileWorker.h"

namespace venlo
{

namespace
{
/// The shell's operation reads no longer paths, terminator included.
constexpr qsizetype shellPathLimit = MAX_PATH;

/// Each path ended by NUL; the string's own terminator ends the list.
std::wstring shellList(const QStringList &paths)
{
    std::wstring list;
    for (const QString &path : paths) {
        list += QDir::toNativeSeparators(path).toStdWString();
        list += L'\0';
    }
    return list;
}

bool tooLong(const QString &path, const QString &to)
{
    const qsizetype arrives = to.isEmpty() ? 0 : to.size() + 1 + QFileInfo(path).fileName().size();
    return std::max(path.size(), arrives) >= shellPathLimit;
}

ShellFileReport runInShell(const ShellFileOrder &order)
{
    const std::wstring from = shellList(order.from);
    const std::wstring to = shellList(QStringList(order.to));
    SHFILEOPSTRUCTW operation = {};
    operation.hwnd = reinterpret_cast<HWND>(order.owner);
    operation.wFunc = static_cast<UINT>(order.verb);
    operation.pFrom = from.c_str();
    operation.pTo = order.to.isEmpty() ? nullptr : to.c_str();
    operation.fFlags = shellFileFlags(order.verb, order.silent, order.noConfirm);
    const int result = SHFileOperationW(&operation);
    const bool cancelled = operation.fAnyOperationsAborted != FALSE;
    return {result == 0 && !cancelled, cancelled, result != 0 && !cancelled ? 1 : 0};
}
} // namespace

ShellFileReport runShellFileOperation(const ShellFileOrder &order, ShellFileWatcher &watcher)
{
    if (order.from.isEmpty() || order.verb == ShellVerb::None)
        return {};
    // One long path must not keep the others from the shell and its recycle bin.
    ShellFileOrder inShell = order;
    ShellFileOrder byOurselves = order;
    inShell.from.clear();
    byOurselves.from.clear();
    for (const QString &path : order.from)
        (tooLong(path, order.to) ? byOurselves : inShell).from << path;
    if (byOurselves.from.isEmpty())
        return runInShell(inShell);
    if (inShell.from.isEmpty())
        return ShellFileWorker(byOurselves, watcher).run();
    const ShellFileReport first = runInShell(inShell);
    if (first.cancelled)
        return first;
    const ShellFileReport second = ShellFileWorker(byOurselves, watcher).run();
    return {first.complete && second.complete, second.cancelled, first.failures + second.failures};
}

} // namespace venlo
