#include "ftp/DirectoryCacheStat.h"

#include "ftp/DirectoryCacheGathering.h"
#include "ftp/ErrorLog.h"
#include "ftp/ListingTime.h"
#include "shared/FrontEnd.h"
#include "shared/RemotePath.h"

#include <QScopedValueRollback>

#include <algorithm>

namespace venlo
{

namespace
{
constexpr size_t directoriesAtATime = 256;
constexpr size_t enoughToTell = 64; ///< directories
constexpr size_t mostCompared = 1000;
constexpr int mostLosses = 2;
constexpr const char *notThere = "no-such-folder-here";

QByteArray withSlash(const QByteArray &path)
{
    return path.endsWith('/') ? path : path + '/';
}

/// Puts them on top of the pending, the first uppermost.
template <typename Pending>
void putOnTop(std::vector<Pending> &pending, std::vector<Pending> &&more)
{
    pending.insert(pending.end(), std::make_move_iterator(more.rbegin()),
                   std::make_move_iterator(more.rend()));
}
} // namespace

void DirectoryCache::StatLister::forget()
{
    m_trust = StatTrust();
    m_losses = 0;
}

void DirectoryCache::StatLister::tryAt(const QString &dir, const Listing &ordinary)
{
    if (m_toProve != nullptr) {
        m_trust.compare(ordinary, *m_toProve);
        return;
    }
    const QByteArray path = m_cache.rawPath(dir);
    if (m_trust.trust() != StatTrust::Trust::Unknown || ordinary.entries.empty() ||
        ordinary.entries.size() > mostCompared || !FtpClient::mayBeAskedByStat(path))
        return;
    // The server stands in dir: one that takes no path, or makes do with another, would show it
    // for anything.
    std::vector<std::optional<Listing>> shown;
    for (const bool all : {false, true}) { // some show a directory itself only with "-a"
        m_session.client().askStatForAll(all);
        const auto asked = m_session.client().listByStat({path, withSlash(path) + notThere}, shown);
        if (!asked) {
            noteError(asked.error());
            return;
        }
        if (shown.front() || !m_session.client().knowsStat())
            break;
    }
    m_trust.compare(ordinary, shown.front());
    if (!m_session.client().knowsStat() || shown.back())
        m_trust.giveUp();
    if (m_trust.trust() == StatTrust::Trust::Yes)
        m_session.eventLog().note(QStringLiteral("STAT shows what a listing shows: used from now"));
}

std::vector<DirectoryCache::Pending> DirectoryCache::StatLister::list(std::vector<Pending> &pending)
{
    std::vector<Pending> left;
    std::vector<Pending> asked = askable(pending, left);
    if (asked.empty())
        return left;
    auto shown = ask(asked);
    if (shown.empty() && !m_cache.m_frontEnd.cancelled())
        shown.resize(1); // listed in the ordinary way, it brings the connection back
    std::vector<Pending> below;
    proveSize(asked, shown, below);
    const bool mlsd = m_session.client().listsByMlsd();
    for (auto &listing : shown) {
        if (listing)
            listing = m_trust.asOrdinary(*std::move(listing), mlsd);
    }
    proveClock(asked, shown);
    const bool useless = std::none_of(shown.begin(), shown.end(),
                                      [](const auto &listing) { return listing.has_value(); });
    if (useless && shown.size() >= enoughToTell)
        m_trust.giveUp();
    for (size_t i = 0; i < shown.size(); ++i) {
        if (!shown[i]) {
            left.push_back(std::move(asked[i]));
            continue;
        }
        auto folders = takeIn(asked[i], *std::move(shown[i]));
        std::move(folders.begin(), folders.end(), std::back_inserter(below));
    }
    asked.erase(asked.begin(), asked.begin() + static_cast<std::ptrdiff_t>(shown.size()));
    putOnTop(pending, std::move(asked));
    putOnTop(pending, std::move(below));
    return left;
}

std::vector<DirectoryCache::Pending>
DirectoryCache::StatLister::askable(std::vector<Pending> &pending, std::vector<Pending> &left)
{
    std::vector<Pending> asked;
    while (!pending.empty() && asked.size() + left.size() < directoriesAtATime) {
        Pending next = std::move(pending.back());
        pending.pop_back();
        if (next.raw.isEmpty())
            next.raw = m_cache.rawPath(next.dir);
        const bool plain = FtpClient::mayBeAskedByStat(next.raw) && !m_cache.refusesPath(next.dir);
        (plain ? asked : left).push_back(std::move(next));
    }
    return asked;
}

std::vector<std::optional<Listing>>
DirectoryCache::StatLister::ask(const std::vector<Pending> &asked)
{
    QList<QByteArray> paths;
    for (const Pending &one : asked)
        paths.append(one.raw);
    std::vector<std::optional<Listing>> shown;
    const auto heard = [&] { m_cache.m_gathering->heard(static_cast<qsizetype>(shown.size())); };
    if (auto all = m_session.client().listByStat(paths, shown, heard); !all)
        noteError(all.error());
    return shown;
}

void DirectoryCache::StatLister::proveSize(std::vector<Pending> &asked,
                                           std::vector<std::optional<Listing>> &shown,
                                           std::vector<Pending> &below)
{
    const bool mlsd = m_session.client().listsByMlsd();
    size_t most = m_trust.proven();
    auto largest = shown.end();
    for (auto listing = shown.begin(); listing != shown.end(); ++listing) {
        if (!*listing || (*listing)->entries.size() <= most ||
            !m_trust.canBeOrdinary(**listing, mlsd))
            continue;
        most = (*listing)->entries.size();
        largest = listing;
    }
    if (largest == shown.end() || m_cache.m_frontEnd.cancelled())
        return;
    const Pending one = asked.at(static_cast<size_t>(largest - shown.begin()));
    asked.erase(asked.begin() + (largest - shown.begin()));
    const Listing byStat = **largest;
    shown.erase(largest);
    const QScopedValueRollback<const Listing *> proving(m_toProve, &byStat);
    m_cache.listOne(one, below);
    std::reverse(below.begin(), below.end()); // it is in the order of a stack
    if (m_trust.trust() == StatTrust::Trust::No)
        std::fill(shown.begin(), shown.end(), std::nullopt);
}

std::vector<DirectoryCache::Pending> DirectoryCache::StatLister::takeIn(const Pending &one,
                                                                        Listing listing)
{
    if (!m_cache.m_gathering->mayList(one))
        return {};
    m_cache.m_gathering->tell(one.dir);
    const QByteArray below = withSlash(one.raw);
    m_cache.learnOffset(one.dir, below, listing);
    std::vector<Pending> folders;
    for (const Folder &folder : m_cache.m_gathering->take(one.dir, std::move(listing), {}, false))
        folders.push_back(
            {remoteChild(one.dir, folder.name), below + folder.rawName, one.depth + 1});
    return folders;
}

void DirectoryCache::StatLister::proveClock(const std::vector<Pending> &asked,
                                            std::vector<std::optional<Listing>> &shown)
{
    if (!m_session.client().listsByMlsd())
        return;
    std::vector<ListedEntry> unknown;
    for (size_t i = 0; i < shown.size(); ++i) {
        if (!shown[i])
            continue;
        for (const ListedEntry &entry : shown[i]->entries) {
            if (m_trust.covers(entry.time))
                continue;
            unknown.push_back(entry);
            unknown.back().rawName = withSlash(asked[i].raw) + entry.rawName;
        }
    }
    for (const ListedEntry &entry : StatTrust::samples(std::move(unknown))) {
        if (!sampleClock(entry))
            break;
    }
    for (auto &listing : shown) {
        const bool covered =
            listing &&
            std::all_of(listing->entries.begin(), listing->entries.end(),
                        [this](const ListedEntry &entry) { return m_trust.covers(entry.time); });
        if (!covered)
            listing.reset();
    }
}

bool DirectoryCache::StatLister::sampleClock(const ListedEntry &entry)
{
    if (m_trust.covers(entry.time))
        return true;
    FtpClient &client = m_session.client();
    const auto utc = entry.kind == ListedEntry::Kind::Folder
                         ? client.folderTime(entry.rawName)
                         : client.modificationTime(entry.rawName);
    const auto offset = utc ? clockOffset(entry.time, utc.value()) : std::nullopt;
    if (!m_session.listOffset)
        m_session.listOffset = offset;
    if (offset && offset == m_session.listOffset) {
        m_trust.addSample(entry.time);
        return true;
    }
    if (utc || utc.error().kind == ErrorClass::Refused || utc.error().kind == ErrorClass::Retry)
        m_trust.giveUp();
    else
        noteError(utc.error());
    return false;
}

void DirectoryCache::StatLister::noteError(const Error &error)
{
    m_session.eventLog().note(QStringLiteral("STAT: ") + error.words);
    if (error.kind == ErrorClass::Lost && ++m_losses >= mostLosses)
        m_trust.giveUp();
}

} // namespace venlo
