#pragma once

#include <QDate>
#include <QString>

#include <optional>

namespace venlo
{

/// Day count (see toDayCount) of a date literal "yy/MM/dd" or "yyyy/MM/dd", with "hh:mm" or
/// "hh:mm:ss" behind it or not. A two-digit year lies in the century that puts the date nearest to
/// today. Nothing when it is no date.
[[nodiscard]] std::optional<double> dayCountOfLiteral(const QString &literal, const QDate &today);

} // namespace venlo
