#include "ftp/StatTrust.h"

#include <QHash>

#include <algorithm>

namespace venlo
{

namespace
{
constexpr int mostFailures = 3;
/// Days. Daylight-saving time lasts longer, and so does the time between; the shortest that a zone
/// keeps another clock is the month of fasting, 29 days.
constexpr qint64 closeEnough = 28;

bool isDotName(const ListedEntry &entry)
{
    return entry.rawName.startsWith('.');
}

bool isLink(const ListedEntry &entry)
{
    return entry.kind == ListedEntry::Kind::Link;
}

bool isCoarse(const ListedEntry &entry)
{
    return entry.dayOnly || !entry.time.isValid();
}

/// What both ways must agree on about a name.
struct Facts {
    bool folder = false;
    qint64 size = 0;
    QDateTime time;
    bool dayOnly = false;
    bool operator==(const Facts &) const = default;
};

/// wallClock: both show the same clock.
QHash<QByteArray, Facts> factsOf(const Listing &listing, bool wallClock, bool dots)
{
    QHash<QByteArray, Facts> facts;
    for (const ListedEntry &entry : listing.entries) {
        if (!dots && isDotName(entry))
            continue;
        const bool folder = entry.kind == ListedEntry::Kind::Folder;
        facts.insert(entry.rawName,
                     {folder, folder ? 0 : entry.size, wallClock ? entry.time : QDateTime(),
                      wallClock && entry.dayOnly});
    }
    return facts;
}

bool has(const Listing &listing, bool (*test)(const ListedEntry &))
{
    return std::any_of(listing.entries.begin(), listing.entries.end(), test);
}
} // namespace

void StatTrust::compare(const Listing &ordinary, const std::optional<Listing> &byStat)
{
    if (m_trust == Trust::No || !ordinary.whole)
        return;
    const bool mlsd = ordinary.fromMlsd;
    if (mlsd && byStat && has(*byStat, isLink))
        return; // of which each shows something else
    const bool dots = has(ordinary, isDotName);
    const auto facts = factsOf(ordinary, !mlsd, dots);
    if (byStat ? facts != factsOf(*byStat, !mlsd, dots) : ++m_failures >= mostFailures)
        m_trust = Trust::No;
    if (!byStat || m_trust == Trust::No)
        return;
    m_proven = std::max(m_proven, byStat->entries.size());
    if (has(*byStat, isDotName))
        m_dots = dots ? Dots::Shown : Dots::Hidden;
    if (!facts.isEmpty())
        m_trust = Trust::Yes;
}

bool StatTrust::canBeOrdinary(const Listing &byStat, bool mlsd) const
{
    if (!mlsd)
        return m_dots != Dots::Unknown || !has(byStat, isDotName);
    return std::none_of(byStat.entries.begin(), byStat.entries.end(), [](const ListedEntry &entry) {
        return !isDotName(entry) && (isCoarse(entry) || isLink(entry));
    });
}

std::optional<Listing> StatTrust::asOrdinary(Listing byStat, bool mlsd) const
{
    if (byStat.entries.size() > m_proven || !canBeOrdinary(byStat, mlsd))
        return std::nullopt;
    if (mlsd || m_dots == Dots::Hidden)
        std::erase_if(byStat.entries, isDotName);
    return byStat;
}

std::vector<ListedEntry> StatTrust::samples(std::vector<ListedEntry> entries)
{
    std::sort(entries.begin(), entries.end(),
              [](const ListedEntry &a, const ListedEntry &b) { return a.time < b.time; });
    std::vector<ListedEntry> chosen;
    for (size_t i = 0; i < entries.size(); ++i) {
        const bool last = i + 1 == entries.size();
        if (chosen.empty() || last ||
            chosen.back().time.daysTo(entries.at(i + 1).time) >= closeEnough)
            chosen.push_back(entries.at(i));
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
