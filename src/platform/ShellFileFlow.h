#pragma once

#include <filesystem>
#include <functional>

#include "platform/Disk.h"
#include "platform/ShellFileOperation.h"

namespace venlo
{

/// How far an operation has come, whether it goes on, and what went wrong. Once stopped it stays
/// so. Work is counted in bytes plus one for each entry.
class ShellFileFlow
{
public:
    ShellFileFlow(const ShellFileOrder &order, ShellFileWatcher &watcher);

    /// An entry is taken in hand; false when the person cancelled.
    [[nodiscard]] bool begin(const std::filesystem::path &entry);
    /// So much more was done.
    [[nodiscard]] bool advance(qint64 units);
    /// Adds an entry and everything below it to the total, links not followed. False when
    /// cancelled.
    [[nodiscard]] bool measure(const std::filesystem::path &entry);
    /// The same for what is only counted. unusable: an entry carries a name that no list can.
    [[nodiscard]] bool countEntries(const std::filesystem::path &entry, bool &unusable);
    /// The entries that the order names beyond the one in hand.
    void setItemsLeft(qsizetype count) { m_itemsLeft = count; }

    void fail(const std::filesystem::path &entry, const QString &why, bool more = false);
    void cancel();
    /// What was skipped because the person said so: not complete, but no failure.
    void leaveOut() { m_leftOut = true; }

    [[nodiscard]] bool stopped() const { return m_stopped; }
    [[nodiscard]] int failures() const { return m_failures; }
    [[nodiscard]] ShellFileReport report() const;

private:
    [[nodiscard]] bool tell();
    using Look = std::function<void(const disk::directory_entry &)>;
    [[nodiscard]] bool walk(const std::filesystem::path &entry, const Look &look);

    ShellFileWatcher &m_watcher;
    ShellFileProgress m_progress;
    qsizetype m_itemsLeft = 0;
    int m_failures = 0;
    bool m_stopped = false;
    bool m_cancelled = false;
    bool m_leftOut = false;
};

} // namespace venlo
