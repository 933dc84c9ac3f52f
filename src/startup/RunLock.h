#pragma once

#include <chrono>
#include <memory>

#include <QString>

class QLockFile;

namespace venlo
{

class FrontEnd;

/// The turn of a run on a user data folder. Two runs at a time would share the work tables and a
/// site's cache: one would empty or rewrite what the other is about to delete files by. Owned by
/// the run; the turn ends with it, also when it is killed.
class RunLock
{
public:
    RunLock(const QString &userDataFolder, FrontEnd &frontEnd);
    ~RunLock();
    RunLock(const RunLock &) = delete;
    RunLock &operator=(const RunLock &) = delete;

    /// Waits for the turn and says so. False, after a line why, when it did not come within the
    /// limit, was cancelled, or the folder cannot be written.
    [[nodiscard]] bool acquire(std::chrono::milliseconds limit = std::chrono::minutes(1));

    [[nodiscard]] bool isHeld() const;
    /// Ends a turn that was acquired.
    void release();

    /// The file that stands in the folder during a run.
    [[nodiscard]] static QString path(const QString &userDataFolder);

private:
    [[nodiscard]] bool wait(std::chrono::milliseconds limit);

    FrontEnd &m_frontEnd;
    std::unique_ptr<QLockFile> m_file;
};

} // namespace venlo
