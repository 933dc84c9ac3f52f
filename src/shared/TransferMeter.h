#pragma once

#include <deque>
#include <functional>
#include <utility>

#include <QString>

#include "shared/FrontEnd.h"

namespace venlo
{

/// How far an operation on many files has come, how fast it moves and how long it will still take.
/// It only counts; the clock is the caller's (milliseconds that never go back).
class TransferMeter
{
public:
    using Clock = std::function<qint64()>;
    explicit TransferMeter(Clock clock) : m_clock(std::move(clock)) {}

    /// Starts anew with what lies ahead.
    void start(qint64 bytes, int items);
    /// A step (a file, or a whole folder) begins; what an unfinished one moved is forgotten, since
    /// it will be moved again.
    void beginStep(qint64 bytes, int items);
    /// The file in hand has come this far.
    void moved(const TransferProgress &progress);
    /// One item within the step is dealt with.
    void itemDone();
    void endStep();

    /// 0 to 1000; an item costs as much as moving 16 KB does.
    [[nodiscard]] int permille() const;
    /// Bytes per second over the last seconds; 0 when nothing moved.
    [[nodiscard]] qint64 rate() const;
    /// Seconds to the end at the pace so far; -1 while nothing can be said.
    [[nodiscard]] qint64 secondsLeft() const;

    /// "m:ss", from one hour on "h:mm:ss".
    [[nodiscard]] static QString durationText(qint64 seconds);

private:
    [[nodiscard]] double weightDone() const;
    [[nodiscard]] double weightAll() const;
    [[nodiscard]] qint64 stepMoved() const;

    Clock m_clock;
    qint64 m_started = 0;
    qint64 m_bytes = 0;
    int m_items = 0;
    qint64 m_bytesDone = 0;
    int m_itemsDone = 0;
    qint64 m_stepBytes = 0;
    int m_stepItems = 0;
    qint64 m_stepFilesMoved = 0;
    int m_stepItemsDone = 0;
    TransferProgress m_file;
    qint64 m_movedEver = 0;
    std::deque<std::pair<qint64, qint64>> m_samples; ///< time, bytes moved until then
};

} // namespace venlo
