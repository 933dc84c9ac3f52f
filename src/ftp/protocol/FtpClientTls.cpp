// The TLS half of FtpClient: AUTH, the handshake and the protection of data connections (RFC 4217).
#include "ftp/protocol/FtpClientState.h"

namespace venlo
{

namespace
{
constexpr int authAccepted = 234;
constexpr int badSequence = 503;
constexpr int notLoggedIn = 530;
constexpr int cannotOpenData = 425;
constexpr int unsuitableTls = 522; ///< RFC 4217, 10.2
} // namespace

Result<void> FtpClient::State::askForTls(TlsUse use, const CertificateTest &accepts)
{
    const auto reply = control.command("AUTH TLS");
    if (!reply) {
        // Some servers end the connection at a command they do not know.
        tlsBroke = reply.error().kind == ErrorClass::Lost && reply.error().replyCode == 0 &&
                   control.endedByPeer();
        return reply.error();
    }
    if (reply.value().code == authAccepted)
        return secure(accepts);
    if (use == TlsUse::Must)
        return Error{ErrorClass::Refused, reply.value().text(), reply.value().code};
    tlsRefused = true;
    return {};
}

Result<void> FtpClient::State::secure(const CertificateTest &accepts)
{
    const auto shown = control.startTls(limits.connect, only12 ? ControlChannel::TlsRange::Only12
                                                               : ControlChannel::TlsRange::From12);
    if (!shown) {
        // A wait that was over says nothing about what the server can do.
        tlsBroke = shown.error().kind == ErrorClass::Lost && control.endedByPeer();
        return shown.error();
    }
    const bool accepted = accepts ? accepts(shown.value()) : shown.value().verified();
    if (!accepted) {
        control.close();
        return Error{ErrorClass::Refused,
                     QStringLiteral("certificate not accepted: ") + shown.value().fingerprint()};
    }
    certificate = shown.value().certificate;
    return {};
}

Result<FtpClient::State::Protection> FtpClient::State::protectData()
{
    const auto size = control.command("PBSZ 0");
    if (!size)
        return size.error();
    const auto reply = control.command("PROT P");
    if (!reply)
        return reply.error();
    if (reply.value().completion())
        return Protection::Agreed;
    const bool later = reply.value().code == notLoggedIn || reply.value().code == badSequence;
    return later ? Protection::AfterLogin : Protection::Refused;
}

Result<void> FtpClient::State::settleProtection(TlsUse use, Protection agreed)
{
    protectsData = agreed == Protection::Agreed;
    const bool must = use == TlsUse::Must || use == TlsUse::Implicit;
    if (!protectsData && must)
        return Error{ErrorClass::Refused, QStringLiteral("the server protects no data connection"),
                     0};
    if (!protectsData)
        control.trace(QStringLiteral("! data connections stay without TLS"));
    tlsUsed = tlsUsed || protectsData;
    return {};
}

bool FtpClient::State::resumesOnly12(const Transfer &transfer)
{
    if (!protectsData || only12 || dataWorked || control.tlsVersion() != QLatin1String("TLSv1.3"))
        return false;
    const int code = transfer.final_ ? transfer.final_->code : 0;
    only12 = code == unsuitableTls || code == cannotOpenData;
    return only12;
}

QString FtpClient::security() const
{
    return m->protectsData ? m->control.tlsVersion() : QString();
}

} // namespace venlo
