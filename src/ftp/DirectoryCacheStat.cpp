// How a refresh lists many directories at a time.
#include "ftp/DirectoryCacheWalk.h"
#include "ftp/ErrorLog.h"
#include "ftp/ListingTime.h"

#include <algorithm>

namespace venlo
{

namespace
{
constexpr size_t directoriesAtATime = 256;
constexpr int mostLosses = 2;

const std::vector<ListedEntry> &noEntries()
{
    static const std::vector<ListedEntry> none;
    return none;
}
} // namespace

void DirectoryCache::tryStat(const QString &dir, const Listing &ordinary)
{
    const QByteArray path = rawPath(dir);
    if (m_stat.trust() != StatTrust::Trust::Unknown || ordinary.entries.empty() ||
        !FtpClient::mayBeAskedByStat(path))
        return;
    std::vector<std::optional<Listing>> shown;
    if (auto asked = m_session.client().listByStat({path}, shown); !asked) {
        m_session.eventLog().note(QStringLiteral("STAT %1: %2").arg(dir, asked.error().words));
        if (asked.error().kind != ErrorClass::Cancelled)
            m_stat.giveUp();
        return;
    }
    m_stat.compare(ordinary, shown.front());
    if (m_stat.trust() == StatTrust::Trust::Yes)
        m_session.eventLog().note(QStringLiteral("STAT shows what a listing shows: used from now"));
}

std::vector<DirectoryCache::Pending> DirectoryCache::listByStat(std::vector<Pending> &pending)
{
    std::vector<Pending> left;
    std::vector<Pending> asked;
    QList<QByteArray> paths;
    while (!pending.empty() && asked.size() < directoriesAtATime) {
        Pending &next = pending.back();
        if (next.raw.isEmpty())
            next.raw = rawPath(next.dir);
        const bool plain = FtpClient::mayBeAskedByStat(next.raw) && !refusesPath(next.dir);
        if (plain)
            paths.append(next.raw);
        (plain ? asked : left).push_back(std::move(pending.back()));
        pending.pop_back();
    }
    std::vector<std::optional<Listing>> shown;
    if (!paths.isEmpty())
        askByStat(paths, shown);
    proveClock(asked, shown);
    for (size_t i = asked.size(); i-- > 0;) {
        if (shown[i])
            takeFromStat(asked[i], std::move(*shown[i]), pending);
        else
            left.push_back(std::move(asked[i]));
    }
    return left;
}

void DirectoryCache::askByStat(const QList<QByteArray> &paths,
                               std::vector<std::optional<Listing>> &shown)
{
    if (auto all = m_session.client().listByStat(paths, shown); !all) {
        m_session.eventLog().note(QStringLiteral("STAT: ") + all.error().words);
        if (all.error().kind == ErrorClass::Lost && ++m_statLosses >= mostLosses)
            m_stat.giveUp();
    }
    shown.resize(static_cast<size_t>(paths.size()));
    const bool mlsd = m_session.client().listsByMlsd();
    for (auto &listing : shown) {
        if (listing)
            listing = m_stat.asOrdinary(std::move(*listing), mlsd);
    }
}

void DirectoryCache::takeFromStat(const Pending &one, Listing listing,
                                  std::vector<Pending> &pending)
{
    if (!mayList(one))
        return;
    tellListing(one.dir);
    const QByteArray below = one.raw.endsWith('/') ? one.raw : one.raw + '/';
    learnOffset(one.dir, below, listing);
    const auto folders = m_walk->take(one.dir, std::move(listing), {}, false);
    for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder)
        pending.push_back(
            {remoteChild(one.dir, folder->name), below + folder->rawName, one.depth + 1});
}

void DirectoryCache::proveClock(const std::vector<Pending> &asked,
                                std::vector<std::optional<Listing>> &shown)
{
    if (!m_session.client().listsByMlsd())
        return;
    std::vector<ListedEntry> unknown;
    for (size_t i = 0; i < asked.size(); ++i) {
        for (const ListedEntry &entry : shown[i] ? shown[i]->entries : noEntries()) {
            if (entry.kind == ListedEntry::Kind::Folder || m_stat.covers(entry.time))
                continue;
            unknown.push_back(entry);
            unknown.back().rawName = asked[i].raw + '/' + entry.rawName;
        }
    }
    for (const ListedEntry &file : StatTrust::samples(std::move(unknown))) {
        if (!sampleClock(file))
            break;
    }
    for (auto &listing : shown) {
        const bool covered =
            listing && std::all_of(listing->entries.begin(), listing->entries.end(),
                                   [this](const ListedEntry &entry) {
                                       return entry.kind == ListedEntry::Kind::Folder ||
                                              m_stat.covers(entry.time);
                                   });
        if (!covered)
            listing.reset();
    }
}

/// False when the server's clock cannot be relied on.
bool DirectoryCache::sampleClock(const ListedEntry &file)
{
    if (m_stat.covers(file.time))
        return true;
    const auto utc = m_session.client().modificationTime(file.rawName);
    const auto offset = utc ? clockOffset(file.time, utc.value()) : std::nullopt;
    if (!m_session.listOffset)
        m_session.listOffset = offset;
    if (offset && offset == m_session.listOffset) {
        m_stat.addSample(file.time);
        return true;
    }
    if (utc || utc.error().kind != ErrorClass::Cancelled)
        m_stat.giveUp();
    return false;
}

} // namespace venlo
