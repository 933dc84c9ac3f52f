#include "platform/ShellFileWorker.h"

#include <algorithm>

#include <QFileInfo>

#include "platform/Disk.h"
#include "platform/Files.h"
#include "platform/FilesystemPath.h"
#include "platform/RecycleBin.h"
#include "platform/TreeCarrier.h"

namespace venlo
{

namespace fs = std::filesystem;

namespace
{
/// What is gone already needs none; its turn will say so.
bool hasPlaceInBin(const QString &path)
{
    std::error_code error;
    return hasRecycleBin(path) ||
           disk::symlink_status(filesystemPath(path), error).type() == fs::file_type::not_found;
}
} // namespace

ShellFileWorker::ShellFileWorker(const ShellFileOrder &order, ShellFileWatcher &watcher)
    : m_order(order), m_watcher(watcher), m_flow(order, watcher)
{
}

ShellFileReport ShellFileWorker::run()
{
    if (m_order.from.isEmpty())
        return {};
    switch (m_order.verb) {
    case ShellVerb::None:
        return {};
    case ShellVerb::Delete:
        deleteAll();
        break;
    case ShellVerb::Move:
    case ShellVerb::Copy:
        carryAll();
        break;
    }
    return m_flow.report();
}

void ShellFileWorker::carryAll()
{
    if (!QFileInfo(m_order.to).isDir()) {
        m_flow.fail(filesystemPath(m_order.to), QStringLiteral("ﾌｫﾙﾀﾞが存在しません"));
        return;
    }
    if (m_order.verb == ShellVerb::Copy) {
        for (const QString &path : m_order.from) {
            if (!m_flow.measure(filesystemPath(path)))
                return;
        }
    }
    TreeCarrier carrier(m_order, m_watcher, m_flow);
    qsizetype left = m_order.from.size();
    for (const QString &path : m_order.from) {
        m_flow.setItemsLeft(--left);
        carrier.carry(filesystemPath(path));
        if (m_flow.stopped())
            return;
    }
}

bool ShellFileWorker::mayDelete(const QStringList &paths, bool forGood)
{
    if (m_order.noConfirm || m_watcher.confirmDelete(paths, forGood))
        return true;
    m_flow.cancel();
    return false;
}

void ShellFileWorker::deleteAll()
{
    const bool forGood = !std::all_of(m_order.from.begin(), m_order.from.end(), hasPlaceInBin);
    if (!mayDelete(m_order.from, forGood))
        return;
    qsizetype left = m_order.from.size();
    for (const QString &path : m_order.from) {
        m_flow.setItemsLeft(--left);
        if (!m_flow.begin(filesystemPath(path)))
            return;
        deleteOne(path, !forGood || hasPlaceInBin(path));
        if (m_flow.stopped())
            return;
    }
}

void ShellFileWorker::deleteOne(const QString &path, bool toBin)
{
    if (!toBin) {
        deleteForGood(path);
        return;
    }
    std::error_code why;
    if (moveToRecycleBin(path, why))
        return;
    // Where the bin is the trouble, deleting for good may be wanted; a refusal would meet that too.
    if (why == std::errc::cross_device_link || why == std::errc::no_space_on_device ||
        why == std::errc::filename_too_long || why == std::errc::not_supported) {
        if (mayDelete({path}, true))
            deleteForGood(path);
        return;
    }
    m_flow.fail(filesystemPath(path), systemWords(why));
}

void ShellFileWorker::deleteForGood(const QString &path)
{
    const fs::path entry = filesystemPath(path);
    std::error_code error;
    if (disk::symlink_status(entry, error).type() != fs::file_type::directory) {
        if (!disk::remove(entry, error))
            m_flow.fail(entry, systemWords(error ? error
                                                 : std::make_error_code(
                                                       std::errc::no_such_file_or_directory)));
        return;
    }
    bool unusable = false;
    if (!m_flow.countEntries(entry, unusable))
        return;
    if (unusable) {
        m_flow.fail(entry,
                    QStringLiteral("扱えない文字を含む名前のﾌｧｲﾙがあるため､完全には削除しません"));
        return;
    }
    QString why;
    if (!removeFolderTree(path, why, [this] { return m_flow.advance(1); }) && !m_flow.stopped())
        m_flow.fail(entry, why);
}

} // namespace venlo
