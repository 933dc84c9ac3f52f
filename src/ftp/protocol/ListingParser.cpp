#include "ftp/protocol/ListingParser.h"

#include "ftp/protocol/ListingDialects.h"
#include "ftp/protocol/ListingWords.h"
#include "ftp/protocol/NameCodec.h"
#include "ftp/protocol/WireText.h"

#include <QDir>

#include <algorithm>

namespace venlo
{

namespace
{
constexpr qsizetype shownLength = 200;   ///< characters of a line that the reason quotes
constexpr qsizetype longestName = 1024;  ///< bytes: 255 characters of any encoding are fewer
constexpr qsizetype reasonLength = 1000; ///< characters after which further reasons are left out

/// Text of the server for a log line: one line, not longer than people read.
QString quoted(QString text)
{
    text.truncate(shownLength);
    std::replace_if(
        text.begin(), text.end(), [](QChar c) { return c < QLatin1Char(' '); }, QLatin1Char('?'));
    return text;
}

bool isSelfOrParent(const QByteArray &name)
{
    return name == "." || name == "..";
}

bool cannotBeSent(const QByteArray &name)
{
    return name.contains('\0') || name.contains('\r') || name.contains('\n');
}
} // namespace

bool isRefusedName(const QString &name, const QString &separators)
{
    return name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..") ||
           std::any_of(separators.begin(), separators.end(),
                       [&](QChar separator) { return name.contains(separator); });
}

ListingParser::ListingParser(Source source, NameCodec &codec, QDate serverToday)
    : m_source(source), m_codec(codec), m_today(serverToday)
{
    m_listing.fromMlsd = source == Source::Mlsd;
}

void ListingParser::addLine(const QByteArray &line)
{
    if (isListingNoise(line))
        return;
    if (m_source == Source::Mlsd)
        addMlsd(line);
    else
        addList(line);
}

void ListingParser::addList(const QByteArray &line)
{
    auto entry = readUnixLine(line, m_today);
    if (!entry)
        entry = readDosLine(line);
    if (!entry)
        entry = readEplfLine(line);
    if (!entry) {
        refuseLine(line);
        return;
    }
    accept(*std::move(entry));
}

void ListingParser::addMlsd(const QByteArray &line)
{
    auto read = readMlsdLine(line);
    if (!read)
        refuseLine(line);
    else if (!read->self)
        accept(std::move(read->entry));
}

void ListingParser::accept(ListedEntry entry)
{
    if (isSelfOrParent(entry.rawName))
        return;
    if (entry.rawName.size() > longestName) {
        doubt(QStringLiteral("refused name: ") +
              quoted(decodeLeniently(entry.rawName.left(shownLength))));
        return;
    }
    static const QString separators = QStringLiteral("/") + QDir::separator();
    entry.name = m_codec.decode(entry.rawName);
    if (cannotBeSent(entry.rawName) || isRefusedName(entry.name, separators)) {
        doubt(QStringLiteral("refused name: ") + quoted(entry.name));
        return;
    }
    // A plain LIST leaves such names out; both ways of listing must show the same directory.
    if (m_source == Source::Mlsd && entry.rawName.startsWith('.'))
        return;
    m_listing.entries.push_back(std::move(entry));
}

void ListingParser::refuseLine(const QByteArray &line)
{
    const QString words = decodeLeniently(line.left(shownLength));
    doubt((saysListingIsNotWhole(words) ? QStringLiteral("the server says: ")
                                        : QStringLiteral("not an entry: ")) +
          quoted(words));
}

void ListingParser::doubt(const QString &why)
{
    if (m_listing.why.size() > reasonLength)
        return;
    if (!m_listing.why.isEmpty())
        m_listing.why += QStringLiteral("; ");
    m_listing.why += why;
}

Listing ListingParser::take()
{
    m_listing.whole = m_listing.why.isEmpty();
    return std::exchange(m_listing, Listing{{}, false, {}, m_source == Source::Mlsd});
}

} // namespace venlo
