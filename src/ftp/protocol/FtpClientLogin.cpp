// How FtpClient connects, logs in and learns what the server can do.
#include "ftp/protocol/FtpClient.h"

#include "ftp/protocol/FtpClientState.h"
#include "ftp/protocol/ServerAddress.h"

namespace venlo
{

namespace
{
constexpr int needsPassword = 331;
constexpr int needsAccount = 332;
constexpr int maxPreliminary = 16;

QByteArray firstWord(const QString &line)
{
    return line.trimmed().section(QLatin1Char(' '), 0, 0).toUpper().toLatin1();
}
} // namespace

Result<void> FtpClient::open(const ConnectOptions &options)
{
    const auto address = ServerAddress::parse(options.server);
    if (!address)
        return address.error();
    const auto proxy = parseProxy(options.proxy);
    if (!proxy)
        return proxy.error();
    for (const QString &secret : {options.user, options.password}) {
        if (secret.contains(QLatin1Char('\r')) || secret.contains(QLatin1Char('\n')) ||
            secret.contains(QChar(0)))
            return Error{ErrorClass::Local, QStringLiteral("a name or password holds a line end"),
                         0};
    }
    ServerAddress target = address.value();
    if (!QSslSocket::supportsSsl()) { // a machine without an OpenSSL that fits
        if (target.tls == TlsUse::Must || target.tls == TlsUse::Implicit)
            return Error{ErrorClass::Local, QStringLiteral("no TLS on this machine"), 0};
        target.tls = TlsUse::Never;
    }
    m->control.setSecret(options.password);
    m->proxy = proxy.value();
    if (target.tls == TlsUse::Offered && m->tlsUsed)
        target.tls = TlsUse::Must; // refused now, it was somebody else who answered
    else if (target.tls == TlsUse::Offered && m->tlsRefused)
        target.tls = TlsUse::Never;
    auto result = m->connectTo(target, options);
    if (!result && m->tlsBroke && target.tls == TlsUse::Offered) {
        m->control.trace(QStringLiteral("! TLS does not work with this server: without it"));
        m->tlsRefused = true;
        target.tls = TlsUse::Never;
        result = m->connectTo(target, options);
    }
    return result;
}

Result<void> FtpClient::State::connectTo(const ServerAddress &address,
                                         const ConnectOptions &options)
{
    control.close();
    directory.clear();
    nextPort = 0;
    slowedDown = false;
    burstEnd = QDeadlineTimer();
    protectsData = false;
    tlsBroke = false;
    passive = options.passive || proxy.type() != QNetworkProxy::NoProxy;
    if (auto connected = control.connectTo(address.host, address.port, proxy, limits.connect);
        !connected)
        return connected;
    auto result = login(address.tls, options);
    if (!result)
        control.close();
    return result;
}

Result<void> FtpClient::State::greet()
{
    auto greeting = control.readReply();
    for (int preliminary = 0; greeting && greeting.value().preliminary();) {
        if (++preliminary > maxPreliminary)
            return control.lost(QStringLiteral("preliminary replies without end"));
        control.expectOneMore(); // 120: ready in nnn minutes
        greeting = control.readReply();
    }
    if (!greeting)
        return greeting.error();
    if (!greeting.value().completion())
        return errorOf(greeting.value());
    return {};
}

Result<void> FtpClient::State::authenticate(const ConnectOptions &login)
{
    // Always UTF-8: what the names of the server are in is known at a later login only, and a
    // password must not depend on that.
    auto reply = control.command("USER " + login.user.toUtf8());
    if (reply && reply.value().code == needsPassword)
        reply = control.command("PASS " + login.password.toUtf8(), "PASS ****");
    if (!reply)
        return reply.error();
    if (reply.value().code == needsAccount || !reply.value().completion())
        return Error{ErrorClass::Refused, reply.value().text(), reply.value().code};
    return {};
}

Result<void> FtpClient::State::login(TlsUse use, const ConnectOptions &options)
{
    if (use == TlsUse::Implicit) {
        if (auto secured = secure(options.accepts); !secured)
            return secured;
    }
    if (auto greeted = greet(); !greeted)
        return greeted;
    if (use == TlsUse::Offered || use == TlsUse::Must) {
        if (auto asked = askForTls(use, options.accepts); !asked)
            return asked;
    }
    const bool tls = control.encrypted();
    auto protection = tls ? protectData() : Protection::Refused;
    if (!protection)
        return protection.error();
    if (auto known = authenticate(options); !known)
        return known;
    if (protection.value() == Protection::AfterLogin)
        protection = protectData();
    if (!protection)
        return protection.error();
    if (tls) {
        if (auto settled = settleProtection(use, protection.value()); !settled)
            return settled;
    }
    if (auto learned = learnFeatures(); !learned)
        return learned;
    const auto type = control.command("TYPE I");
    if (!type)
        return type.error();
    if (!type.value().completion())
        return errorOf(type.value());
    return {};
}

Result<void> FtpClient::State::learnFeatures()
{
    const auto reply = control.command("FEAT");
    if (!reply)
        return reply.error();
    features.clear();
    if (reply.value().completion()) {
        const QStringList &lines = reply.value().lines;
        for (qsizetype i = 1; i + 1 < lines.size(); ++i)
            features.insert(firstWord(lines.at(i)));
    }
    const bool utf8 = features.contains("UTF8");
    if (!knowsServer)
        codec.reset(utf8); // a later login keeps what the names have shown
    knowsServer = true;
    if (!utf8)
        return {};
    // Some servers speak UTF-8 only once told to (RFC 2640, 3); a refusal changes nothing.
    const auto told = control.command("OPTS UTF8 ON");
    if (!told)
        return told.error();
    return {};
}

} // namespace venlo
