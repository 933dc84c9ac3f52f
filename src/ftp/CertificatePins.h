#pragma once

#include "ftp/protocol/ServerCertificate.h"

#include <QString>

namespace venlo
{

class EventLog;
class FrontEnd;
struct Flags;

/// Where the certificates that a person accepted are remembered. Owned by the program object.
class TrustStore
{
public:
    virtual ~TrustStore();

    /// The fingerprint remembered for "host:port", empty when there is none.
    [[nodiscard]] virtual QString pin(const QString &server) = 0;
    /// Remembers it at once: a crash right behind it must not ask again.
    virtual void remember(const QString &server, const QString &fingerprint) = 0;
};

/// Decides whether to log in to a server that showed a certificate: what the system vouches for
/// will do, what a person accepted before will too, and about the rest a person is asked. Under
/// "/b" nobody is: then a first certificate serves where the connection need not be a TLS one at
/// all, and everything else is refused. Owned by the session.
class CertificateJudge
{
public:
    CertificateJudge(FrontEnd &frontEnd, EventLog &eventLog);

    void use(TrustStore &store, const Flags &flags);
    /// A connect to a registered site: what was decided for the one before is forgotten.
    void begin(bool tlsIsAMust);
    /// Does not ask twice about one certificate before the next begin().
    [[nodiscard]] bool accepts(const ServerCertificate &shown);

private:
    [[nodiscard]] bool decide(const ServerCertificate &shown);
    [[nodiscard]] bool unattended(const ServerCertificate &shown, bool changed);
    void note(const ServerCertificate &shown, const QString &what) const;

    FrontEnd &m_frontEnd;
    EventLog &m_eventLog;
    TrustStore *m_store = nullptr;
    const Flags *m_flags = nullptr;
    bool m_tlsIsAMust = false;
    QString m_accepted; ///< fingerprint of this connect's certificate
    QString m_refused;
};

/// The question about a certificate that nobody vouches for; pinned is the fingerprint remembered
/// for its server, empty when it is the first one.
[[nodiscard]] QString certificateQuestion(const ServerCertificate &shown, const QString &pinned);

} // namespace venlo
