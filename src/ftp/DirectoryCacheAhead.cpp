// How the folders of an expanded node are looked into, many at a time.
#include "ftp/DirectoryCacheGathering.h"
#include "ftp/DirectoryCacheStat.h"
#include "shared/FrontEnd.h"

#include <algorithm>

namespace venlo
{

namespace
{
constexpr size_t directoriesAhead = 64;
/// Directories never listed, for which it is worth while to find out whether STAT can be trusted.
constexpr size_t enoughToTry = 4;
constexpr size_t enoughToAsk = 2; ///< once it is
} // namespace

/// Lists directories that were never listed, and none below them.
class DirectoryCache::LookAhead final : public Gathering
{
public:
    using Report = std::function<void(qsizetype)>;
    LookAhead(DirectoryCache &cache, const Report &report) : Gathering(cache), m_report(report) {}

    [[nodiscard]] bool mayList(const Pending & /*one*/) override
    {
        return !m_cache.m_frontEnd.cancelled() && m_cache.m_session.connected();
    }
    void heard(qsizetype directories) override
    {
        if (m_report)
            m_report(directories);
    }
    [[nodiscard]] bool wasListed(const QString &dir) const { return m_dirs.contains(dir); }
    /// Words about entries that do not fit, of the last directory with such.
    [[nodiscard]] QString ended()
    {
        store();
        return m_misfits;
    }

private:
    void storeAll(const std::vector<Heard> &all) override
    {
        m_cache.grouped([&] {
            for (const Heard &one : all) {
                QStringList ignored;
                QString misfits;
                if (one.listing)
                    m_cache.storeListing(one.dir, *one.listing, ignored, misfits);
                else
                    m_cache.mark(one.dir, one.why, one.refused);
                if (!misfits.isEmpty())
                    m_misfits = misfits;
            }
        });
    }
    [[nodiscard]] std::vector<Folder> below(const QString &dir,
                                            const std::optional<Listing> & /*listing*/) override
    {
        m_dirs.insert(dir);
        return {};
    }

    const Report &m_report;
    QSet<QString> m_dirs; ///< that were listed, or could not be
    QString m_misfits;
};

std::vector<std::optional<bool>>
DirectoryCache::caHasSubs(const QStringList &dirs, const std::function<void(qsizetype)> &heard,
                          QString &misfits)
{
    misfits.clear();
    noticeSite();
    std::vector<std::optional<bool>> has(static_cast<size_t>(dirs.size()));
    if (m_stat->trust() == StatTrust::Trust::No || !m_session.connected() || m_frontEnd.cancelled())
        return has;
    const bool trusted = m_stat->trust() == StatTrust::Trust::Yes;
    has.resize(std::min(has.size(), trusted ? directoriesAhead : enoughToTry));
    std::vector<Pending> pending; // the first uppermost
    for (size_t i = has.size(); i-- > 0;) {
        const QString dir = normalised(dirs.at(static_cast<qsizetype>(i)));
        if (isLoaded(dir))
            has[i] = hasSubFolderRows(dir);
        else
            pending.push_back({dir, {}, 0});
    }
    if (pending.size() < (trusted ? enoughToAsk : enoughToTry))
        return has;
    LookAhead ahead(*this, heard);
    if (trusted) {
        (void)m_stat->list(pending);
    } else {
        const Pending first = std::move(pending.back());
        pending.pop_back();
        std::vector<Pending> none;
        listOne(first, none);
    }
    misfits = ahead.ended();
    for (size_t i = 0; i < has.size(); ++i) {
        const QString dir = normalised(dirs.at(static_cast<qsizetype>(i)));
        if (ahead.wasListed(dir))
            has[i] = hasSubFolderRows(dir);
        else if (i > 0 && !pending.empty() && pending.back().dir == dir)
            has.resize(i); // it was not asked for, and those behind it
    }
    return has;
}

} // namespace venlo
