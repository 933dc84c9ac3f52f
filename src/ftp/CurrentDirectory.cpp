#include "ftp/CurrentDirectory.h"

#include "ftp/DirectoryCache.h"
#include "ftp/ErrorLog.h"
#include "ftp/Session.h"
#include "shared/Flags.h"
#include "shared/FrontEnd.h"
#include "shared/RemotePath.h"

namespace venlo
{

namespace
{
constexpr int attempts = 3;
}

CurrentDirectory::CurrentDirectory(Session &session, DirectoryCache &cache, FrontEnd &frontEnd,
                                   const Flags &flags)
    : m_session(session), m_cache(cache), m_frontEnd(frontEnd), m_flags(flags)
{
}

bool CurrentDirectory::change(const QString &dir)
{
    const auto changed = m_session.client().changeDirectory(m_cache.rawPath(dir));
    if (!changed) {
        m_lastError = changed.error();
        m_session.eventLog().note(QStringLiteral("CWD %1: %2").arg(dir, m_lastError.words));
    }
    return changed.ok();
}

void CurrentDirectory::sjCrntDir(const QString &dir, bool &ok)
{
    const bool create = ok;
    ok = false;
    if (!m_session.connected())
        return;
    if (m_cache.refusesPath(dir)) {
        m_lastError = {ErrorClass::Local, QStringLiteral("the path holds the server's name"), 0};
        m_session.errorLog().LogError(QStringLiteral("sjCrntDir Err: ") + dir);
        return;
    }
    const QString target = m_cache.normalised(dir);
    for (int attempt = 1; attempt <= attempts; ++attempt) {
        if (change(target)) {
            m_session.setCurrentRemoteDir(target);
            ok = true;
            return;
        }
        // The reconnects below may hide what the server said first.
        const Error said = m_lastError;
        if (said.kind == ErrorClass::Cancelled)
            return;
        bool made = false;
        if (create && said.kind != ErrorClass::Lost)
            sjMakePrDir(target, made);
        bool reconnected = true;
        m_session.ftReConect(reconnected);
        m_lastError = said;
        if (!reconnected)
            return;
    }
    m_session.errorLog().LogError(QStringLiteral("sjCrntDir Err: ") + target);
}

void CurrentDirectory::sjMakePrDir(const QString &dir, bool &ok)
{
    ok = false;
    QString parent;
    QString leaf;
    sjSplitPath(dir, parent, leaf);
    if (leaf.isEmpty() || !m_session.connected())
        return;
    if (!change(parent)) {
        if (m_lastError.kind != ErrorClass::Refused && m_lastError.kind != ErrorClass::Retry)
            return;
        bool parentMade = false;
        sjMakePrDir(parent, parentMade);
        if (!change(parent))
            return;
    }
    const auto made = m_session.client().makeDirectory(m_session.client().codec().encode(leaf));
    ok = made.ok();
    if (ok) {
        if (!m_flags.unattendedTransfer)
            m_frontEnd.addStatus(dir + QStringLiteral(" CreateDirectory･･･"));
        return;
    }
    m_session.errorLog().LogError(QStringLiteral("sjMakePrDir Err: ") + dir +
                                  QStringLiteral(" . ") + leaf +
                                  QStringLiteral(" CreateDirectory･･･"));
    m_session.eventLog().note(QStringLiteral("MKD %1: %2").arg(dir, made.error().words));
}

} // namespace venlo
