#include "platform/ShellFileOperation.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <windows.h>

#include <shellapi.h>

#include <QDir>

#include "platform/Disk.h"
#include "platform/FilesystemPath.h"
#include "platform/ShellFileWorker.h"

namespace venlo
{

namespace
{
/// The shell's operation takes no longer paths, terminators included; folders need room for a short
/// name (8.3) in them.
constexpr qsizetype fileLimit = MAX_PATH;
constexpr qsizetype folderLimit = MAX_PATH - 12;

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

bool tooLong(qsizetype length, bool folder)
{
    return length >= (folder ? folderLimit : fileLimit);
}

/// The shell would take "a." and "a " for "a".
bool hasOtherName(const QString &path)
{
    const QStringList names = QDir::fromNativeSeparators(path).split(QLatin1Char('/'));
    return std::any_of(names.begin(), names.end(), [](const QString &name) {
        return name.endsWith(QLatin1Char('.')) || name.endsWith(QLatin1Char(' '));
    });
}

bool isFolder(const disk::directory_entry &entry)
{
    std::error_code error;
    return entry.symlink_status(error).type() == std::filesystem::file_type::directory;
}

bool isBeyond(const disk::directory_entry &entry, qsizetype longer)
{
    const QString path = shownPath(entry.path());
    return tooLong(path.size() + longer, isFolder(entry)) || hasOtherName(path);
}

/// longer: by how much a path grows where it goes. Ends with the first entry that is beyond the
/// shell.
bool holdsBeyond(const std::filesystem::path &folder, qsizetype longer)
{
    std::vector<std::filesystem::path> waiting = {folder};
    while (!waiting.empty()) {
        const std::filesystem::path here = std::move(waiting.back());
        waiting.pop_back();
        std::error_code error;
        for (disk::directory_iterator item(here, error);
             !error && item != disk::directory_iterator(); item.increment(error)) {
            if (isBeyond(*item, longer))
                return true;
            if (isFolder(*item))
                waiting.push_back(item->path());
        }
    }
    return false;
}

bool beyondShell(const QString &path, const QString &to)
{
    std::error_code error;
    const disk::directory_entry entry(filesystemPath(path), error);
    const qsizetype name =
        path.size() - QDir::fromNativeSeparators(path).lastIndexOf(QLatin1Char('/'));
    const qsizetype longer =
        to.isEmpty() ? 0 : std::max<qsizetype>(0, to.size() + name - path.size());
    return hasOtherName(to) || isBeyond(entry, longer) ||
           (isFolder(entry) && holdsBeyond(entry.path(), longer));
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
    constexpr int cancelledByPerson = 0x75; // DE_OPCANCELLED, which no header has
    const bool cancelled = operation.fAnyOperationsAborted != FALSE ||
                           result == cancelledByPerson || result == ERROR_CANCELLED;
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
        (beyondShell(path, order.to) ? byOurselves : inShell).from << path;
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
