#include "ftp/DirectoryCacheWalk.h"

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
} // namespace

DirectoryCache::Walk::Walk(DirectoryCache &cache, const QString &dir)
    : Gathering(cache), m_root(dir)
{
    Transaction transaction(m_cache.m_database);
    m_cache.dropPrefix(dir);
    m_cache.m_marks.set(m_cache.m_session.currentSite(),
                        {dir, QStringLiteral("not listed"), false});
    transaction.commit();
}

bool DirectoryCache::Walk::mayList(const Pending &one)
{
    const bool tooDeep = one.depth > maxDepth;
    if (!tooDeep && !m_cache.m_frontEnd.cancelled() && m_cache.m_session.connected())
        return true;
    keep({one.dir, std::nullopt,
          tooDeep ? QStringLiteral("nested too deeply") : QStringLiteral("not listed"), false});
    return false;
}

void DirectoryCache::Walk::tell(const QString &dir)
{
    if (!m_cache.m_flags.unattendedTransfer)
        m_cache.m_frontEnd.setMessageLine(dir +
                                          QStringLiteral(" ﾌｫﾙﾀﾞとﾌｧｲﾙ情報を記録しています･･･"));
}

bool DirectoryCache::Walk::listedWhole(const QString &dir)
{
    m_rootIsWhole = m_rootIsWhole || dir == m_root;
    return dir == m_root;
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
    store();
    if (m_rootIsWhole)
        m_cache.m_marks.clear(m_cache.m_session.currentSite(), m_root);
}

void DirectoryCache::Walk::storeAll(const std::vector<Heard> &all)
{
    Transaction transaction(m_cache.m_database);
    QString ignored;
    for (const Heard &heard : all)
        storeOne(heard, ignored);
    transaction.commit();
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
