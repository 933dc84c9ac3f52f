#pragma once

#include <set>
#include <string>

#include "ftp/DirectoryCacheGathering.h"

namespace venlo
{

/// A refresh of a subtree. Rows that are as the server shows them stay, whatever else begins with
/// the root's path is gone in the end. The root counts as incomplete until the walk has been
/// everywhere, so that a program that dies on the way leaves no tree that looks whole; the rows
/// that it left behind go before they are used (see dropUnfinished).
class DirectoryCache::Walk final : public Gathering
{
public:
    Walk(DirectoryCache &cache, const QString &dir);
    /// One that has not ended leaves no rows.
    ~Walk() override;

    /// Forgets the rows of refreshes that did not come to their end.
    static void dropUnfinished(DirectoryCache &cache);
    [[nodiscard]] bool mayList(const Pending &one) override;
    void tell(const QString &dir) override;
    [[nodiscard]] bool listedWhole(const QString &dir) override;
    /// The tree goes on beyond what is listed of it.
    [[nodiscard]] bool isTooLarge(const ClientLimits &limits) const;
    /// Nothing more will be listed; the root stays incomplete, and with it all that lies below.
    void stop(const QString &why);
    void ended();

private:
    void storeAll(const std::vector<Heard> &all) override;
    void storeOne(const Heard &heard);
    /// Forgets the rows of directories that the walk did not hear of.
    void dropOthers();
    /// Of names that differ in letter case only the first fits the cache.
    [[nodiscard]] std::vector<Folder> below(const QString &dir,
                                            const std::optional<Listing> &listing) override;

    /// As the store compares them.
    struct Less {
        bool operator()(const std::string &left, const std::string &right) const;
    };

    std::set<std::string, Less> m_stored; ///< directories, UTF-8; where it had rows
    qint64 m_allEntries = 0;
    QString m_root;
    bool m_hadRows = false; ///< when it began
    bool m_ended = false;
    int m_asked = 0; ///< directories that were listed, or could not be
    bool m_rootIsWhole = false;
};

} // namespace venlo
