// How the server's listings become rows of the cache.
#include "db/JetCatalogue.h"
#include "db/Recordset.h"
#include "db/Store.h"
#include "ftp/DirectoryCache.h"
#include "ftp/DirectoryCacheGathering.h"
#include "ftp/DirectoryCacheStat.h"
#include "ftp/ErrorLog.h"
#include "ftp/ListingTime.h"
#include "shared/Flags.h"
#include "shared/FrontEnd.h"
#include "shared/NameList.h"
#include "shared/RemotePath.h"

#include <algorithm>

namespace venlo
{

namespace
{
constexpr int mostMisfits = 20; ///< entries that are named; of more their number is told

/// Fields of the rows of a directory.
enum RowField { SameSpelling, Name, IsFolder, Day, Size, Raw, DayOnly };

/// Finds the rows of a directory by their names; soonest when they are asked for in order.
class RowFinder
{
public:
    explicit RowFinder(const Rows &rows) : m_rows(rows) {}
    /// -1 when there is none.
    [[nodiscard]] int rowOf(const QString &name)
    {
        if (m_next < m_rows.count() && m_rows.at(Name, m_next).toString() == name)
            return m_next++;
        if (m_byName.isEmpty()) {
            for (int row = 0; row < m_rows.count(); ++row)
                m_byName.insert(m_rows.at(Name, row).toString(), row);
        }
        const int row = m_byName.value(name, -1);
        m_next = row + 1;
        return row;
    }

private:
    const Rows &m_rows;
    QHash<QString, int> m_byName;
    int m_next = 0;
};

/// The columns of a listed entry, all but the directory.
struct EntryColumns {
    EntryColumns(const ListedEntry &entry, std::optional<qint64> listOffset, int localOffset)
        : folder(entry.kind == ListedEntry::Kind::Folder ? 1 : 0),
          day(listingDay(wallClockOf(entry, listOffset), localOffset)),
          size(folder == 1 ? 0 : cachedSizeOf(entry.size)), dayOnly(entry.dayOnly ? 1 : 0)
    {
        if (entry.rawName != entry.name.toUtf8())
            raw = entry.rawName;
    }

    /// Whether a row has these columns; its name is not looked at.
    [[nodiscard]] bool isRow(const Rows &rows, int row) const
    {
        const QVariant &onlyDay = rows.at(DayOnly, row);
        return rows.at(SameSpelling, row).toInt() == 1 &&
               rows.at(IsFolder, row).toInt() == folder && rows.at(Day, row).toDouble() == day &&
               rows.at(Size, row).toLongLong() == size && rows.at(Raw, row) == raw &&
               !onlyDay.isNull() && onlyDay.toInt() == dayOnly;
    }

    int folder;
    double day;
    qint64 size;
    QVariant raw; ///< the name's bytes where they are not UTF-8
    int dayOnly;
};
} // namespace

void DirectoryCache::mark(const QString &dir, const QString &why, bool refused)
{
    m_marks.set(m_session.currentSite(), {dir, why, refused});
    m_session.eventLog().note(QStringLiteral("incomplete: %1: %2").arg(dir, why));
}

void DirectoryCache::caLoadDir(const QString &dir, LoadMode mode, QString &names, bool &ok)
{
    if (!m_session.connected())
        return;
    QStringList subFolders;
    QString misfits;
    const Loaded loaded = load(dir, mode, subFolders, misfits);
    if (loaded == Loaded::NotConnected)
        return;
    if (mode == WithSubFolders)
        names = joinNames(subFolders);
    ok = loaded == Loaded::Yes;
    if (!misfits.isEmpty())
        throw Misfits(misfits);
}

DirectoryCache::Loaded DirectoryCache::load(const QString &path, LoadMode mode,
                                            QStringList &subFolders, QString &misfits)
{
    subFolders.clear();
    if (!m_session.connected())
        return Loaded::NotConnected;
    if (refusesPath(path)) {
        m_session.errorLog().LogError(QStringLiteral("sjCrntDir Err: ") + path);
        mark(path, QStringLiteral("the path holds the server's name"), false);
        return Loaded::No;
    }
    const QString dir = normalised(path);
    if (mode == IfAbsent && isLoaded(dir))
        return Loaded::Yes;

    // What the server has to say comes first: no other process waits for it.
    bool current = false;
    m_current.sjCrntDir(dir, current);
    QString why = m_current.lastError().words;
    bool refused = m_current.lastError().kind == ErrorClass::Refused;
    std::optional<Listing> listing;
    if (current) {
        refused = false;
        listing = listed(dir, why);
    }
    if (m_gathering != nullptr) {
        const bool heard = listing.has_value();
        if (heard)
            m_stat->tryAt(dir, *listing);
        for (const Folder &folder : m_gathering->take(dir, std::move(listing), why, refused))
            subFolders.append(folder.name);
        return heard ? Loaded::Yes : Loaded::No;
    }
    // Hundreds of folders are listed when a node is expanded.
    grouped([&] {
        if (mode == Replace)
            dropPrefix(dir);
        if (listing)
            storeListing(dir, *listing, subFolders, misfits);
        else
            mark(dir, why, refused);
    });
    return listing ? Loaded::Yes : Loaded::No;
}

std::optional<Listing> DirectoryCache::listed(const QString &dir, QString &why)
{
    auto listing = m_session.client().list();
    if (!listing && m_session.client().lostToRiders()) {
        bool back = false;
        m_current.sjCrntDir(dir, back); // reconnects
        if (back)
            listing = m_session.client().list();
    }
    if (listing && (listing.value().whole || !listing.value().entries.empty())) {
        if (!listing.value().fromMlsd)
            learnOffset(dir, {}, listing.value());
        return std::move(listing.value());
    }
    why = listing ? listing.value().why : listing.error().words;
    m_session.errorLog().LogError(QStringLiteral("FtpFindFirstFile"));
    return std::nullopt;
}

void DirectoryCache::storeListing(const QString &dir, const Listing &listing,
                                  QStringList &subFolders, QString &misfits)
{
    misfits = addRows(dir, listing, subFolders);
    noteWhole(dir, listing, misfits);
}

void DirectoryCache::noteWhole(const QString &dir, const Listing &listing, const QString &misfits)
{
    if (!listing.whole) {
        m_session.errorLog().LogError(QStringLiteral("InternetFindNextFile"));
        mark(dir, listing.why, false);
    } else if (!misfits.isEmpty()) {
        mark(dir, misfits, false);
    } else if (m_gathering == nullptr || !m_gathering->listedWhole(dir)) {
        m_marks.clear(m_session.currentSite(), dir);
    }
}

QString DirectoryCache::addRows(const QString &dir, const Listing &listing, QStringList &subFolders)
{
    static const QStringList columns{QStringLiteral("sDir"),    QStringLiteral("bFd"),
                                     QStringLiteral("sName"),   QStringLiteral("dDate"),
                                     QStringLiteral("nSize"),   QStringLiteral("raw name"),
                                     QStringLiteral("day only")};
    const auto table = m_database.openTable(m_session.currentSite());
    const int localOffset = presentLocalOffset();
    QStringList misfits;
    int left = 0;
    for (const ListedEntry &entry : listing.entries) {
        const EntryColumns row(entry, m_session.listOffset, localOffset);
        try {
            table->add(columns,
                       {dir, row.folder, entry.name, row.day, row.size, row.raw, row.dayOnly});
        } catch (const DbError &error) {
            if (++left <= mostMisfits)
                misfits.append(remoteChild(dir, entry.name.left(256)) + QStringLiteral(": ") +
                               error.words());
            continue;
        }
        if (row.folder == 1)
            subFolders.append(entry.name);
    }
    if (left > mostMisfits)
        misfits.append(QStringLiteral("･･･ (%1)").arg(left));
    return misfits.join(QLatin1Char('\n'));
}

bool DirectoryCache::hasRowsOf(const QString &dir, const Listing &listing)
{
    const Rows rows = m_database.store().query(
        QStringLiteral("SELECT sDir COLLATE BINARY = ?1, sName, bFd, dDate, nSize, \"raw name\", "
                       "\"day only\" FROM %1 WHERE sDir = ?1 ORDER BY sDir, sName")
            .arg(quotedName(m_session.currentSite())),
        {dir});
    if (rows.count() != static_cast<int>(listing.entries.size()))
        return false;
    const int localOffset = presentLocalOffset();
    RowFinder finder(rows);
    return std::all_of(
        listing.entries.begin(), listing.entries.end(), [&](const ListedEntry &entry) {
            const int row = finder.rowOf(entry.name);
            return row >= 0 &&
                   EntryColumns(entry, m_session.listOffset, localOffset).isRow(rows, row);
        });
}

} // namespace venlo
