#include "ftp/RemoteLook.h"

#include "ftp/ErrorLog.h"
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

Result<bool> RemoteLook::shows(const QString &dir, const QString &name)
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
    return m_names.contains(name.toCaseFolded());
}

Result<void> RemoteLook::look(const QString &dir)
{
    m_names.clear();
    if (auto there = m_context.stepInto(dir); !there)
        return there.error().kind == ErrorClass::Refused ? Result<void>() : there;
    const auto listing = m_context.session.client().list();
    if (!listing)
        return listing.error();
    if (!listing.value().whole)
        return Error{ErrorClass::Retry, listing.value().why, 0};
    for (const ListedEntry &entry : listing.value().entries)
        m_names.insert(entry.name.toCaseFolded());
    return {};
}

} // namespace venlo
