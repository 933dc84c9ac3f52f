#include "ftp/DirectoryCacheWalk.h"

#include "db/TextFold.h"
#include "shared/Flags.h"
#include "shared/FrontEnd.h"
#include "shared/RemotePath.h"

namespace venlo
{

namespace
{
constexpr int maxDepth = 128;
/// Characters; a folder of a longer name has no row, and is not looked into.
constexpr qsizetype longestName = 255;

QString notListed()
{
    return QStringLiteral("not listed");
}

/// Of the root of a walk that has not ended.
QString cutShort()
{
    return QStringLiteral("the refresh did not come to its end");
}
} // namespace

bool DirectoryCache::Walk::Less::operator()(const std::string &left, const std::string &right) const
{
    return compareFolded(left, right) < 0;
}

DirectoryCache::Walk::Walk(DirectoryCache &cache, const QString &dir)
    : Gathering(cache), m_root(dir)
{
    const QString site = m_cache.m_session.currentSite();
    Transaction transaction(m_cache.m_database);
    m_hadRows = m_cache.mayHaveRowsFrom(dir);
    m_cache.m_marks.clearPrefix(site, dir);
    m_cache.m_marks.set(site, {dir, cutShort(), false});
    transaction.commit();
}

DirectoryCache::Walk::~Walk()
{
    if (m_ended)
        return;
    try {
        dropUnfinished(m_cache);
    } catch (const DbError &) {
        m_cache.m_site.clear(); // they go before the next use
    }
}

void DirectoryCache::Walk::dropUnfinished(DirectoryCache &cache)
{
    const QString site = cache.m_session.currentSite();
    for (const Incomplete &mark : cache.m_marks.under(site, QStringLiteral("/"))) {
        if (mark.why != cutShort())
            continue;
        Transaction transaction(cache.m_database);
        cache.dropPrefix(mark.dir);
        cache.m_marks.set(site, {mark.dir, notListed(), false});
        transaction.commit();
    }
}

bool DirectoryCache::Walk::mayList(const Pending &one)
{
    const bool tooDeep = one.depth > maxDepth;
    if (!tooDeep && !m_cache.m_frontEnd.cancelled() && m_cache.m_session.connected())
        return true;
    keep({one.dir, std::nullopt, tooDeep ? QStringLiteral("nested too deeply") : notListed(),
          false});
    return false;
}

void DirectoryCache::Walk::tell(const QString &dir)
{
    if (!m_cache.m_flags.unattendedTransfer)
        m_cache.m_frontEnd.setMessageLine(dir +
                                          QStringLiteral(" ﾌｫﾙﾀﾞとﾌｧｲﾙ情報を記録しています･･･"));
}

/// There is no mark below the root when the walk begins.
bool DirectoryCache::Walk::listedWhole(const QString &dir)
{
    m_rootIsWhole = m_rootIsWhole || dir == m_root;
    return true;
}

bool DirectoryCache::Walk::isTooLarge(const ClientLimits &limits) const
{
    return m_asked > limits.maxTreeFolders || m_allEntries > limits.maxTreeEntries;
}

void DirectoryCache::Walk::stop(const QString &why)
{
    store();
    m_rootIsWhole = false;
    m_cache.mark(m_root, why, false);
}

void DirectoryCache::Walk::ended()
{
    Transaction transaction(m_cache.m_database);
    store();
    dropOthers();
    if (m_rootIsWhole)
        m_cache.m_marks.clear(m_cache.m_session.currentSite(), m_root);
    transaction.commit();
    m_ended = true;
}

void DirectoryCache::Walk::storeAll(const std::vector<Heard> &all)
{
    Transaction transaction(m_cache.m_database);
    for (const Heard &heard : all)
        storeOne(heard);
    transaction.commit();
}

void DirectoryCache::Walk::storeOne(const Heard &heard)
{
    // Of two directories that the store takes for one, the second comes on top of the first.
    const bool first = m_hadRows && m_stored.insert(heard.dir.toStdString()).second;
    const bool same = first && heard.listing && m_cache.hasRowsOf(heard.dir, *heard.listing);
    if (first && !same)
        m_cache.dropRows(heard.dir);
    QStringList ignored;
    QString misfits;
    if (!heard.listing)
        m_cache.mark(heard.dir, heard.why, heard.refused);
    else if (same)
        m_cache.noteWhole(heard.dir, *heard.listing, {});
    else
        m_cache.storeListing(heard.dir, *heard.listing, ignored, misfits);
}

void DirectoryCache::Walk::dropOthers()
{
    if (!m_hadRows)
        return;
    for (const QString &dir : m_cache.directoriesFrom(m_root)) {
        if (m_stored.find(dir.toStdString()) == m_stored.end())
            m_cache.dropRows(dir);
    }
}

std::vector<DirectoryCache::Folder>
DirectoryCache::Walk::below(const QString &dir, const std::optional<Listing> &listing)
{
    static const std::vector<ListedEntry> none;
    const std::vector<ListedEntry> &entries = listing ? listing->entries : none;
    std::vector<Folder> folders;
    QSet<QString> names;
    for (const ListedEntry &entry : entries) {
        const auto before = names.size();
        names.insert(entry.name.toCaseFolded());
        if (names.size() == before || entry.kind != ListedEntry::Kind::Folder ||
            entry.name.size() > longestName)
            continue;
        folders.push_back({entry.name, entry.rawName});
        if (entry.rawName != entry.name.toLatin1())
            m_cache.learnRawPath(remoteChild(dir, entry.name), entry.rawName);
    }
    m_allEntries += static_cast<qint64>(entries.size());
    ++m_asked;
    if (m_cache.m_refreshReport)
        m_cache.m_refreshReport(m_asked);
    return folders;
}

} // namespace venlo
