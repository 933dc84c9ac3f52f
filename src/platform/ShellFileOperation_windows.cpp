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

bool tooLong(const ShellFileOrder &order)
{
    return std::any_of(order.from.begin(), order.from.end(), [&order](const QString &path) {
        const qsizetype arrives =
            order.to.isEmpty() ? 0 : order.to.size() + 1 + QFileInfo(path).fileName().size();
        return std::max(path.size(), arrives) >= shellPathLimit;
    });
}
} // namespace

ShellFileReport runShellFileOperation(const ShellFileOrder &order, ShellFileWatcher &watcher)
{
    if (order.from.isEmpty() || order.verb == ShellVerb::None)
        return {};
    if (tooLong(order))
        return ShellFileWorker(order, watcher).run();
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

} // namespace venlo
