#include "ftp/protocol/DataChannel.h"

namespace venlo
{

namespace
{
constexpr qint64 sendAhead = 1024LL * 1024;
// What the system may hold back: its own buffer can take megabytes, and a slow line would then
// need longer for them than the wait for the completion reply lasts.
constexpr int sendBuffer = 256 * 1024;
} // namespace

DataChannel::DataChannel(Direction direction) : m_direction(direction) {}

void DataChannel::connectTo(const QString &host, quint16 port, const QNetworkProxy &proxy)
{
    auto socket = std::make_unique<QTcpSocket>();
    socket->setProxy(proxy);
    socket->connectToHost(host, port);
    adopt(std::move(socket));
}

void DataChannel::adopt(std::unique_ptr<QTcpSocket> socket)
{
    m_socket = std::move(socket);
    m_socket->setReadBufferSize(4 * chunk);
    QObject::connect(m_socket.get(), &QTcpSocket::connected, m_socket.get(),
                     [this] { onConnected(); });
    QObject::connect(m_socket.get(), &QTcpSocket::bytesWritten, m_socket.get(),
                     [this](qint64 bytes) { m_moved += bytes; });
    if (m_socket->state() == QAbstractSocket::ConnectedState)
        onConnected();
}

void DataChannel::onConnected()
{
    m_wasConnected = true;
    if (m_direction == Direction::Send)
        m_socket->setSocketOption(QAbstractSocket::SendBufferSizeSocketOption, sendBuffer);
}

quint16 DataChannel::listenOn(const QHostAddress &address, const QHostAddress &peer)
{
    m_peer = peer;
    m_server = std::make_unique<QTcpServer>();
    m_server->setProxy(QNetworkProxy::NoProxy);
    if (!m_server->listen(address, 0))
        return 0;
    return m_server->serverPort();
}

void DataChannel::takePending()
{
    while (!m_socket && m_server && m_server->hasPendingConnections()) {
        std::unique_ptr<QTcpSocket> incoming(m_server->nextPendingConnection());
        incoming->setParent(nullptr);
        // Somebody else's connection must not become the file's content.
        if (!incoming->peerAddress().isEqual(m_peer, QHostAddress::TolerantConversion))
            continue;
        adopt(std::move(incoming));
        m_server->close();
    }
}

bool DataChannel::connected()
{
    takePending();
    return m_socket && m_wasConnected;
}

bool DataChannel::failed() const
{
    if (!m_socket)
        return m_server && !m_server->isListening();
    if (m_socket->state() != QAbstractSocket::UnconnectedState)
        return false;
    if (!m_wasConnected)
        return true;
    return m_direction == Direction::Receive ? !closedInOrder() : !allSent();
}

bool DataChannel::closedInOrder() const
{
    const auto error = m_socket->error();
    return error == QAbstractSocket::RemoteHostClosedError ||
           error == QAbstractSocket::UnknownSocketError;
}

QString DataChannel::errorWords() const
{
    return m_socket ? m_socket->errorString() : QStringLiteral("no data connection came");
}

QByteArray DataChannel::read()
{
    takePending();
    if (!m_socket)
        return {};
    QByteArray bytes = m_socket->readAll(); // bounded by the read buffer
    m_moved += bytes.size();
    return bytes;
}

bool DataChannel::atEnd() const
{
    return m_socket && m_wasConnected && m_socket->state() == QAbstractSocket::UnconnectedState &&
           m_socket->bytesAvailable() == 0 &&
           m_socket->error() == QAbstractSocket::RemoteHostClosedError;
}

bool DataChannel::wantsBytes() const
{
    return m_socket && m_wasConnected && m_socket->state() == QAbstractSocket::ConnectedState &&
           m_socket->bytesToWrite() < sendAhead;
}

void DataChannel::write(const QByteArray &bytes)
{
    m_queued += m_socket->write(bytes);
}

void DataChannel::finishWriting()
{
    m_finishing = true;
    m_socket->disconnectFromHost();
}

bool DataChannel::allSent() const
{
    return m_finishing && m_socket->state() == QAbstractSocket::UnconnectedState &&
           m_moved == m_queued && closedInOrder();
}

void DataChannel::abort()
{
    if (m_socket)
        m_socket->abort();
    if (m_server)
        m_server->close();
}

} // namespace venlo
