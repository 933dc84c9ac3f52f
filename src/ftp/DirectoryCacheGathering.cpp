#include "ftp/DirectoryCacheGathering.h"

namespace venlo
{

std::vector<DirectoryCache::Folder> DirectoryCache::Gathering::take(const QString &dir,
                                                                    std::optional<Listing> listing,
                                                                    const QString &why,
                                                                    bool refused)
{
    std::vector<Folder> folders = below(dir, listing);
    keep({dir, std::move(listing), why, refused});
    return folders;
}

void DirectoryCache::Gathering::keep(Heard heard)
{
    m_entries += heard.listing ? heard.listing->entries.size() : 0;
    m_heard.push_back(std::move(heard));
    if (m_heard.size() >= listingsAtATime || m_entries >= entriesAtATime)
        store();
}

void DirectoryCache::Gathering::store()
{
    storeAll(m_heard);
    m_heard.clear();
    m_entries = 0;
}

} // namespace venlo
