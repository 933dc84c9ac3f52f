#pragma once

#include "ftp/RemoteOperations.h"
#include "shared/FrontEnd.h"
#include "shared/Result.h"

#include <QString>

#include <functional>

namespace venlo
{

/// What the remote operations have in common: whom they work with, how often they try, and how
/// they report. Owned by RemoteOperations, which outlives everything that refers to it.
class OperationContext
{
public:
    OperationContext(Session &sharedSession, DirectoryCache &sharedCache, FrontEnd &person,
                     const Flags &programFlags, OperationCounts &sharedCounts,
                     OverwriteMode &answer);

    Session &session;
    DirectoryCache &cache;
    FrontEnd &frontEnd;
    OperationCounts &counts;
    OverwriteMode &standingAnswer;

    /// Dialogs and status messages are suppressed, and some decisions differ.
    [[nodiscard]] bool unattended() const;
    /// Connected and not asked to stop.
    [[nodiscard]] bool mayGoOn() const;

    /// Whether to overwrite; the person may take long, and finds what is confirmed done.
    [[nodiscard]] OverwriteAnswer askOverwrite(const OverwriteQuestion &question);
    void status(const QString &text);
    void note(const QString &text);
    // Outcomes are told in the order in which they came about, behind bookkeeping that waited.
    void done(Outcome::Kind kind, const QString &from, const QString &to = {});
    void skipped(const QString &from, const QString &to, const QString &why);
    /// Logs a failure in its fixed words, counts it and reports it.
    void giveUp(const QString &logLine, const QString &from, const QString &to, const Error &error);

    /// Makes a directory the current one with the attempts and the log line of sjCrntDir.
    [[nodiscard]] bool enter(const QString &dir, bool create);
    /// The same in one try. Costs nothing when the server stands there already, so that every step
    /// can begin with it: after a reconnect the server stands somewhere else.
    [[nodiscard]] Result<void> stepInto(const QString &dir);
    /// The session's reconnect step; false when it is lost for good.
    [[nodiscard]] bool reconnect();
    /// Loads a directory's rows if there are none; false when it cannot be listed. Entries the
    /// cache cannot hold are no reason to stop.
    bool loadIfAbsent(const QString &dir);
    /// Cache upkeep behind a change that the server has confirmed: whatever the store says, the
    /// change stands.
    void keepCache(const QString &what, const std::function<void()> &upkeep);
    /// The same for changes of rows that ask the server nothing; several share a commit.
    void keepRows(const QString &what, const std::function<void()> &upkeep);

    enum class End {
        Done,
        GivenUp, ///< error says why; the operation goes on with the next item
        Stop     ///< cancelled, or the session is lost for good
    };
    struct Attempted {
        End end = End::Done;
        Error error;
    };
    using Step = std::function<Result<void>()>;
    /// Asks whether to go on after a failure.
    using AskAgain = std::function<bool()>;

    /// Up to five attempts with the reconnect step after each failure. A failure of this side is
    /// not tried again unless somebody says so.
    [[nodiscard]] Attempted fiveAttempts(const QString &what, const Step &step,
                                         const AskAgain &askAgain = {});
    /// One attempt, and a second one when the connection turned out to be gone.
    [[nodiscard]] Attempted attemptOnce(const QString &what, const Step &step);

private:
    [[nodiscard]] bool isCancelled(const Error &error) const;

    const Flags &m_flags;
};

} // namespace venlo
