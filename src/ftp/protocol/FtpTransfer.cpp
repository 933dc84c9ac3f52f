// The data-connection half of FtpClient: how a transfer begins, runs, ends and is given up.
#include "ftp/protocol/FtpClientState.h"

#include <algorithm>

namespace venlo
{

using namespace std::chrono_literals;

namespace
{
constexpr int cannotOpenData = 425;
constexpr int maxPreliminary = 16;
// What a server may take to notice that its data connection broke.
constexpr auto brokenDataGrace = 10s;
constexpr auto abortGrace = 3s;
// How late a reply to ABOR may come that is one more than are due.
constexpr auto stragglerGrace = 400ms;
constexpr int commandOkay = 200;
constexpr int serviceClosing = 421;
constexpr auto lastBytesGrace = 300ms;
constexpr quint16 firstUserPort = 1024; ///< below are the machine's own services

bool isPrivate(const QHostAddress &address)
{
    static const QList<QPair<QHostAddress, int>> privateUse = {
        QHostAddress::parseSubnet(QStringLiteral("10.0.0.0/8")),
        QHostAddress::parseSubnet(QStringLiteral("172.16.0.0/12")),
        QHostAddress::parseSubnet(QStringLiteral("192.168.0.0/16")),
        QHostAddress::parseSubnet(QStringLiteral("fc00::/7"))};
    const auto holds = [&](const auto &subnet) { return address.isInSubnet(subnet); };
    return address.isLoopback() || address.isLinkLocal() ||
           std::any_of(privateUse.begin(), privateUse.end(), holds);
}

QByteArray portArgument(const QHostAddress &address, quint16 port)
{
    const quint32 v4 = address.toIPv4Address();
    QByteArray text;
    for (const int shift : {24, 16, 8, 0})
        text += QByteArray::number((v4 >> shift) & 0xffU) + ',';
    return text + QByteArray::number(port >> 8) + ',' + QByteArray::number(port & 0xff);
}
} // namespace

Result<void> FtpClient::State::preparePassive(Transfer &transfer)
{
    quint16 port = takeNextPort();
    transfer.portWasReady = port != 0;
    if (port == 0 && useEpsv) {
        const auto reply = control.command("EPSV");
        if (!reply)
            return reply.error();
        port = parseEpsvPort(reply.value());
        if (port == 0 && reply.value().completion())
            return control.lost(QStringLiteral("out of step: ") + reply.value().text());
        if (port == 0)
            useEpsv = false;
    }
    if (port == 0) {
        const auto reply = control.command("PASV");
        if (!reply)
            return reply.error();
        if (!reply.value().completion())
            return errorOf(reply.value());
        port = parsePasvPort(reply.value());
        if (port == 0)
            return control.lost(QStringLiteral("out of step: ") + reply.value().text());
    }
    // No server listens there for data; somebody would be made to talk to another service.
    if (port < firstUserPort)
        return Error{ErrorClass::Refused, QStringLiteral("refused data port: %1").arg(port), 0};
    // The address in the reply is ignored: it is often a private one, and never better than the
    // host that answers already.
    const bool direct = proxy.type() == QNetworkProxy::NoProxy;
    const QString host = direct ? control.peerAddress().toString() : control.peerName();
    transfer.data.connectTo(host, port, proxy);
    return {};
}

Result<void> FtpClient::State::prepareActive(Transfer &transfer)
{
    const QHostAddress local = control.localAddress();
    const QHostAddress peer = control.peerAddress();
    const Error unusable{ErrorClass::Refused, QStringLiteral("active mode cannot work here"), 0};
    if (isPrivate(local) && !isPrivate(peer))
        return unusable;
    const quint16 port = transfer.data.listenOn(local, peer);
    if (port == 0)
        return unusable;
    bool v4 = false;
    const QHostAddress v4Address(local.toIPv4Address(&v4));
    const QByteArray command =
        v4 ? "PORT " + portArgument(v4Address, port)
           : "EPRT |2|" + local.toString().section(QLatin1Char('%'), 0, 0).toLatin1() + '|' +
                 QByteArray::number(port) + '|';
    const auto reply = control.command(command);
    if (!reply)
        return reply.error();
    if (!reply.value().completion())
        return errorOf(reply.value());
    return {};
}

Result<void> FtpClient::State::begin(Transfer &transfer, const QByteArray &command, qint64 bytes)
{
    if (protectsData)
        transfer.data.protect({control.tlsSession(), control.peerName(), certificate, ticketsCome});
    auto prepared = passive ? preparePassive(transfer) : prepareActive(transfer);
    if (!prepared && !passive && prepared.error().kind == ErrorClass::Refused) {
        control.trace(QStringLiteral("! active mode given up: ") + prepared.error().words);
        activeUnusable = true;
        passive = true;
        transfer.data.abort();
        prepared = preparePassive(transfer);
    }
    if (!prepared)
        return prepared;
    if (!mayRide(bytes)) {
        transfer.riders.clear();
        return control.send(command);
    }
    addPortQuestion(transfer.riders);
    QList<QByteArray> commands{command};
    for (Follower &rider : transfer.riders) {
        commands.append(rider.command);
        rider.sent = true;
    }
    return control.sendTogether(commands);
}

Result<void> FtpClient::State::noteReplies(Transfer &transfer)
{
    for (int preliminary = 0; !transfer.final_;) {
        auto reply = control.takeReply();
        if (!reply)
            break;
        if (!reply->preliminary()) {
            transfer.final_ = std::move(reply);
            break;
        }
        transfer.opened = true;
        control.expectOneMore();
        if (++preliminary > maxPreliminary)
            return control.lost(QStringLiteral("preliminary replies without end"));
    }
    return whileReplyIsDue(transfer);
}

Result<void> FtpClient::State::whileReplyIsDue(const Transfer &transfer)
{
    const bool lost = transfer.final_ ? transfer.final_->code == serviceClosing : !control.isOpen();
    if (lost)
        return control.lost(QStringLiteral("connection lost during a transfer"));
    return {};
}

Result<void> FtpClient::State::runAlone(Transfer &transfer, const std::function<Step()> &step)
{
    Step last = Step::More;
    const auto settled = [&] {
        const bool over =
            !noteReplies(transfer) || (transfer.final_ && !transfer.final_->completion());
        if (transfer.data.connected())
            last = step();
        return over || last != Step::More || transfer.data.failed();
    };
    bool connected = false;
    WaitEnd end = waiter.until(
        [&] {
            const bool over = settled();
            connected = transfer.data.connected();
            return over || connected;
        },
        passive ? limits.connect : limits.activeConnect);
    if (!passive && !connected && end == WaitEnd::TimedOut)
        giveUpActiveMode(transfer);
    if (end == WaitEnd::Done && connected && last == Step::More)
        end = waiter.until(settled, limits.idleData, [&] { return transfer.data.movedBytes(); });
    if (last == Step::More && transfer.opened && end == WaitEnd::Done)
        (void)waiter.untilEvenIfCancelled( // what was sent before the bad news still counts
            [&] {
                if (transfer.data.connected())
                    last = step();
                return last != Step::More || transfer.data.failed();
            },
            lastBytesGrace);
    ticketsCome = ticketsCome && !transfer.data.ticketMissed();
    return afterData(transfer, end, last);
}

Result<void> FtpClient::State::afterData(Transfer &transfer, WaitEnd end, Step last)
{
    if (auto due = whileReplyIsDue(transfer); !due)
        return due;
    if (last == Step::Stop)
        return abandon(transfer, transfer.stopped);
    if (end == WaitEnd::Cancelled)
        return abandon(transfer, {ErrorClass::Cancelled, QStringLiteral("cancelled")});
    if (transfer.final_ && !transfer.final_->completion()) {
        transfer.data.abort();
        if (!passive && transfer.final_->code == cannotOpenData)
            giveUpActiveMode(transfer);
        if (resumesOnly12(transfer))
            return control.lost(QStringLiteral("data refused under TLS 1.3, next with TLS 1.2: ") +
                                transfer.final_->text());
        return errorOf(*transfer.final_);
    }
    dataWorked = dataWorked || last == Step::Done;
    if (end == WaitEnd::TimedOut)
        return abandon(transfer, {ErrorClass::Retry, QStringLiteral("no data in time")});
    return last == Step::Done ? finish(transfer) : afterBrokenData(transfer);
}

Result<void> FtpClient::State::afterBrokenData(Transfer &transfer)
{
    const Error broke{ErrorClass::Retry,
                      QStringLiteral("data connection broke: ") + transfer.data.errorWords()};
    waitForFinal(transfer, std::min<std::chrono::milliseconds>(brokenDataGrace, limits.reply));
    if (auto due = whileReplyIsDue(transfer); !due)
        return due;
    if (transfer.final_ && !transfer.final_->completion()) {
        transfer.data.abort();
        return errorOf(*transfer.final_);
    }
    return abandon(transfer, broke);
}

void FtpClient::State::waitForFinal(Transfer &transfer, std::chrono::milliseconds limit)
{
    (void)waiter.untilEvenIfCancelled(
        [&] { return !noteReplies(transfer) || transfer.final_.has_value(); }, limit);
}

Result<void> FtpClient::State::finish(Transfer &transfer)
{
    const WaitEnd end = waiter.until(
        [&] { return !noteReplies(transfer) || transfer.final_.has_value(); }, limits.reply);
    if (end == WaitEnd::Cancelled)
        return abandon(transfer, {ErrorClass::Cancelled, QStringLiteral("cancelled")});
    if (!transfer.final_ || transfer.final_->code == serviceClosing)
        return control.lost(QStringLiteral("no completion reply"));
    if (!transfer.final_->completion())
        return errorOf(*transfer.final_);
    return {};
}

Error FtpClient::State::abandon(Transfer &transfer, Error why)
{
    transfer.data.abort();
    if (transfer.final_ || !control.isOpen())
        return why;
    nextPort = 0; // some servers take ABOR for the end of that one too
    if (!control.send("ABOR"))
        return why;
    if (!backInStep())
        (void)control.lost(QStringLiteral("out of step after ABOR"));
    return why; // where the connection was closed the next operation reconnects
}

bool FtpClient::State::backInStep()
{
    // Two replies are due: the transfer's (426, or 226 when it was over) and that of ABOR. Some
    // servers send only one for both, others a third. Whose they are does not matter, only that
    // none is left: NOOP's own reply is like none of them.
    const auto grace = std::min<std::chrono::milliseconds>(abortGrace, limits.reply);
    if (!takeAborted(grace) || !control.send("NOOP"))
        return false;
    for (int replies = 0; replies < maxPreliminary; ++replies) {
        const auto reply = control.readReplyWithin(grace);
        if (!reply)
            return false;
        if (reply.value().code == commandOkay) {
            control.expectNothing();
            control.waitForStragglers(stragglerGrace);
            return true;
        }
    }
    return false;
}

/// The replies that come behind ABOR: one, or what riders are due, which NOOP's could be taken for.
bool FtpClient::State::takeAborted(std::chrono::milliseconds grace)
{
    constexpr int transferAndAbor = 2;
    const bool rode = control.outstanding() > transferAndAbor;
    bool came = false;
    for (int replies = 0; replies < maxPreliminary && control.outstanding() > 0; ++replies) {
        if (came && !rode)
            break;
        (void)waiter.untilEvenIfCancelled([this] { return control.hasNews(); }, grace);
        const auto reply = control.takeReply();
        if (!reply)
            break;
        if (reply->preliminary())
            control.expectOneMore();
        else
            came = true;
    }
    return came;
}

void FtpClient::State::giveUpActiveMode(const Transfer &transfer)
{
    if (!transfer.data.untouched())
        return;
    activeUnusable = true;
    passive = true;
    repeatTransfer = true;
}

} // namespace venlo
