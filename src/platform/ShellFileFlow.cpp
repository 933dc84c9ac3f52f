#include "platform/ShellFileFlow.h"

#include <utility>
#include <vector>

#include "platform/FilesystemPath.h"

namespace venlo
{

namespace fs = std::filesystem;

ShellFileFlow::ShellFileFlow(const ShellFileOrder &order, ShellFileWatcher &watcher)
    : m_watcher(watcher)
{
    m_progress.verb = order.verb;
    m_progress.show = !order.silent;
}

bool ShellFileFlow::tell()
{
    if (!m_stopped && !m_watcher.goOn(m_progress))
        cancel();
    return !m_stopped;
}

bool ShellFileFlow::begin(const fs::path &entry)
{
    m_progress.name = shownPath(entry.filename());
    ++m_progress.done;
    return tell();
}

bool ShellFileFlow::advance(qint64 units)
{
    m_progress.done += units;
    return tell();
}

bool ShellFileFlow::measure(const fs::path &entry)
{
    return walk(entry, [this](const disk::directory_entry &one) {
        std::error_code error;
        const bool sized = one.symlink_status(error).type() == fs::file_type::regular;
        const auto size = sized ? one.file_size(error) : 0;
        m_progress.total += 1 + (error ? 0 : static_cast<qint64>(size));
    });
}

bool ShellFileFlow::countEntries(const fs::path &entry, bool &unusable)
{
    return walk(entry, [this, &unusable](const disk::directory_entry &one) {
        ++m_progress.total;
        if (isUnusableName(shownPath(one.path().filename())))
            unusable = true;
    });
}

bool ShellFileFlow::walk(const fs::path &entry, const Look &look)
{
    std::error_code error;
    const disk::directory_entry top(entry, error);
    look(top);
    if (top.symlink_status(error).type() != fs::file_type::directory)
        return tell();
    std::vector<fs::path> folders = {entry};
    while (!folders.empty()) {
        const fs::path folder = std::move(folders.back());
        folders.pop_back();
        // What cannot be read here is reported when its turn comes.
        for (disk::directory_iterator below(folder, error);
             !error && below != disk::directory_iterator(); below.increment(error)) {
            look(*below);
            if (below->symlink_status(error).type() == fs::file_type::directory)
                folders.push_back(below->path());
            if (!tell())
                return false;
        }
    }
    return true;
}

void ShellFileFlow::fail(const fs::path &entry, const QString &why, bool more)
{
    if (m_stopped)
        return;
    ++m_failures;
    if (!m_watcher.failed(shownPath(entry), why, more || m_itemsLeft > 0))
        m_stopped = true;
}

void ShellFileFlow::cancel()
{
    m_stopped = true;
    m_cancelled = true;
}

ShellFileReport ShellFileFlow::report() const
{
    return {!m_stopped && !m_leftOut && m_failures == 0, m_cancelled, m_failures};
}

} // namespace venlo
