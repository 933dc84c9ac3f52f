#include "ftp/CertificatePins.h"

#include "ftp/ErrorLog.h"
#include "shared/Flags.h"
#include "shared/FrontEnd.h"

namespace venlo
{

TrustStore::~TrustStore() = default;

CertificateJudge::CertificateJudge(FrontEnd &frontEnd, EventLog &eventLog)
    : m_frontEnd(frontEnd), m_eventLog(eventLog)
{
}

void CertificateJudge::use(TrustStore &store, const Flags &flags)
{
    m_store = &store;
    m_flags = &flags;
}

void CertificateJudge::begin(bool tlsIsAMust)
{
    m_tlsIsAMust = tlsIsAMust;
    m_accepted.clear();
    m_refused.clear();
}

bool CertificateJudge::accepts(const ServerCertificate &shown)
{
    const QString fingerprint = shown.fingerprint();
    if (!shown.certificate.isNull() && fingerprint == m_accepted)
        return true;
    if (shown.certificate.isNull() || fingerprint == m_refused)
        return false;
    const bool accepted = shown.verified() || decide(shown);
    (accepted ? m_accepted : m_refused) = fingerprint;
    return accepted;
}

bool CertificateJudge::decide(const ServerCertificate &shown)
{
    const QString pinned = m_store != nullptr ? m_store->pin(shown.server) : QString();
    if (pinned == shown.fingerprint())
        return true;
    // One that takes the place of this connect's own is as suspicious as a changed pin.
    const QString before = pinned.isEmpty() ? m_accepted : pinned;
    if (m_flags != nullptr && m_flags->batch)
        return unattended(shown, !before.isEmpty());
    if (!m_frontEnd.question(certificateQuestion(shown, before))) {
        note(shown, QStringLiteral("certificate refused"));
        return false;
    }
    note(shown, QStringLiteral("certificate accepted and remembered"));
    if (m_store != nullptr)
        m_store->remember(shown.server, shown.fingerprint());
    return true;
}

bool CertificateJudge::unattended(const ServerCertificate &shown, bool changed)
{
    if (changed)
        note(shown, QStringLiteral("certificate refused, it is not the one remembered"));
    else if (m_tlsIsAMust)
        note(shown, QStringLiteral("certificate refused, nothing vouches for it"));
    else
        note(shown, QStringLiteral("certificate used without anything that vouches for it"));
    return !changed && !m_tlsIsAMust;
}

void CertificateJudge::note(const ServerCertificate &shown, const QString &what) const
{
    QStringList problems;
    for (const QSslError &error : shown.problems)
        problems.append(error.errorString());
    m_eventLog.note(shown.server + QStringLiteral(": ") + what + QStringLiteral(" (") +
                    problems.join(QStringLiteral("; ")) + QStringLiteral("), SHA-256 ") +
                    shown.fingerprint());
}

} // namespace venlo
