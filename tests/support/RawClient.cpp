#include "support/RawClient.h"

#include <memory>

#include <QHostAddress>
#include <QTcpServer>

namespace venlo::test
{

namespace
{

// pure-ftpd takes some seconds to refuse a password.
constexpr int limitMs = 15'000;

bool isLastLine(const QByteArray &line)
{
    return line.size() >= 4 && line.at(3) == ' ' && line.left(3).toInt() > 0;
}

} // namespace

QByteArray RawClient::connectTo(const QString &host, quint16 port)
{
    m_control.connectToHost(host, port);
    return m_control.waitForConnected(limitMs) ? reply() : QByteArray();
}

QByteArray RawClient::login(const QString &host, quint16 port, const QString &user,
                            const QString &password)
{
    if (!connectTo(host, port).startsWith("220"))
        return {};
    const QByteArray first = command("USER " + user.toUtf8());
    return first.startsWith("331") ? command("PASS " + password.toUtf8()) : first;
}

void RawClient::send(const QByteArray &line)
{
    m_control.write(line + "\r\n");
    m_control.flush();
}

QByteArray RawClient::reply()
{
    QByteArray all;
    for (;;) {
        if (!m_control.canReadLine()) {
            if (!m_control.waitForReadyRead(limitMs))
                return all;
            continue;
        }
        const QByteArray line = m_control.readLine().trimmed();
        all += all.isEmpty() ? line : '\n' + line;
        if (isLastLine(line))
            return all;
    }
}

QByteArray RawClient::command(const QByteArray &line)
{
    send(line);
    return reply();
}

quint16 RawClient::passivePort()
{
    const QByteArray text = command("EPSV");
    const auto from = text.indexOf("|||");
    if (!text.startsWith("229") || from < 0)
        return 0;
    return text.mid(from + 3, text.indexOf('|', from + 3) - from - 3).toUShort();
}

bool RawClient::openPassive()
{
    const quint16 port = passivePort();
    m_data.abort();
    m_data.connectToHost(m_control.peerAddress(), port);
    return port != 0 && m_data.waitForConnected(limitMs);
}

void RawClient::receive(QTcpSocket &data)
{
    while (data.state() == QAbstractSocket::ConnectedState && data.waitForReadyRead(limitMs))
        m_received += data.readAll();
    m_received += data.readAll();
}

QByteArray RawClient::transfer(const QByteArray &line, const QByteArray &toSend)
{
    m_received.clear();
    if (!openPassive())
        return {};
    QByteArray opening = command(line);
    if (!opening.startsWith('1'))
        return opening;
    if (toSend.isNull())
        receive(m_data);
    m_data.write(toSend);
    while (m_data.bytesToWrite() > 0 && m_data.waitForBytesWritten(limitMs)) {
    }
    m_data.disconnectFromHost();
    if (m_data.state() != QAbstractSocket::UnconnectedState)
        m_data.waitForDisconnected(limitMs);
    return opening + " / " + reply();
}

QByteArray RawClient::transferActive(const QByteArray &line, bool byPort)
{
    m_received.clear();
    QTcpServer listener;
    if (!listener.listen(m_control.localAddress()))
        return {};
    const quint16 port = listener.serverPort();
    QByteArray announced = byPort ? command("PORT 127,0,0,1," + QByteArray::number(port / 256) +
                                            ',' + QByteArray::number(port % 256))
                                  : command("EPRT |1|127.0.0.1|" + QByteArray::number(port) + '|');
    if (!announced.startsWith("200"))
        return announced;
    send(line);
    if (!listener.waitForNewConnection(limitMs))
        return reply();
    const std::unique_ptr<QTcpSocket> data(listener.nextPendingConnection());
    receive(*data);
    const QByteArray opening = reply();
    return opening + " / " + reply();
}

bool RawClient::isClosed()
{
    return m_control.state() != QAbstractSocket::ConnectedState ||
           m_control.waitForDisconnected(limitMs);
}

} // namespace venlo::test
