#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QDateTime>

namespace venlo
{

/// A time-val "YYYYMMDDHHMMSS[.fraction]" of RFC 3659, 2.3: UTC, as Qt::UTC, to the millisecond.
/// A leap second becomes second 59. Also the five-digit year of servers that print "19" before the
/// years since 1900. Invalid for anything else.
[[nodiscard]] QDateTime parseTimeValue(QByteArrayView text);

/// The time-val of a time, without a fraction.
[[nodiscard]] QByteArray timeValueOf(const QDateTime &time);

} // namespace venlo
