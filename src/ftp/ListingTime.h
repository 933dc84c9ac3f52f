#pragma once

#include <QDateTime>

#include <optional>

namespace venlo
{

struct ListedEntry;

/// A listing's time as the wall clock the layers above expect, as Qt::UTC digits: UTC times become
/// local wall clock; a server's wall clock is moved by its offset to UTC first where that is known
/// (seconds, UTC minus wall clock) and stands as it is otherwise. Invalid for an entry without
/// time.
[[nodiscard]] QDateTime wallClockOf(const ListedEntry &entry, std::optional<qint64> listOffset);

/// Seconds to add to a server's wall clock, as a listing shows it to the minute, to get UTC: a
/// multiple of a quarter of an hour, as all zones have it; nothing when the two are no such pair.
[[nodiscard]] std::optional<qint64> clockOffset(const QDateTime &wallClock, const QDateTime &utc);

/// Day count (days since 1899-12-30) of a listing's wall clock. The wall clock is taken as UTC,
/// turned into local time (localOffset seconds east of UTC) and moved back by nine hours, whatever
/// the machine's zone: in Japan the wall clock itself comes out. An invalid time gives the earliest
/// day, never nothing: an empty time would read as an absent entry.
[[nodiscard]] double listingDay(const QDateTime &wallClock, int localOffset);

/// Seconds the machine's wall clock is ahead of UTC at present.
[[nodiscard]] int presentLocalOffset();

/// The cached size of an entry: one more than the true size below 4 GiB, as the 32-bit halves of
/// the size are put together.
[[nodiscard]] qint64 cachedSizeOf(qint64 trueSize);

} // namespace venlo
