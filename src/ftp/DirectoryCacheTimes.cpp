// How the times of a listing are understood and made finer.
#include "db/Recordset.h"
#include "db/Store.h"
#include "db/TextFold.h"
#include "ftp/DirectoryCache.h"
#include "ftp/ErrorLog.h"
#include "ftp/ListingTime.h"
#include "ftp/SiteTable.h"
#include "shared/RemotePath.h"

namespace venlo
{

namespace
{
constexpr int offsetSamples = 3;    // in one directory
constexpr int allOffsetSamples = 6; // of a site
} // namespace

void DirectoryCache::learnOffset(const QString &dir, const QByteArray &prefix,
                                 const Listing &listing)
{
    noticeSite();
    if (m_session.listOffset || !m_session.client().hasMdtm())
        return;
    int asked = 0;
    for (const ListedEntry &entry : listing.entries) {
        if (entry.kind != ListedEntry::Kind::File || entry.dayOnly || !entry.time.isValid())
            continue;
        if (++asked > offsetSamples || m_offsetSamples >= allOffsetSamples)
            return;
        ++m_offsetSamples;
        const auto utc = m_session.client().modificationTime(prefix + entry.rawName);
        if (!utc)
            continue;
        const auto offset = clockOffset(entry.time, utc.value());
        if (!offset)
            continue;
        m_session.listOffset = offset;
        m_session.eventLog().note(
            QStringLiteral("the listing's clock of %1 is %2 s from UTC").arg(dir).arg(*offset));
        return;
    }
}

std::optional<double> DirectoryCache::refineTime(const QString &dir, const QString &name)
{
    if (!m_session.connected() || !m_session.client().hasMdtm())
        return std::nullopt;
    static const QStringList keys{QStringLiteral("sDir"), QStringLiteral("sName")};
    const auto table = m_database.openTable(m_session.currentSite());
    const QVariantList shown = table->find({QStringLiteral("day only")}, keys, {dir, name});
    if (shown.isEmpty() || shown.at(0).toLongLong() != 1)
        return std::nullopt;
    const QByteArray path =
        (dir == QLatin1String("/") ? QByteArray() : rawPath(dir)) + '/' + rawName(dir, name);
    const auto utc = m_session.client().modificationTime(path);
    if (!utc)
        return std::nullopt;
    ListedEntry entry;
    entry.time = utc.value();
    entry.utc = true;
    const double day = listingDay(wallClockOf(entry, std::nullopt), presentLocalOffset());
    (void)table->change({QStringLiteral("dDate"), QStringLiteral("day only")}, {day, 0}, keys,
                        {dir, name});
    return day;
}

std::vector<std::pair<QString, QString>> DirectoryCache::dayOnlyUnder(const QString &dir)
{
    const QString root = normalised(dir);
    // A wildcard in the path makes them wide enough.
    const LikeBounds bounds = likeBounds(root + QLatin1Char('*')).value();
    const Rows rows = m_database.store().query(dayOnlyStatement(m_session.currentSite()),
                                               {bounds.low, bounds.high});
    std::vector<std::pair<QString, QString>> entries;
    for (int row = 0; row < rows.count(); ++row) {
        if (isBelowOrSameFolded(rows.at(0, row).toString(), root))
            entries.emplace_back(rows.at(0, row).toString(), rows.at(1, row).toString());
    }
    return entries;
}

} // namespace venlo
