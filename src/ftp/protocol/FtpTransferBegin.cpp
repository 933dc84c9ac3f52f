// How a transfer of FtpClient begins: the data connection, and the command right behind it.
#include "ftp/protocol/FtpClientState.h"

#include <algorithm>

namespace venlo
{

namespace
{
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

} // namespace venlo
