// How the server's listings become rows of the cache.
#include "db/Recordset.h"
#include "ftp/DirectoryCache.h"
#include "ftp/ErrorLog.h"
#include "ftp/ListingTime.h"
#include "shared/Flags.h"
#include "shared/FrontEnd.h"
#include "shared/NameList.h"
#include "shared/RemotePath.h"

#include <cmath>

#include <QSet>

namespace venlo
{

namespace
{
constexpr int maxDepth = 128;
constexpr int offsetSamples = 3;    // in one directory
constexpr int allOffsetSamples = 6; // of a site
constexpr size_t batch = 50; // listings a refresh stores at a time: a commit takes a disk's turn
constexpr qint64 quarterHour = 900;
constexpr qint64 widestOffset = 15LL * 3600;

/// Closes the wait window whatever ends the work.
class WaitWindow
{
public:
    WaitWindow(FrontEnd &frontEnd, const QString &text) : m_frontEnd(frontEnd)
    {
        m_frontEnd.showWait(text);
    }
    ~WaitWindow() { m_frontEnd.closeWait(); }
    WaitWindow(const WaitWindow &) = delete;
    WaitWindow &operator=(const WaitWindow &) = delete;

private:
    FrontEnd &m_frontEnd;
};

/// Empties the message line whatever ends the work.
class MessageLine
{
public:
    MessageLine(FrontEnd &frontEnd, bool shown) : m_frontEnd(frontEnd), m_shown(shown) {}
    ~MessageLine()
    {
        if (m_shown)
            m_frontEnd.setMessageLine(QString());
    }
    MessageLine(const MessageLine &) = delete;
    MessageLine &operator=(const MessageLine &) = delete;

private:
    FrontEnd &m_frontEnd;
    bool m_shown;
};
} // namespace

/// A walk over a subtree. Its root counts as incomplete from the moment its rows go until the walk
/// has been everywhere, so that a program that dies on the way leaves no tree that looks whole.
class DirectoryCache::Walk
{
public:
    Walk(DirectoryCache &cache, const QString &dir) : m_cache(cache), m_root(dir)
    {
        Transaction transaction(m_cache.m_database);
        m_cache.dropPrefix(dir);
        m_cache.m_marks.set(m_cache.m_session.currentSite(),
                            {dir, QStringLiteral("not listed"), false});
        transaction.commit();
        m_cache.m_walk = this;
    }
    ~Walk() { m_cache.m_walk = nullptr; }
    Walk(const Walk &) = delete;
    Walk &operator=(const Walk &) = delete;

    /// A directory was listed whole; true for the root, whose mark has to wait.
    [[nodiscard]] bool listedWhole(const QString &dir)
    {
        m_rootIsWhole = m_rootIsWhole || dir == m_root;
        return dir == m_root;
    }
    /// Keeps what the server said of a directory until it is stored with others; the sub-folders
    /// to go on with. Of names that differ in letter case only the first fits the cache.
    [[nodiscard]] QStringList take(const QString &dir, std::optional<Listing> listing,
                                   const QString &why, bool refused)
    {
        QStringList folders;
        QSet<QString> names;
        for (const ListedEntry &entry : listing ? listing->entries : decltype(listing->entries)()) {
            const auto before = names.size();
            names.insert(entry.name.toCaseFolded());
            if (names.size() == before || entry.kind != ListedEntry::Kind::Folder)
                continue;
            folders.append(entry.name);
            if (entry.rawName != entry.name.toLatin1())
                m_cache.learnRawPath(remoteChild(dir, entry.name), entry.rawName);
        }
        m_heard.push_back({dir, std::move(listing), why, refused});
        ++m_asked;
        if (m_cache.m_refreshReport)
            m_cache.m_refreshReport(m_asked);
        if (m_heard.size() >= batch)
            store();
        return folders;
    }
    void ended()
    {
        store();
        if (m_rootIsWhole)
            m_cache.m_marks.clear(m_cache.m_session.currentSite(), m_root);
    }

private:
    struct Heard {
        QString dir;
        std::optional<Listing> listing;
        QString why;
        bool refused = false;
    };
    void store()
    {
        Transaction transaction(m_cache.m_database);
        for (const Heard &heard : m_heard) {
            QStringList ignored;
            QString misfits;
            if (heard.listing)
                m_cache.storeListing(heard.dir, *heard.listing, ignored, misfits);
            else
                m_cache.mark(heard.dir, heard.why, heard.refused);
        }
        transaction.commit();
        m_heard.clear();
    }

    DirectoryCache &m_cache;
    std::vector<Heard> m_heard;
    QString m_root;
    int m_asked = 0; ///< directories that were listed, or could not be
    bool m_rootIsWhole = false;
};

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
        throw DbError(misfits);
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
    if (m_walk != nullptr) {
        const bool heard = listing.has_value();
        subFolders = m_walk->take(dir, std::move(listing), why, refused);
        return heard ? Loaded::Yes : Loaded::No;
    }
    Transaction transaction(m_database);
    if (mode == Replace)
        dropPrefix(dir);
    if (listing)
        storeListing(dir, *listing, subFolders, misfits);
    else
        mark(dir, why, refused);
    transaction.commit();
    return listing ? Loaded::Yes : Loaded::No;
}

std::optional<Listing> DirectoryCache::listed(const QString &dir, QString &why)
{
    auto listing = m_session.client().list();
    if (listing && (listing.value().whole || !listing.value().entries.empty())) {
        if (!listing.value().fromMlsd)
            learnOffset(dir, listing.value());
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
    } else if (m_walk == nullptr || !m_walk->listedWhole(dir)) {
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
            misfits.append(remoteChild(dir, entry.name.left(256)) + QStringLiteral(": ") +
                           error.words());
            continue;
        }
        if (folder)
            subFolders.append(entry.name);
    }
    return misfits.join(QLatin1Char('\n'));
}

void DirectoryCache::learnOffset(const QString &dir, const Listing &listing)
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
        const auto utc = m_session.client().modificationTime(entry.rawName);
        if (!utc)
            continue;
        // The listing is cut to the minute; zones differ by quarter hours.
        const double apart = static_cast<double>(entry.time.secsTo(utc.value()));
        const qint64 offset =
            std::llround(std::floor(apart / 60.0) * 60.0 / quarterHour) * quarterHour;
        if (std::abs(offset) > widestOffset || std::abs(apart - static_cast<double>(offset)) > 60.0)
            continue;
        m_session.listOffset = offset;
        m_session.eventLog().note(
            QStringLiteral("the listing's clock of %1 is %2 s from UTC").arg(dir).arg(offset));
        return;
    }
}

void DirectoryCache::caRefresh(const QString &path)
{
    if (!m_session.connected())
        return;
    if (refusesPath(path)) {
        m_session.errorLog().LogError(QStringLiteral("sjCrntDir Err: ") + path);
        mark(path, QStringLiteral("the path holds the server's name"), false);
        return;
    }
    const QString dir = normalised(path);
    const WaitWindow wait(m_frontEnd, QStringLiteral("FTP側のﾃﾞｨﾚｸﾄﾘ情報を更新しています"));
    const MessageLine messageLine(m_frontEnd, !m_flags.unattendedTransfer);
    m_rawPaths.clear();
    Walk walk(*this, dir);
    caRecTree(dir, 0);
    walk.ended();
}

void DirectoryCache::caRecTree(const QString &dir, int depth)
{
    if (depth > maxDepth) {
        mark(dir, QStringLiteral("nested too deeply"), false);
        return;
    }
    if (m_frontEnd.cancelled() || !m_session.connected()) {
        mark(dir, QStringLiteral("not listed"), false);
        return;
    }
    if (!m_flags.unattendedTransfer)
        m_frontEnd.setMessageLine(dir + QStringLiteral(" ﾌｫﾙﾀﾞとﾌｧｲﾙ情報を記録しています･･･"));
    QStringList subFolders;
    QString misfits;
    (void)load(dir, WithSubFolders, subFolders, misfits);
    m_frontEnd.yield();
    for (const QString &name : std::as_const(subFolders))
        caRecTree(remoteChild(dir, name), depth + 1);
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

} // namespace venlo
