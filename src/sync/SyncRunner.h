#pragma once

#include <QString>

namespace venlo
{

class Comparison;
class Database;
class FrontEnd;
class ReviewHost;
class RowWorker;
class SyncReview;
struct Flags;

/// One synchronisation from the comparison to the executed review. The batch runner and the main
/// window start it; both set the unattended-transfer flag around it and clear it.
class SyncRunner
{
public:
    /// Which synchronisation, and who started it.
    struct Order {
        QString sLph;
        QString sFph; ///< as given, the server text in front or not
        bool down = false;
        QString sSync;             ///< named pattern whose options count; empty: those of the pair
        bool fromBatchRun = false; ///< a command line started it
    };
    struct Report {
        int result = 0;        ///< 1 done, -1 nothing to do or closed unexecuted, 0 not carried out
        bool leftOver = false; ///< something was not carried out, whatever the result says
    };

    SyncRunner(Comparison &comparison, RowWorker &worker, ReviewHost &reviewHost,
               Database &database, FrontEnd &frontEnd, Flags &flags);

    /// Leaves the unattended-transfer flag as it found it. What goes wrong on the way is logged and
    /// told, never thrown.
    [[nodiscard]] Report run(const Order &order);

private:
    [[nodiscard]] Report compareAndAct(const Order &order);
    void announceHeld(const SyncReview &review, bool unattended);

    Comparison &m_comparison;
    RowWorker &m_worker;
    ReviewHost &m_reviewHost;
    Database &m_database;
    FrontEnd &m_frontEnd;
    Flags &m_flags;
};

} // namespace venlo
