// What follows a transfer without being waited for: questions about the stored file and the next
// transfer's port. Sent behind the transfer's own command they cost no round trip.
#include "ftp/protocol/FtpClientState.h"

#include <algorithm>
#include <array>

namespace venlo
{

using namespace std::chrono_literals;

namespace
{
// RFC 959 has the replies come in the order of the commands, and forbids no command while a
// transfer runs; servers that look at the control connection meanwhile take any line for ABOR.
constexpr qint64 longestRide = 4LL * 1024 * 1024; ///< bytes; behind more nothing is gained
constexpr auto burst = 2s;                        ///< a transfer this soon is followed by another
constexpr auto portLife = 5s;                     ///< for which the server surely still listens
constexpr auto unprovenGrace = 5s;
constexpr int entersPassive = 227;
constexpr int entersExtendedPassive = 229;
constexpr int firstNegative = 400;

bool isOneOf(int code, std::initializer_list<int> codes)
{
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}
} // namespace

bool FtpClient::State::Follower::isInPlace(int code) const
{
    if (kind == Kind::Port)
        return isOneOf(code, {entersPassive, entersExtendedPassive});
    if (code >= firstNegative)
        return !isOneOf(code, {425, 426});
    if (kind == Kind::Size)
        return code == 213;
    // Told apart, so that the answer to one never passes for that to the other.
    if (kind == Kind::Make)
        return code == 257;
    if (kind == Kind::Enter)
        return isOneOf(code, {200, 250});
    return isOneOf(code, {200, 213, 250, 253});
}

bool FtpClient::State::mayRide(qint64 bytes) const
{
    return pace == Pace::Riding && bytes >= 0 && bytes <= longestRide && inBurst();
}

bool FtpClient::State::inBurst() const
{
    return passive && !burstEnd.hasExpired();
}

void FtpClient::State::addPortQuestion(std::vector<Follower> &followers) const
{
    const bool ready = nextPort != 0 && !nextPortUntil.hasExpired();
    if (inBurst() && !ready)
        followers.push_back({Follower::Kind::Port, useEpsv ? "EPSV" : "PASV", std::nullopt});
}

quint16 FtpClient::State::takeNextPort()
{
    const quint16 port = std::exchange(nextPort, 0);
    return nextPortUntil.hasExpired() ? 0 : port;
}

Result<void> FtpClient::State::run(Transfer &transfer, const std::function<Step()> &step)
{
    auto ended = runAlone(transfer, step);
    if (ended)
        burstEnd = QDeadlineTimer(burst);
    if (transfer.rode())
        ended = endRide(transfer, std::move(ended));
    if (ended || !transfer.portWasReady || !control.isOpen())
        return ended;
    const bool untouched = transfer.data.untouched();
    const bool portGone = transfer.final_ ? isOneOf(transfer.final_->code, {425, 503})
                                          : untouched && ended.error().kind == ErrorClass::Retry;
    if (portGone) {
        slowDown(Pace::Single, QStringLiteral("the port was no longer open"));
        repeatTransfer = untouched || (transfer.rewindable && !transfer.opened);
    }
    return ended;
}

bool FtpClient::State::Transfer::endsInPlace() const
{
    // A command that was understood well enough to open a connection is not unknown any more.
    if (final_->code >= firstNegative)
        return !(opened && isOneOf(final_->code, {500, 501, 502, 503, 504}));
    return isOneOf(final_->code, {226, 250});
}

Result<void> FtpClient::State::endRide(Transfer &transfer, Result<void> ended)
{
    const ErrorClass kind = ended ? ErrorClass::Retry : ended.error().kind;
    const bool ownDoing = kind == ErrorClass::Cancelled || kind == ErrorClass::Local;
    const bool proven = paceProven;
    const Pace before = pace;
    if (!transfer.final_ || !control.isOpen()) { // ABOR took the replies, or none can come
        const QString why = QStringLiteral("broken off while commands rode along");
        if (!ownDoing)
            doubt(Pace::Together, why);
        return ended && !proven ? Result<void>(control.lost(why)) : ended;
    }
    const Result<void> followed = transfer.endsInPlace()
                                      ? readFollowers(transfer.riders, Pace::Together)
                                      : outOfPlace(*transfer.final_, Pace::Together);
    // Unless the server is known to answer in order, the transfer's own reply may not be its own.
    const bool merelyLost = proven && pace == before;
    if (!followed)
        return ownDoing || merelyLost ? ended : followed;
    if (ended)
        paceProven = true;
    else if (transfer.opened && !ownDoing)
        doubt(Pace::Together, transfer.final_->text());
    return ended;
}

Error FtpClient::State::outOfPlace(const Reply &reply, Pace next)
{
    slowDown(next, reply.text());
    return control.lost(QStringLiteral("out of step: ") + reply.text());
}

void FtpClient::State::slowDown(Pace next, const QString &why)
{
    if (next <= pace)
        return;
    control.trace(QStringLiteral("! commands are no longer sent ahead: ") + why);
    pace = next;
    paceProven = false;
    slowedDown = true;
    nextPort = 0;
}

void FtpClient::State::doubt(Pace next, const QString &why)
{
    if (!std::exchange(paceProven, false))
        slowDown(next, why);
}

bool FtpClient::lostToRiders() const
{
    return m->slowedDown && !m->control.isOpen();
}

Result<void> FtpClient::State::readFollowers(std::vector<Follower> &followers, Pace next)
{
    const auto grace = std::min<std::chrono::milliseconds>(unprovenGrace, limits.reply);
    for (Follower &follower : followers) {
        auto reply = paceProven ? control.readReply() : control.readReplyWithin(grace);
        if (!reply) {
            if (reply.error().kind == ErrorClass::Lost)
                doubt(next, reply.error().words);
            return reply.error();
        }
        if (!follower.isInPlace(reply.value().code))
            return outOfPlace(reply.value(), next);
        follower.reply = std::move(reply.value());
        if (follower.kind == Follower::Kind::Port) {
            nextPort = useEpsv ? parseEpsvPort(*follower.reply) : parsePasvPort(*follower.reply);
            nextPortUntil = QDeadlineTimer(portLife);
        }
    }
    return {};
}

Result<void> FtpClient::State::follow(std::vector<Follower> &followers)
{
    if (followers.empty())
        return {};
    if (pace == Pace::Single) {
        for (Follower &follower : followers) {
            auto reply = control.command(follower.command);
            if (!reply)
                return reply.error();
            if (reply.value().preliminary())
                return control.lost(QStringLiteral("out of step: ") + reply.value().text());
            follower.reply = std::move(reply.value());
        }
        return {};
    }
    addPortQuestion(followers);
    QList<QByteArray> commands;
    for (const Follower &follower : followers)
        commands.append(follower.command);
    if (auto sent = control.sendTogether(commands); !sent)
        return sent;
    auto followed = readFollowers(followers, Pace::Single);
    paceProven = paceProven || (followed && pace == Pace::Together);
    return followed;
}

} // namespace venlo
