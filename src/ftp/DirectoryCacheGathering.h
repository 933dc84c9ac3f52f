#pragma once

#include <optional>
#include <vector>

#include <QSet>
#include <QStringList>

#include "ftp/DirectoryCache.h"

namespace venlo
{

/// Many directories that are listed one behind the other or at a time: keeps what was heard of them
/// until it is stored with others. The cache has at most one in hand, and it lasts as long.
class DirectoryCache::Gathering
{
public:
    virtual ~Gathering() { m_cache.m_gathering = nullptr; }
    Gathering(const Gathering &) = delete;
    Gathering &operator=(const Gathering &) = delete;

    /// False when a directory is not to be listed any more, after that was noted.
    [[nodiscard]] virtual bool mayList(const Pending &one) = 0;
    /// A directory is about to be taken in.
    virtual void tell(const QString & /*dir*/) {}
    /// So many of those that were asked for at a time are answered.
    virtual void heard(qsizetype /*directories*/) {}
    /// A directory was listed whole; true where its mark is seen to otherwise.
    [[nodiscard]] virtual bool listedWhole(const QString & /*dir*/) { return false; }
    /// Keeps what the server said of a directory; the sub-folders to go on with.
    [[nodiscard]] std::vector<Folder> take(const QString &dir, std::optional<Listing> listing,
                                           const QString &why, bool refused);

protected:
    struct Heard {
        QString dir;
        std::optional<Listing> listing;
        QString why;
        bool refused = false;
    };
    /// What is stored at a time: a commit takes the disk several turns, and what waits for it
    /// memory.
    static constexpr size_t entriesAtATime = 5000;
    static constexpr size_t listingsAtATime = 500;

    explicit Gathering(DirectoryCache &cache) : m_cache(cache) { cache.m_gathering = this; }
    /// To be stored with others; mind that each commit waits for the disk.
    void keep(Heard heard);
    void store();
    virtual void storeAll(const std::vector<Heard> &all) = 0;
    /// A directory was listed, or could not be; those below it that are to be listed, too.
    [[nodiscard]] virtual std::vector<Folder> below(const QString &dir,
                                                    const std::optional<Listing> &listing) = 0;

    DirectoryCache &m_cache;

private:
    std::vector<Heard> m_heard;
    size_t m_entries = 0; ///< in what was heard
};

} // namespace venlo
