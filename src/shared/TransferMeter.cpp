#include "shared/TransferMeter.h"

#include <algorithm>

namespace venlo
{

namespace
{
constexpr double itemWeight = 16384;
constexpr qint64 rateWindow = 3000;      // ms
constexpr qint64 shortestMeasure = 1000; // ms
constexpr int whole = 1000;              // permille
constexpr qint64 msPerSecond = 1000;
} // namespace

void TransferMeter::start(qint64 bytes, int items)
{
    *this = TransferMeter(std::move(m_clock));
    m_started = m_clock();
    m_bytes = bytes;
    m_items = items;
    m_samples.emplace_back(m_started, 0);
}

void TransferMeter::beginStep(qint64 bytes, int items)
{
    m_stepBytes = bytes;
    m_stepItems = items;
    m_stepFilesMoved = 0;
    m_stepItemsDone = 0;
    m_file = {};
}

void TransferMeter::moved(const TransferProgress &progress)
{
    const bool sameFile = progress.name == m_file.name && progress.done >= m_file.done;
    if (!sameFile)
        m_stepFilesMoved += m_file.done;
    m_movedEver += sameFile ? progress.done - m_file.done : progress.done;
    m_file = progress;
    const qint64 now = m_clock();
    m_samples.emplace_back(now, m_movedEver);
    while (m_samples.size() > 2 && m_samples[1].first <= now - rateWindow)
        m_samples.pop_front();
}

void TransferMeter::itemDone()
{
    ++m_stepItemsDone;
}

void TransferMeter::endStep()
{
    m_bytesDone += m_stepBytes;
    m_itemsDone += m_stepItems;
    beginStep(0, 0);
}

qint64 TransferMeter::stepMoved() const
{
    return std::min(m_stepFilesMoved + m_file.done, m_stepBytes);
}

double TransferMeter::weightDone() const
{
    const int items = m_itemsDone + std::min(m_stepItemsDone, m_stepItems);
    return static_cast<double>(m_bytesDone + stepMoved()) + itemWeight * items;
}

double TransferMeter::weightAll() const
{
    return static_cast<double>(m_bytes) + itemWeight * m_items;
}

int TransferMeter::permille() const
{
    const double all = weightAll();
    return all > 0 ? std::min(whole, static_cast<int>(weightDone() / all * whole)) : 0;
}

qint64 TransferMeter::rate() const
{
    const qint64 now = m_clock();
    if (m_samples.empty() || m_samples.back().first < now - rateWindow)
        return 0;
    const qint64 time = std::max(now - m_samples.front().first, qint64(1));
    return (m_samples.back().second - m_samples.front().second) * msPerSecond / time;
}

qint64 TransferMeter::secondsLeft() const
{
    const double done = weightDone();
    const qint64 elapsed = m_clock() - m_started;
    if (done <= 0 || elapsed < shortestMeasure)
        return -1;
    const double left = std::max(weightAll() - done, 0.0);
    return static_cast<qint64>(static_cast<double>(elapsed) * left / done / msPerSecond);
}

QString TransferMeter::durationText(qint64 seconds)
{
    const QLatin1Char zero('0');
    const QString tail = QStringLiteral(":%1").arg(seconds % 60, 2, 10, zero);
    if (seconds < 3600)
        return QString::number(seconds / 60) + tail;
    return QStringLiteral("%1:%2").arg(seconds / 3600).arg(seconds / 60 % 60, 2, 10, zero) + tail;
}

} // namespace venlo
