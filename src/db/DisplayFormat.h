#pragma once

#include <QDateTime>
#include <QString>

namespace venlo
{

/// "yy/MM/dd hh:mm:ss", 24-hour. An invalid time gives an empty text.
[[nodiscard]] QString FormatDateText(const QDateTime &time);

/// The same truncated to the minute, "yy/MM/dd hh:mm": what comparisons compare as text.
[[nodiscard]] QString FormatMinuteText(const QDateTime &time);

/// Size in bytes: "#,#" and "B" up to and including 1000, above that the size divided by 1000 with
/// "#,#" and "KB", exactly .5 rounding to even. Zero shows as a bare "B". (64 bits wide so that a
/// caller with a larger file is not cut; the store's sizes are 32 bits.)
[[nodiscard]] QString FormatSizeText(qint64 size);

/// The store's dates are days since 1899-12-30 with the time of day as fraction. They are wall
/// clock without a zone; the QDateTime side is Qt::UTC so that no daylight rule ever moves them.
[[nodiscard]] double toDayCount(const QDateTime &wallClock);
[[nodiscard]] QDateTime fromDayCount(double days);

} // namespace venlo
