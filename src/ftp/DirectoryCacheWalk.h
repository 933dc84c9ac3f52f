#pragma once

#include "ftp/DirectoryCacheGathering.h"

namespace venlo
{

/// A refresh of a subtree. Its root counts as incomplete from the moment its rows go until the walk
/// has been everywhere, so that a program that dies on the way leaves no tree that looks whole.
class DirectoryCache::Walk final : public Gathering
{
public:
    Walk(DirectoryCache &cache, const QString &dir);

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
    /// Of names that differ in letter case only the first fits the cache.
    [[nodiscard]] std::vector<Folder> below(const QString &dir,
                                            const std::optional<Listing> &listing) override;

    qint64 m_allEntries = 0;
    QString m_root;
    int m_asked = 0; ///< directories that were listed, or could not be
    bool m_rootIsWhole = false;
};

} // namespace venlo
