#pragma once

#include <optional>

#include <QDateTime>
#include <QString>
#include <QVariant>

namespace venlo
{

/// The plain text form of a value: booleans "True" and "False", numbers with a decimal point,
/// dates "yyyy/MM/dd hh:mm:ss", everything else as it stands.
[[nodiscard]] QString settingText(const QVariant &value);

/// "True" and "False" in any letter case, and numbers: 0 is false, any other true.
[[nodiscard]] std::optional<bool> settingBoolean(const QString &text);

/// A date with or without a time of day, year first, parts separated by "/" or "-", months, days
/// and hours with one or two digits. Two-digit years lie in the century nearest to today. Local
/// wall clock.
[[nodiscard]] std::optional<QDateTime> settingDate(const QString &text);

/// The number a text begins with, blanks skipped; 0 when there is none.
[[nodiscard]] double settingNumber(const QString &text);

} // namespace venlo
