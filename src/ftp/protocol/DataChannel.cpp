#include "ftp/protocol/DataChannel.h"

#include <algorithm>

#include <QCoreApplication>

namespace venlo
{

namespace
{
constexpr qint64 sendAhead = 1024LL * 1024;
// What the system may hold back: its own buffer can take megabytes, and a slow line would then
// need longer for them than the wait for the completion reply lasts.
constexpr int sendBuffer = 256 * 1024;
constexpr int ticketLimit = 500; // milliseconds; a round trip is what it should take

/// Accepts sockets that can speak TLS.
class TlsListener final : public QTcpServer
{
protected:
    void incomingConnection(qintptr descriptor) override
    {
        auto socket = std::make_unique<QSslSocket>();
        if (socket->setSocketDescriptor(descriptor))
            addPendingConnection(socket.release());
    }
};

/// Whether the TLS layer says that the peer closed, and not the connection below it: both have the
/// same error code. The layer's own words tell, and that the connection below knows of no error.
bool closedByTls(const QSslSocket &socket)
{
    const auto *below = socket.findChild<QTcpSocket *>();
    return (below != nullptr && below->error() == QAbstractSocket::UnknownSocketError) ||
           socket.errorString() ==
               QCoreApplication::translate("QSslSocket", "The TLS/SSL connection has been closed");
}
} // namespace

DataChannel::DataChannel(Direction direction) : m_direction(direction) {}

void DataChannel::connectTo(const QString &host, quint16 port, const QNetworkProxy &proxy)
{
    std::unique_ptr<QTcpSocket> socket;
    if (m_protection)
        socket = std::make_unique<QSslSocket>();
    else
        socket = std::make_unique<QTcpSocket>();
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
    QObject::connect(m_socket.get(), &QTcpSocket::disconnected, m_socket.get(),
                     [this] { onDisconnected(); });
    if (m_protection) {
        m_tls = qobject_cast<QSslSocket *>(m_socket.get());
        m_tls->setSslConfiguration(m_protection->session);
        m_tls->setPeerVerifyName(m_protection->host);
        QObject::connect(m_tls, &QSslSocket::encrypted, m_tls, [this] { onEncrypted(); });
        QObject::connect(m_tls, &QSslSocket::errorOccurred, m_tls,
                         [this](QAbstractSocket::SocketError error) { onTlsError(error); });
        // Bytes count once the system took them: bytesWritten comes when they are encrypted.
        QObject::connect(m_tls, &QSslSocket::encryptedBytesWritten, m_tls,
                         [this] { m_moved = std::max(m_moved, m_queued - unsentBytes()); });
        QObject::connect(m_tls, &QSslSocket::newSessionTicketReceived, m_tls,
                         [this] { m_ticketCame = true; });
    } else {
        QObject::connect(m_socket.get(), &QTcpSocket::bytesWritten, m_socket.get(),
                         [this](qint64 bytes) { m_moved += bytes; });
    }
    if (m_socket->state() == QAbstractSocket::ConnectedState)
        onConnected();
}

void DataChannel::onConnected()
{
    if (m_direction == Direction::Send)
        m_socket->setSocketOption(QAbstractSocket::SendBufferSizeSocketOption, sendBuffer);
    if (m_tls != nullptr)
        m_tls->startClientEncryption(); // in active mode too (RFC 4217, 7)
    else
        m_wasConnected = true;
    if (m_tls == nullptr && m_direction == Direction::Receive)
        m_end.emplace(m_socket->socketDescriptor());
}

/// Asked at once, and the second handle let go: while it is held the server's orderly close is not
/// answered, and some reset the connection for that.
void DataChannel::onDisconnected()
{
    m_wasReset = m_end && m_end->wasReset();
    m_end.reset();
}

void DataChannel::onEncrypted()
{
    // A resumed session proves the server; a new one could be anybody's.
    m_otherServer = m_tls->peerCertificate() != m_protection->certificate;
    m_wasConnected = !m_otherServer;
    if (m_otherServer)
        m_tls->abort();
    m_ticketsPossible = m_tls->sessionProtocol() == QSsl::TlsV1_3;
    m_ticketWait.setRemainingTime(ticketLimit);
}

/// A connection that is closed while bytes of the peer wait unread is reset, and what it has not
/// sent yet, or the peer not read, is lost. Under TLS 1.3 the peer's session ticket comes behind
/// the handshake (RFC 8446, 4.6.1), so that a short upload would be over before it.
void DataChannel::closeWhenSent()
{
    if (m_tls == nullptr || !m_finishing || m_closing ||
        m_tls->state() != QAbstractSocket::ConnectedState || unsentBytes() > 0)
        return;
    const bool awaits = m_protection->ticketsCome && m_ticketsPossible && !m_ticketCame;
    if (awaits && !m_ticketWait.hasExpired())
        return;
    m_closing = true;
    m_moved = m_queued;
    m_tls->disconnectFromHost();
}

bool DataChannel::ticketMissed() const
{
    const bool over = m_direction == Direction::Send ? m_closing : m_closeNotified;
    return over && m_ticketsPossible && !m_ticketCame &&
           (m_direction == Direction::Receive || m_ticketWait.hasExpired());
}

void DataChannel::onTlsError(QAbstractSocket::SocketError error)
{
    if (error == QAbstractSocket::RemoteHostClosedError && m_wasConnected && closedByTls(*m_tls))
        m_closeNotified = true;
}

/// An upper bound: what is encrypted already is a little longer than it was.
qint64 DataChannel::unsentBytes() const
{
    return m_tls != nullptr ? m_tls->bytesToWrite() + m_tls->encryptedBytesToWrite()
                            : m_socket->bytesToWrite();
}

quint16 DataChannel::listenOn(const QHostAddress &address, const QHostAddress &peer)
{
    m_peer = peer;
    if (m_protection)
        m_server = std::make_unique<TlsListener>();
    else
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
    closeWhenSent();
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
    if (m_direction == Direction::Send)
        return !allSent();
    return m_tls != nullptr ? !m_closeNotified && m_tls->bytesAvailable() == 0 : !closedInOrder();
}

bool DataChannel::closedInOrder() const
{
    const auto error = m_socket->error();
    return error == QAbstractSocket::RemoteHostClosedError ||
           error == QAbstractSocket::UnknownSocketError;
}

QString DataChannel::errorWords() const
{
    if (!m_socket)
        return QStringLiteral("no data connection came");
    if (m_otherServer)
        return QStringLiteral("another certificate than that of the control connection");
    return m_socket->errorString();
}

QByteArray DataChannel::read()
{
    takePending();
    if (!m_socket)
        return {};
    QByteArray bytes = m_socket->readAll(); // bounded by the read buffer
    m_moved += bytes.size();
    if (m_closeNotified && m_socket->bytesAvailable() == 0)
        m_socket->disconnectFromHost(); // some servers wait for it before their completion reply
    return bytes;
}

bool DataChannel::atEnd() const
{
    if (m_tls != nullptr)
        return m_closeNotified && m_tls->bytesAvailable() == 0;
    return m_socket && m_wasConnected && m_socket->state() == QAbstractSocket::UnconnectedState &&
           m_socket->bytesAvailable() == 0 &&
           m_socket->error() == QAbstractSocket::RemoteHostClosedError;
}

bool DataChannel::wantsBytes() const
{
    return m_socket && m_wasConnected && m_socket->state() == QAbstractSocket::ConnectedState &&
           unsentBytes() < sendAhead;
}

void DataChannel::write(const QByteArray &bytes)
{
    m_queued += m_socket->write(bytes);
}

void DataChannel::finishWriting()
{
    m_finishing = true;
    if (m_tls != nullptr) {
        closeWhenSent();
        return;
    }
    m_socket->flush(); // what fits goes now, not in the next turn of the event loop
    m_socket->disconnectFromHost();
}

bool DataChannel::allSent() const
{
    return m_finishing && m_socket->state() == QAbstractSocket::UnconnectedState &&
           m_moved == m_queued && closedInOrder() && (m_tls == nullptr || m_closing);
}

void DataChannel::abort()
{
    m_end.reset();
    if (m_socket)
        m_socket->abort();
    if (m_server)
        m_server->close();
}

} // namespace venlo
