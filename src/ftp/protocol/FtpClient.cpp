#include "ftp/protocol/FtpClient.h"

#include "ftp/protocol/FtpClientState.h"
#include "ftp/protocol/TimeValue.h"

#include <cstdlib>

namespace venlo
{

using namespace std::chrono_literals;

namespace
{
constexpr auto quitGrace = 200ms;
constexpr qint64 clockStep = 2; // seconds; FAT keeps even ones only
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
    m->control.waitForStragglers(0ms); // whose the last reply is matters no more
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

Result<void> FtpClient::makeAndEnter(const QByteArray &path, bool &made)
{
    using Kind = State::Follower::Kind;
    std::vector<State::Follower> steps{{Kind::Make, "MKD " + path}, {Kind::Enter, "CWD " + path}};
    m->directory.clear();
    const auto followed = m->follow(steps);
    const auto &making = steps.at(0).reply;
    made = making && making->completion();
    if (!followed)
        return followed;
    const Reply &entering = *steps.at(1).reply;
    if (!entering.completion())
        return errorOf(made ? entering : *making);
    m->directory = path;
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
    return (features.contains("MFMT") ? "MFMT " : "MDTM ") + timeValueOf(utc) + ' ' + name;
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
