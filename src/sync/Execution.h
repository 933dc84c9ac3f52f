#pragma once

#include <functional>

namespace venlo
{

class FrontEnd;
class RowWorker;
class SyncReview;
struct Flags;

/// Carries out the ticked rows of a review in up to ten passes. Sets the unattended-transfer flag
/// and leaves clearing it to whoever started the synchronisation. Refuses rows that are held back
/// whatever their tick says.
class Execution
{
public:
    static constexpr int maxPasses = 10;
    enum Result { NothingToDo = -1, NotDone = 0, Done = 1 };

    Execution(RowWorker &worker, FrontEnd &frontEnd, Flags &flags);

    /// Called before a row is worked on (finished false) and after it (true); covered rows have
    /// their state by then too.
    using Progress = std::function<void(int row, bool finished)>;
    void setProgress(Progress progress) { m_progress = std::move(progress); }

    /// unattended: rows that need a person's word are left alone even when they are ticked.
    /// -1 nothing to do; 1 done, given-up rows included; 0 cancelled, reconnect failed or rows
    /// left after the last pass.
    [[nodiscard]] int run(SyncReview &review, bool unattended);
    /// The person cancelled the last run.
    [[nodiscard]] bool cancelled() const { return m_cancelled; }

private:
    [[nodiscard]] bool pass(SyncReview &review, bool folders);
    [[nodiscard]] bool workOn(SyncReview &review, int row);
    [[nodiscard]] bool runs(const SyncReview &review, int row) const;
    [[nodiscard]] int pendingRows(const SyncReview &review) const;

    RowWorker &m_worker;
    FrontEnd &m_frontEnd;
    Flags &m_flags;
    Progress m_progress;
    bool m_unattended = false;
    bool m_cancelled = false;
};

} // namespace venlo
