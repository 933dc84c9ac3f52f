#pragma once

#include <optional>
#include <utility>
#include <vector>

#include <QSet>
#include <QStringList>

#include "ftp/DirectoryCache.h"
#include "shared/RemotePath.h"

namespace venlo
{

/// A walk over a subtree. Its root counts as incomplete from the moment its rows go until the walk
/// has been everywhere, so that a program that dies on the way leaves no tree that looks whole.
class DirectoryCache::Walk
{
    /// What is stored at a time: a commit takes the disk several turns, and what waits for it
    /// memory.
    static constexpr size_t entriesAtATime = 5000;
    static constexpr size_t listingsAtATime = 500;
    /// Characters; a folder of a longer name has no row, and is not looked into.
    static constexpr qsizetype longestName = 255;

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
    [[nodiscard]] std::vector<Folder> take(const QString &dir, std::optional<Listing> listing,
                                           const QString &why, bool refused)
    {
        std::vector<Folder> folders;
        QSet<QString> names;
        static const std::vector<ListedEntry> none;
        for (const ListedEntry &entry : listing ? listing->entries : none) {
            const auto before = names.size();
            names.insert(entry.name.toCaseFolded());
            if (names.size() == before || entry.kind != ListedEntry::Kind::Folder ||
                entry.name.size() > longestName)
                continue;
            folders.push_back({entry.name, entry.rawName});
            if (entry.rawName != entry.name.toLatin1())
                m_cache.learnRawPath(remoteChild(dir, entry.name), entry.rawName);
        }
        m_entries += listing ? listing->entries.size() : 0;
        m_allEntries += listing ? static_cast<qint64>(listing->entries.size()) : 0;
        m_heard.push_back({dir, std::move(listing), why, refused});
        ++m_asked;
        if (m_cache.m_refreshReport)
            m_cache.m_refreshReport(m_asked);
        if (m_heard.size() >= listingsAtATime || m_entries >= entriesAtATime)
            store();
        return folders;
    }
    /// Marks a directory that will not be listed, with others: each mark alone would wait for the
    /// disk.
    void leaveOut(const QString &dir, const QString &why)
    {
        m_heard.push_back({dir, std::nullopt, why, false});
        if (m_heard.size() >= listingsAtATime)
            store();
    }
    /// The tree goes on beyond what is listed of it.
    [[nodiscard]] bool isTooLarge(const ClientLimits &limits) const
    {
        return m_asked > limits.maxTreeFolders || m_allEntries > limits.maxTreeEntries;
    }
    /// Nothing more will be listed; the root stays incomplete, and with it all that lies below.
    void stop(const QString &why)
    {
        store();
        m_rootIsWhole = false;
        m_cache.mark(m_root, why, false);
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
        m_entries = 0;
    }

    DirectoryCache &m_cache;
    std::vector<Heard> m_heard;
    size_t m_entries = 0; ///< in what was heard
    qint64 m_allEntries = 0;
    QString m_root;
    int m_asked = 0; ///< directories that were listed, or could not be
    bool m_rootIsWhole = false;
};

} // namespace venlo
