#pragma once

#include <QTimer>

#include <chrono>
#include <functional>

namespace venlo
{

/// How a wait ended.
enum class WaitEnd { Done, TimedOut, Cancelled };

/// The one function that waits for the network: a nested event loop, so that windows repaint and
/// Cancel works while the engine stands still. Every wait has a limit.
class Waiter
{
public:
    using CancelTest = std::function<bool()>;

    explicit Waiter(CancelTest cancelled);
    /// What is done when the other side is really waited for, while it works. Counts as a part of
    /// the wait (see busy), and must not wait itself.
    void setMeanwhile(std::function<void()> meanwhile) { m_meanwhile = std::move(meanwhile); }

    /// Runs the event loop until done() holds, the limit is over or the person cancelled. done()
    /// may do work (read a socket); it is asked after every batch of events. A change of
    /// activity() starts the limit anew: it counts whatever shows that the other side lives.
    [[nodiscard]] WaitEnd until(const std::function<bool()> &done, std::chrono::milliseconds limit,
                                const std::function<qint64()> &activity = {});
    /// The same for what ends in something to be sent at once: what is done meanwhile would hold
    /// that up, and is left to the next wait.
    [[nodiscard]] WaitEnd untilReady(const std::function<bool()> &done,
                                     std::chrono::milliseconds limit);
    /// The same as until without looking at Cancel, for the short waits that bring a session back
    /// in step.
    [[nodiscard]] WaitEnd untilEvenIfCancelled(const std::function<bool()> &done,
                                               std::chrono::milliseconds limit);
    /// Runs work that blocks in a thread of its own while the event loop goes on. It is done when
    /// this returns, Cancel or not.
    void aside(const std::function<void()> &work);
    /// True inside a wait: whoever is asked for another operation then was called by an event of
    /// the loop, and the first one still holds the connection.
    [[nodiscard]] bool busy() const { return m_depth > 0; }
    [[nodiscard]] bool cancelled() const { return m_cancelled && m_cancelled(); }

private:
    [[nodiscard]] WaitEnd waitMeanwhile(const std::function<bool()> &done,
                                        std::chrono::milliseconds limit,
                                        const std::function<qint64()> &activity, bool heedCancel);
    [[nodiscard]] WaitEnd wait(const std::function<bool()> &done, std::chrono::milliseconds limit,
                               const std::function<qint64()> &activity, bool heedCancel);

    CancelTest m_cancelled;
    std::function<void()> m_meanwhile;
    QTimer m_tick; ///< wakes the loop so that limits and Cancel are seen when nothing happens
    int m_depth = 0;
};

} // namespace venlo
