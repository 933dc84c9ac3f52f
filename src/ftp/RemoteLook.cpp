#include "ftp/RemoteLook.h"

#include "ftp/ErrorLog.h"
#include "ftp/ListingTime.h"
#include "ftp/Session.h"

#include <chrono>

namespace venlo
{

namespace
{
using namespace std::chrono_literals;
/// How long a listing counts: many rows of one directory follow each other.
constexpr auto freshness = 20s;
} // namespace

Result<std::optional<SeenEntry>> RemoteLook::entry(const QString &dir, const QString &name)
{
    if (dir != m_dir || m_fresh.hasExpired() || m_connects != m_context.session.connects()) {
        m_fresh = QDeadlineTimer(0);
        const auto looked =
            m_context.fiveAttempts(dir, [this, &dir]() -> Result<void> { return look(dir); });
        if (looked.end == OperationContext::End::GivenUp)
            m_context.session.errorLog().LogError(QStringLiteral("FtpFindFirstFile"));
        if (looked.end != OperationContext::End::Done)
            return looked.error;
        m_dir = dir;
        m_connects = m_context.session.connects();
        m_fresh = QDeadlineTimer(freshness);
    }
    const auto seen = m_entries.constFind(name.toCaseFolded());
    return seen == m_entries.constEnd() ? std::nullopt : std::optional<SeenEntry>(*seen);
}

Result<void> RemoteLook::look(const QString &dir)
{
    m_entries.clear();
    if (auto there = m_context.stepInto(dir); !there)
        return there.error().kind == ErrorClass::Refused ? Result<void>() : there;
    const auto listing = m_context.session.client().list();
    if (!listing)
        return listing.error();
    if (!listing.value().whole)
        return Error{ErrorClass::Retry, listing.value().why, 0};
    for (const ListedEntry &entry : listing.value().entries) {
        const QDateTime clock = wallClockOf(entry, m_context.session.listOffset);
        m_entries.insert(entry.name.toCaseFolded(), {entry.kind == ListedEntry::Kind::Folder,
                                                     listingDay(clock, presentLocalOffset()),
                                                     entry.dayOnly, cachedSizeOf(entry.size)});
    }
    return {};
}

} // namespace venlo
