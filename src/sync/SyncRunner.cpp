#include "sync/SyncRunner.h"

#include <exception>

#include <QHash>

#include "db/Database.h"
#include "shared/Flags.h"
#include "shared/FrontEnd.h"
#include "sync/Comparison.h"
#include "sync/Execution.h"
#include "sync/ReviewHost.h"
#include "sync/RowWorker.h"
#include "sync/SyncReview.h"

namespace venlo
{

SyncRunner::SyncRunner(Comparison &comparison, RowWorker &worker, ReviewHost &reviewHost,
                       Database &database, FrontEnd &frontEnd, Flags &flags)
    : m_comparison(comparison), m_worker(worker), m_reviewHost(reviewHost), m_database(database),
      m_frontEnd(frontEnd), m_flags(flags)
{
}

SyncRunner::Report SyncRunner::run(const Order &order)
{
    const FlagScope unattended(m_flags.unattendedTransfer, m_flags.unattendedTransfer);
    if (!order.fromBatchRun)
        m_frontEnd.beginOperation();
    try {
        return compareAndAct(order);
    } catch (const std::exception &error) {
        m_worker.log(QStringLiteral("ftSync Err sLph=") + order.sLph);
        m_frontEnd.warn(QString::fromUtf8(error.what()));
        return {0, true};
    }
}

SyncRunner::Report SyncRunner::compareAndAct(const Order &order)
{
    bool ok = false;
    ComparisonResult compared = m_comparison.ftSync(order.sLph, order.sFph, order.down, ok);
    if (!ok)
        return {0, true};
    const ReviewOptions options =
        order.sSync.isEmpty()
            ? optionsOfPair(m_database, order.sLph, order.sFph, compared.pair.sFph)
            : optionsOfPattern(m_database, order.sSync);
    if (options.unread)
        m_frontEnd.warn(order.sLph + QStringLiteral(" の同期の設定が読み取れないため最上位の"
                                                    "ﾌｫﾙﾀﾞは対象外とします"));
    SyncReview review(std::move(compared), options);
    review.load(m_database);
    const bool unattended = order.fromBatchRun && m_flags.batch;
    announceHeld(review, unattended);
    Execution execution(m_worker, m_frontEnd, m_flags);
    const int result = m_reviewHost.act(review, execution, unattended);
    return {result, result == 0 || review.leftOver()};
}

/// Says once per reason what stays as it is; with the root of the server a message, since most of
/// the pair is meant.
void SyncRunner::announceHeld(const SyncReview &review, bool unattended)
{
    QHash<QString, int> rows;
    QString rootReason;
    for (int i = 0; i < review.count(); ++i) {
        const SyncRow &row = review.row(i);
        if (row.hold == Hold::Free || row.action == Action::None)
            continue;
        const bool first = ++rows[row.why] == 1;
        if (row.rootPair)
            rootReason = row.why;
        else if (first && unattended)
            m_frontEnd.warn(row.why + QStringLiteral(": ") + review.localPath(i));
    }
    if (!rootReason.isEmpty())
        m_frontEnd.message(rootReason + QStringLiteral(" (%1)").arg(rows.value(rootReason)));
}

} // namespace venlo
