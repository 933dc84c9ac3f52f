#include "sync/Execution.h"

#include "shared/Flags.h"
#include "shared/FrontEnd.h"
#include "sync/RowWorker.h"
#include "sync/SyncReview.h"

namespace venlo
{

namespace
{
constexpr int firstPassWithReconnect = 3;
}

Execution::Execution(RowWorker &worker, FrontEnd &frontEnd, Flags &flags)
    : m_worker(worker), m_frontEnd(frontEnd), m_flags(flags)
{
}

int Execution::run(SyncReview &review, bool unattended)
{
    m_unattended = unattended;
    m_cancelled = false;
    m_flags.unattendedTransfer = true;
    m_worker.begin();
    for (int number = 1; number <= maxPasses; ++number) {
        if (pendingRows(review) == 0)
            return number == 1 ? NothingToDo : Done;
        if (number >= firstPassWithReconnect && !m_worker.reconnect())
            return NotDone;
        if (number > maxPasses) // asked behind the loop's own bound, so that it is never written
            m_worker.log(QStringLiteral("RetSync Retry > 10  Err "));
        if (pass(review, true))
            (void)pass(review, false);
        m_cancelled = m_cancelled && pendingRows(review) > 0;
        if (m_cancelled)
            return NotDone;
    }
    return pendingRows(review) == 0 ? Done : NotDone;
}

bool Execution::pass(SyncReview &review, bool folders)
{
    for (int row = 0; row < review.count(); ++row) {
        if (review.row(row).folder == folders && runs(review, row) && !workOn(review, row))
            return false;
    }
    return true;
}

bool Execution::workOn(SyncReview &review, int row)
{
    m_frontEnd.yield();
    m_cancelled = m_frontEnd.stopWanted();
    if (m_cancelled)
        return false;
    if (m_progress)
        m_progress(row, false);
    RowEnd end;
    end.ok = m_worker.connected();
    if (end.ok)
        end = m_worker.work(review, row);
    review.noteTried(row);
    end.ok = end.ok && m_worker.connected();
    if (end.ok)
        review.markRow(row, !end.givenUp);
    if (m_progress)
        m_progress(row, true);
    m_cancelled = m_frontEnd.stopWanted();
    return end.ok && !m_cancelled;
}

bool Execution::runs(const SyncReview &review, int row) const
{
    return review.pending(row) && !(m_unattended && review.row(row).hold != Hold::Free);
}

int Execution::pendingRows(const SyncReview &review) const
{
    int rows = 0;
    for (int row = 0; row < review.count(); ++row)
        rows += runs(review, row) ? 1 : 0;
    return rows;
}

} // namespace venlo
