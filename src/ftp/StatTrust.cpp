#include "ftp/StatTrust.h"

#include <QHash>

#include <algorithm>

namespace venlo
{

namespace
{
constexpr int mostFailures = 3;
constexpr qint64 closeEnough = 60; ///< days; daylight-saving time lasts longer, and so does its end

bool isDotName(const ListedEntry &entry)
{
    return entry.rawName.startsWith('.');
}

/// What both ways must agree on, by name.
QHash<QByteArray, qint64> factsOf(const Listing &listing)
{
    constexpr qint64 folder = -1;
    QHash<QByteArray, qint64> facts;
    for (const ListedEntry &entry : listing.entries) {
        if (!isDotName(entry))
            facts.insert(entry.rawName,
                         entry.kind == ListedEntry::Kind::Folder ? folder : entry.size);
    }
    return facts;
}

bool hasDotNames(const Listing &listing)
{
    return std::any_of(listing.entries.begin(), listing.entries.end(), isDotName);
}
} // namespace

void StatTrust::compare(const Listing &ordinary, const std::optional<Listing> &byStat)
{
    if (m_trust == Trust::No || !ordinary.whole)
        return;
    if (!byStat || factsOf(ordinary) != factsOf(*byStat)) {
        if (++m_failures >= mostFailures || m_trust == Trust::Yes)
            m_trust = Trust::No;
        return;
    }
    if (hasDotNames(*byStat))
        m_dots = hasDotNames(ordinary) ? Dots::Shown : Dots::Hidden;
    if (!factsOf(ordinary).isEmpty())
        m_trust = Trust::Yes;
}

std::optional<Listing> StatTrust::asOrdinary(Listing byStat, bool mlsd) const
{
    const bool coarse =
        std::any_of(byStat.entries.begin(), byStat.entries.end(), [](const ListedEntry &entry) {
            return entry.kind != ListedEntry::Kind::Folder &&
                   (entry.dayOnly || !entry.time.isValid());
        });
    if (mlsd && coarse)
        return std::nullopt;
    const Dots dots = mlsd ? Dots::Hidden : m_dots;
    if (dots == Dots::Unknown && hasDotNames(byStat))
        return std::nullopt;
    if (dots == Dots::Hidden)
        std::erase_if(byStat.entries, isDotName);
    return byStat;
}

std::vector<ListedEntry> StatTrust::samples(std::vector<ListedEntry> files)
{
    std::sort(files.begin(), files.end(),
              [](const ListedEntry &a, const ListedEntry &b) { return a.time < b.time; });
    std::vector<ListedEntry> chosen;
    for (size_t i = 0; i < files.size(); ++i) {
        const bool last = i + 1 == files.size();
        if (chosen.empty() || last ||
            chosen.back().time.daysTo(files.at(i + 1).time) >= closeEnough)
            chosen.push_back(files.at(i));
    }
    return chosen;
}

void StatTrust::addSample(const QDateTime &wallClock)
{
    m_samples.insert(std::upper_bound(m_samples.begin(), m_samples.end(), wallClock), wallClock);
}

bool StatTrust::covers(const QDateTime &wallClock) const
{
    const auto after = std::lower_bound(m_samples.begin(), m_samples.end(), wallClock);
    if (after == m_samples.end())
        return false;
    if (*after == wallClock)
        return true;
    return after != m_samples.begin() && std::prev(after)->daysTo(*after) <= closeEnough;
}

} // namespace venlo
