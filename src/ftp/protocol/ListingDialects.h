#pragma once

#include "ftp/protocol/Listing.h"

#include <QByteArray>
#include <QDate>

#include <optional>

namespace venlo
{

/// What a dialect makes of one line: nothing when the line is not of its form, otherwise an entry
/// whose name is still the bytes only (rawName), neither judged nor decoded.
using ListedLine = std::optional<ListedEntry>;

/// The long format of Unix servers and those that imitate it. Server's wall clock.
[[nodiscard]] ListedLine readUnixLine(const QByteArray &line, QDate serverToday);
/// "11-21-26  05:10AM       <DIR>          name". Server's wall clock.
[[nodiscard]] ListedLine readDosLine(const QByteArray &line);
/// "+i8388621.48594,m825718503,r,s280,\tname": easily parsed LIST format. UTC.
[[nodiscard]] ListedLine readEplfLine(const QByteArray &line);

/// An MLSD line (RFC 3659, 7), UTC.
struct MlsdLine {
    ListedEntry entry;
    bool self = false; ///< the listed directory itself or its parent
};
[[nodiscard]] std::optional<MlsdLine> readMlsdLine(const QByteArray &line);

} // namespace venlo
