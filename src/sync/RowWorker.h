#pragma once

#include <QString>

namespace venlo
{

class SyncReview;

/// How the work on a row ended.
struct RowEnd {
    bool ok = true;       ///< false: the pass ends and the row stays pending
    bool givenUp = false; ///< not (wholly) carried out and not worth another pass
    QString why;          ///< words for a person when it was given up or failed, may be empty
};

/// Carries out one row on the two sides of a pair.
class RowWorker
{
public:
    virtual ~RowWorker() = default;
    /// An execution begins: what earlier ones saw of the server does not count any more.
    virtual void begin() {}
    /// The session is connected (state 2).
    [[nodiscard]] virtual bool connected() = 0;
    /// The session's reconnect step.
    [[nodiscard]] virtual bool reconnect() = 0;
    [[nodiscard]] virtual RowEnd work(const SyncReview &review, int row) = 0;
    virtual void log(const QString &line) = 0;
};

} // namespace venlo
