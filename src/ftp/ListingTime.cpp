#include "ftp/ListingTime.h"

#include "ftp/protocol/Listing.h"

#include <cmath>
#include <cstdlib>

namespace venlo
{

namespace
{
constexpr qint64 ticksPerSecond = 10'000'000; // 100-nanosecond units
constexpr qint64 ticksPerMillisecond = 10'000;
constexpr qint64 nineHours = 32'400'000; // milliseconds
constexpr double millisecondsPerDay = 86'400'000.0;
constexpr double daysTo1601 = 109'205.0; // from 1899-12-30 back to 1601-01-01
constexpr qint64 highWordUnit = 4'294'967'295;
constexpr qint64 quarterHour = 900; // seconds
constexpr qint64 widestOffset = 15LL * 3600;
constexpr qint64 lowWordUnit = 4'294'967'296;
} // namespace

QDateTime wallClockOf(const ListedEntry &entry, std::optional<qint64> listOffset)
{
    if (!entry.time.isValid())
        return {};
    if (!entry.utc && !listOffset)
        return entry.time;
    const QDateTime utc = entry.utc ? entry.time : entry.time.addSecs(*listOffset);
    const QDateTime local = utc.toLocalTime();
    return QDateTime(local.date(), local.time(), Qt::UTC);
}

std::optional<qint64> clockOffset(const QDateTime &wallClock, const QDateTime &utc)
{
    const auto apart = static_cast<double>(wallClock.secsTo(utc));
    const qint64 offset = std::llround(std::floor(apart / 60.0) * 60.0 / quarterHour) * quarterHour;
    if (std::abs(offset) > widestOffset || std::abs(apart - static_cast<double>(offset)) > 60.0)
        return std::nullopt;
    return offset;
}

double listingDay(const QDateTime &wallClock, int localOffset)
{
    if (!wallClock.isValid())
        return -daysTo1601;
    static const QDateTime epoch(QDate(1601, 1, 1), QTime(0, 0), Qt::UTC);
    const qint64 ticks = (epoch.secsTo(wallClock) + localOffset) * ticksPerSecond;
    const qint64 milliseconds = ticks / ticksPerMillisecond - nineHours;
    return static_cast<double>(milliseconds) / millisecondsPerDay - daysTo1601;
}

int presentLocalOffset()
{
    return QDateTime::currentDateTime().offsetFromUtc();
}

qint64 cachedSizeOf(qint64 trueSize)
{
    const qint64 high = trueSize >> 32;
    const auto low = static_cast<qint32>(static_cast<quint32>(trueSize & 0xffffffff));
    return high * highWordUnit + 1 + low + (low < 0 ? lowWordUnit : 0);
}

} // namespace venlo
