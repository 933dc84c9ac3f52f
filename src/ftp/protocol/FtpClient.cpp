#include "ftp/protocol/FtpClient.h"

#include "ftp/protocol/FtpClientState.h"
#include "ftp/protocol/ServerAddress.h"

#include <cstdlib>

namespace venlo
{

using namespace std::chrono_literals;

namespace
{
constexpr int needsPassword = 331;
constexpr int needsAccount = 332;
constexpr auto quitGrace = 200ms;
constexpr int maxPreliminary = 16;
constexpr qint64 clockStep = 2; // seconds; FAT keeps even ones only

QByteArray firstWord(const QString &line)
{
    return line.trimmed().section(QLatin1Char(' '), 0, 0).toUpper().toLatin1();
}
} // namespace

Error errorOf(const Reply &reply)
{
    const ErrorClass kind = reply.transient() ? ErrorClass::Retry : ErrorClass::Refused;
    return Error{kind, reply.text(), reply.code};
}

FtpClient::State::State(Waiter &sharedWaiter, ClientLimits clientLimits)
    : waiter(sharedWaiter), limits(clientLimits), control(sharedWaiter, clientLimits.reply)
{
}

FtpClient::FtpClient(Waiter &waiter, ClientLimits limits)
    : m(std::make_unique<State>(waiter, limits))
{
}

FtpClient::~FtpClient()
{
    m->control.setTrace({});
    m->control.close();
}

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

Result<Reply> FtpClient::State::expectCompletion(const QByteArray &command)
{
    auto reply = control.command(command);
    if (reply && !reply.value().completion()) {
        if (reply.value().preliminary())
            return control.lost(QStringLiteral("out of step: ") + reply.value().text());
        return errorOf(reply.value());
    }
    return reply;
}

Error FtpClient::State::unreadable(const Reply &reply) const
{
    return Error{ErrorClass::Refused, control.withoutSecret(reply.text()), reply.code};
}

void FtpClient::close()
{
    if (m->control.isOpen() && m->control.outstanding() == 0) {
        if (m->control.send("QUIT"))
            (void)m->control.readReplyWithin(quitGrace);
    }
    m->control.close();
    m->directory.clear();
}

bool FtpClient::isOpen() const
{
    return m->control.isOpen();
}

Result<QString> FtpClient::printDirectory()
{
    const auto reply = m->expectCompletion("PWD");
    if (!reply)
        return reply.error();
    const auto path = parsePwdPath(reply.value());
    if (!path)
        return m->unreadable(reply.value());
    m->directory = *path;
    return m->codec.decode(*path);
}

Result<void> FtpClient::changeDirectory(const QByteArray &dir)
{
    if (m->control.isOpen() && !m->directory.isEmpty() && m->directory == dir)
        return {};
    // Until the server has confirmed it, where it stands is unknown: a command with a relative name
    // must not go by what was true before.
    m->directory.clear();
    const auto reply = m->expectCompletion("CWD " + dir);
    if (!reply)
        return reply.error();
    m->directory = dir;
    return {};
}

Result<void> FtpClient::rename(const QByteArray &from, const QByteArray &to)
{
    const auto reply = m->control.command("RNFR " + from);
    if (!reply)
        return reply.error();
    if (!reply.value().intermediate())
        return errorOf(reply.value());
    const auto done = m->expectCompletion("RNTO " + to);
    if (!done)
        return done.error();
    return {};
}

Result<void> FtpClient::removeFile(const QByteArray &nameOrPath)
{
    const auto reply = m->expectCompletion("DELE " + nameOrPath);
    if (!reply)
        return reply.error();
    return {};
}

Result<void> FtpClient::makeDirectory(const QByteArray &name)
{
    const auto reply = m->expectCompletion("MKD " + name);
    if (!reply)
        return reply.error();
    return {};
}

Result<void> FtpClient::removeDirectory(const QByteArray &name)
{
    const auto reply = m->expectCompletion("RMD " + name);
    if (!reply)
        return reply.error();
    return {};
}

Result<qint64> FtpClient::size(const QByteArray &name)
{
    const auto reply = m->expectCompletion("SIZE " + name);
    if (!reply)
        return reply.error();
    const auto bytes = State::sizeIn(reply.value());
    if (!bytes)
        return m->unreadable(reply.value());
    return *bytes;
}

std::optional<qint64> FtpClient::State::sizeIn(const Reply &reply)
{
    bool number = false;
    const qint64 bytes = reply.lines.value(0).trimmed().toLongLong(&number);
    if (!reply.completion() || !number || bytes < 0)
        return std::nullopt;
    return bytes;
}

Result<QDateTime> FtpClient::modificationTime(const QByteArray &name)
{
    const auto reply = m->expectCompletion("MDTM " + name);
    if (!reply)
        return reply.error();
    const QDateTime time = parseMdtm(reply.value());
    if (!time.isValid())
        return m->unreadable(reply.value());
    return time;
}

QByteArray FtpClient::State::setTimeCommand(const QByteArray &name, const QDateTime &utc) const
{
    const QByteArray digits = utc.toUTC().toString(QStringLiteral("yyyyMMddhhmmss")).toLatin1();
    return (features.contains("MFMT") ? "MFMT " : "MDTM ") + digits + ' ' + name;
}

Result<void> FtpClient::State::timeWasSet(const Reply &reply)
{
    if (reply.completion())
        return {};
    // A server that does not do this at all says so with 5xx; asking for every file would cost a
    // round trip each.
    setTimeRefused = setTimeRefused || reply.permanent();
    return errorOf(reply);
}

Result<void> FtpClient::setModificationTime(const QByteArray &name, const QDateTime &utc)
{
    const auto reply = m->control.command(m->setTimeCommand(name, utc));
    if (!reply)
        return reply.error();
    if (auto set = m->timeWasSet(reply.value()); !set)
        return set;
    if (m->features.contains("MFMT") || m->setTimeSeen)
        return {};
    const auto shown = modificationTime(name);
    if (!shown)
        return shown.error();
    m->setTimeSeen = true;
    if (std::abs(shown.value().secsTo(utc)) < clockStep)
        return {};
    m->setTimeRefused = true;
    return Error{ErrorClass::Refused, QStringLiteral("the server shows another time than was set")};
}

bool FtpClient::canSetTime() const
{
    return !m->setTimeRefused && (m->features.contains("MFMT") || m->features.contains("MDTM"));
}

bool FtpClient::listsByMlsd() const
{
    return !m->mlsdRefused && (m->features.contains("MLSD") || m->features.contains("MLST"));
}

bool FtpClient::hasSize() const
{
    return m->features.contains("SIZE");
}

bool FtpClient::hasMdtm() const
{
    return m->features.contains("MDTM");
}

bool FtpClient::activeUnusable() const
{
    return m->activeUnusable;
}

NameCodec &FtpClient::codec()
{
    return m->codec;
}

void FtpClient::setTrace(Trace trace)
{
    m->control.setTrace(std::move(trace));
}

QString FtpClient::withoutSecret(const QString &text) const
{
    return m->control.withoutSecret(text);
}

} // namespace venlo
