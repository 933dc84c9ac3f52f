#include "ftp/CurrentDirectory.h"

#include "ftp/DirectoryCache.h"
#include "ftp/ErrorLog.h"
#include "ftp/Session.h"
#include "shared/Flags.h"
#include "shared/FrontEnd.h"
#include "shared/RemotePath.h"

#include <QStringList>

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

Result<QByteArray> CurrentDirectory::lookUp(const QString &parent, const QString &leaf)
{
    FtpClient &client = m_session.client();
    if (auto there = client.changeDirectory(m_cache.rawPath(parent)); !there)
        return there.error();
    const auto listing = client.list();
    if (!listing)
        return listing.error();
    for (const ListedEntry &entry : listing.value().entries) {
        if (entry.name == leaf)
            return entry.rawName;
    }
    if (!listing.value().whole)
        return Error{ErrorClass::Retry, listing.value().why, 0};
    return QByteArray();
}

Result<void> CurrentDirectory::learn(const QString &dir)
{
    QString parent = QStringLiteral("/");
    for (const QString &leaf : dir.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        const QString path = remoteChild(parent, leaf);
        if (!m_cache.knowsRawPath(path)) {
            const auto raw = lookUp(parent, leaf);
            // What the server does not show, it may still let in.
            if (!raw)
                return raw.error().kind == ErrorClass::Refused ? Result<void>()
                                                               : Result<void>(raw.error());
            if (raw.value().isEmpty())
                return {};
            m_cache.learnRawPath(path, raw.value());
        }
        parent = path;
    }
    return {};
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
    bool known = m_cache.knowsRawPath(target);
    for (int attempt = 1; attempt <= attempts; ++attempt) {
        bool there = change(target);
        if (!there && !known && m_lastError.kind == ErrorClass::Refused) {
            const Error refusal = m_lastError;
            known = learn(target).ok();
            there = known && m_cache.knowsRawPath(target) && change(target);
            if (!there)
                m_lastError = refusal;
        }
        if (there) {
            m_session.setCurrentRemoteDir(target);
            ok = true;
            return;
        }
        // The reconnects below may hide what the server said first.
        const Error said = m_lastError;
        if (said.kind == ErrorClass::Cancelled)
            return;
        bool made = false;
        if (create && known && said.kind != ErrorClass::Lost)
            makeChain(target, made);
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
    if (m_session.connected() && (m_cache.knowsRawPath(dir) || learn(dir).ok()))
        makeChain(dir, ok);
}

void CurrentDirectory::makeChain(const QString &dir, bool &ok)
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
        makeChain(parent, parentMade);
        if (!change(parent))
            return;
    }
    const auto made = m_session.client().makeDirectory(m_cache.rawName(parent, leaf));
    ok = made.ok();
    if (ok) {
        if (!m_flags.unattendedTransfer) {
            const QString text = dir + QStringLiteral(" CreateDirectory･･･");
            m_frontEnd.setMessageLine(text);
            m_frontEnd.addStatus(text);
        }
        return;
    }
    m_session.errorLog().LogError(QStringLiteral("sjMakePrDir Err: ") + dir +
                                  QStringLiteral(" . ") + leaf +
                                  QStringLiteral(" CreateDirectory･･･"));
    m_session.eventLog().note(QStringLiteral("MKD %1: %2").arg(dir, made.error().words));
}

} // namespace venlo
