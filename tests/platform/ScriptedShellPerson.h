#pragma once

#include <deque>
#include <functional>
#include <vector>

#include "platform/ShellFileOperation.h"

namespace venlo::test
{

/// Answers a file operation from lists that the test wrote beforehand, and keeps what was asked.
/// Nothing announced: does not delete, does not overwrite, goes on after failures.
class ScriptedShellPerson final : public ShellFileWatcher
{
public:
    std::deque<bool> deletes;
    std::deque<ShellAnswer> clashes;
    bool stopAtFailure = false;
    /// Cancels at the n-th look of the operation (1 is the first); 0 never.
    int cancelAt = 0;
    std::function<void(const ShellFileProgress &)> onProgress;

    struct Deletion {
        QStringList paths;
        bool forGood = false;
    };
    std::vector<Deletion> askedDeletes;
    std::vector<ShellClash> askedClashes;
    QStringList failures;   ///< "path: why"
    std::vector<bool> more; ///< at each failure, whether something was left to go on with
    std::vector<ShellFileProgress> seen;

    [[nodiscard]] bool confirmDelete(const QStringList &paths, bool forGood) override
    {
        askedDeletes.push_back({paths, forGood});
        return take(deletes, false);
    }
    [[nodiscard]] ShellAnswer clash(const ShellClash &clash) override
    {
        askedClashes.push_back(clash);
        return take(clashes, ShellAnswer::No);
    }
    [[nodiscard]] bool failed(const QString &path, const QString &why, bool left) override
    {
        more.push_back(left);
        failures << path + QStringLiteral(": ") + why;
        return !stopAtFailure;
    }
    [[nodiscard]] bool goOn(const ShellFileProgress &progress) override
    {
        seen.push_back(progress);
        if (onProgress)
            onProgress(progress);
        return cancelAt == 0 || static_cast<int>(seen.size()) < cancelAt;
    }

private:
    template <typename T>
    static T take(std::deque<T> &from, T otherwise)
    {
        if (from.empty())
            return otherwise;
        const T value = from.front();
        from.pop_front();
        return value;
    }
};

} // namespace venlo::test
