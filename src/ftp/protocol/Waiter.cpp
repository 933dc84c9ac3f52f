#include "ftp/protocol/Waiter.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QScopeGuard>
#include <QThread>

#include <memory>

namespace venlo
{

using namespace std::chrono_literals;

namespace
{
constexpr auto mostPatience = 24h; ///< with a disk: what it is told cannot be taken back
}

Waiter::Waiter(CancelTest cancelled) : m_cancelled(std::move(cancelled))
{
    m_tick.setInterval(50ms);
}

WaitEnd Waiter::until(const std::function<bool()> &done, std::chrono::milliseconds limit,
                      const std::function<qint64()> &activity)
{
    return waitMeanwhile(done, limit, activity, true);
}

WaitEnd Waiter::untilReady(const std::function<bool()> &done, std::chrono::milliseconds limit)
{
    return done() ? WaitEnd::Done : wait(done, limit, {}, true);
}

WaitEnd Waiter::untilEvenIfCancelled(const std::function<bool()> &done,
                                     std::chrono::milliseconds limit)
{
    return waitMeanwhile(done, limit, {}, false);
}

void Waiter::aside(const std::function<void()> &work)
{
    const std::unique_ptr<QThread> thread(QThread::create(work));
    QObject::connect(thread.get(), &QThread::finished, &m_tick, [] {}); // wakes the loop up
    thread->start();
    (void)untilEvenIfCancelled([&thread] { return thread->isFinished(); }, mostPatience);
    thread->wait();
}

WaitEnd Waiter::waitMeanwhile(const std::function<bool()> &done, std::chrono::milliseconds limit,
                              const std::function<qint64()> &activity, bool heedCancel)
{
    if (done())
        return WaitEnd::Done;
    if (m_meanwhile) {
        const auto left = qScopeGuard([this] { --m_depth; });
        ++m_depth;
        m_meanwhile();
    }
    if (done())
        return WaitEnd::Done;
    return wait(done, limit, activity, heedCancel);
}

WaitEnd Waiter::wait(const std::function<bool()> &done, std::chrono::milliseconds limit,
                     const std::function<qint64()> &activity, bool heedCancel)
{
    QDeadlineTimer deadline(limit);
    qint64 seen = activity ? activity() : 0;
    if (m_depth++ == 0)
        m_tick.start();
    WaitEnd end = WaitEnd::Done;
    QEventLoop loop;
    for (;;) {
        if (heedCancel && cancelled()) {
            end = WaitEnd::Cancelled;
            break;
        }
        loop.processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        if (done())
            break;
        if (activity && activity() != seen) {
            seen = activity();
            deadline.setRemainingTime(limit);
        }
        if (deadline.hasExpired()) {
            end = WaitEnd::TimedOut;
            break;
        }
    }
    if (--m_depth == 0)
        m_tick.stop();
    return end;
}

} // namespace venlo
