// How the server's listings become rows of the cache.
#include "db/Recordset.h"
#include "ftp/DirectoryCache.h"
#include "ftp/DirectoryCacheGathering.h"
#include "ftp/ErrorLog.h"
#include "ftp/ListingTime.h"
#include "shared/Flags.h"
#include "shared/FrontEnd.h"
#include "shared/NameList.h"
#include "shared/RemotePath.h"

namespace venlo
{

namespace
{
constexpr int mostMisfits = 20; ///< entries that are named; of more their number is told
}

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
            tryStat(dir, *listing);
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
        const bool folder = entry.kind == ListedEntry::Kind::Folder;
        const double day = listingDay(wallClockOf(entry, m_session.listOffset), localOffset);
        const QVariant raw =
            entry.rawName == entry.name.toUtf8() ? QVariant() : QVariant(entry.rawName);
        try {
            table->add(columns,
                       {dir, folder ? 1 : 0, entry.name, day, folder ? 0 : cachedSizeOf(entry.size),
                        raw, entry.dayOnly ? 1 : 0});
        } catch (const DbError &error) {
            if (++left <= mostMisfits)
                misfits.append(remoteChild(dir, entry.name.left(256)) + QStringLiteral(": ") +
                               error.words());
            continue;
        }
        if (folder)
            subFolders.append(entry.name);
    }
    if (left > mostMisfits)
        misfits.append(QStringLiteral("･･･ (%1)").arg(left));
    return misfits.join(QLatin1Char('\n'));
}

} // namespace venlo
