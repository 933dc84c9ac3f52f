#pragma once

#include "ftp/protocol/Listing.h"

#include <QDate>

#include <optional>

namespace venlo
{

class NameCodec;

/// A name that must not become a path component here: empty, ".", "..", or one that holds a
/// character that separates components on this machine.
[[nodiscard]] bool isRefusedName(const QString &name, const QString &separators);

/// Turns the lines of one directory listing into entries. Knows MLSD (RFC 3659, 7), the Unix
/// long format, the DOS format and EPLF; a line none of them explains makes the listing not whole.
/// Bounded by its caller: it keeps no text beyond the entries. "." and ".." are dropped silently;
/// a name that holds "/" or NUL (or "\" on Windows) is refused and named in why().
class ListingParser
{
public:
    enum class Source { Mlsd, List };

    /// serverToday: the server's present day, to find the year of "Nov 21 05:10".
    ListingParser(Source source, NameCodec &codec, QDate serverToday);

    /// One line without its line end. Order as received.
    void addLine(const QByteArray &line);
    /// The entries so far, and whether every line was an entry or known noise ("total 12", blank
    /// lines). Wording that the listing is truncated or that the directory could not be opened
    /// makes it not whole.
    [[nodiscard]] Listing take();

private:
    void addList(const QByteArray &line);
    void addMlsd(const QByteArray &line);
    void accept(ListedEntry entry);
    void refuseLine(const QByteArray &line);
    void doubt(const QString &why);

    Source m_source;
    NameCodec &m_codec;
    QDate m_today;
    Listing m_listing;
};

} // namespace venlo
