#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <vector>

namespace venlo
{

/// One entry of a directory listing.
struct ListedEntry {
    enum class Kind { File, Folder, Link };
    QByteArray rawName; ///< the bytes as received, which address the entry
    QString name;       ///< decoded, see NameCodec
    Kind kind = Kind::File;
    /// Last-modified time, invalid when the listing shows none. The digits the server showed, as
    /// Qt::UTC: UTC itself for MLSD (utc true), the server's wall clock for LIST.
    QDateTime time;
    bool utc = false;     ///< time is UTC (MLSD, EPLF), not the server's wall clock
    bool dayOnly = false; ///< the listing shows a day without a time of day
    qint64 size = 0;      ///< bytes; 0 for folders
};

/// A directory listing and whether it can be relied on.
struct Listing {
    std::vector<ListedEntry> entries;
    bool whole = false; ///< opening and completion reply, clean end of data, every line understood
    QString why;        ///< why it is not whole, empty otherwise
    bool fromMlsd = false;
};

} // namespace venlo
