#pragma once

#include "ftp/protocol/ListingFields.h"

#include <QDate>
#include <QDateTime>

#include <cstddef>
#include <optional>

namespace venlo
{

/// A date as the long format shows it.
struct UnixDate {
    QDateTime time; ///< the digits shown, as Qt::UTC
    bool dayOnly = false;
    std::size_t lastField = 0; ///< index of the date's last field
};

/// The date that begins at a field: "Nov 21 05:10", "Nov 21  2024", day first, "11月 21日 05:10",
/// "2024-11-21 05:10[:33[.fraction zone]]". A date without a year is the latest one that is not
/// after the server's tomorrow (its clock or its zone may be ahead).
[[nodiscard]] std::optional<UnixDate> readUnixDate(const ListingFields &fields, std::size_t at,
                                                   QDate serverToday);

} // namespace venlo
