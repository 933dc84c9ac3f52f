#pragma once

namespace venlo
{

class Execution;
class SyncReview;

/// Shows a review and has it executed; the review window, the console and the tests implement it.
class ReviewHost
{
public:
    virtual ~ReviewHost() = default;
    /// runsUnattended: execute at once, close by itself, wait for nobody and show no finish box
    /// (pass it on to Execution::run). 1 done, -1 nothing to do or closed unexecuted, 0 cancelled,
    /// reconnect failed or rows left.
    [[nodiscard]] virtual int act(SyncReview &review, Execution &execution,
                                  bool runsUnattended) = 0;
};

} // namespace venlo
