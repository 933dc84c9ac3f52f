#pragma once

#include "platform/ConnectionEnd.h"
#include "shared/Result.h"

#include <QDeadlineTimer>
#include <QHostAddress>
#include <QNetworkProxy>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTcpServer>

#include <memory>
#include <optional>

namespace venlo
{

/// How data connections are protected: by the session of the control connection, and towards the
/// server whose certificate was judged there.
struct DataProtection {
    QSslConfiguration session;
    QString host; ///< the name that the control connection verified
    QSslCertificate certificate;
    /// The server is known to send a session ticket on each of its connections, or not yet known
    /// not to: an upload waits for it before it closes.
    bool ticketsCome = true;
};

/// One data connection (RFC 959, 3.2): opened towards the server or accepted from it, moves bytes
/// one way, and knows whether its end was clean: under TLS only close_notify says that all bytes
/// came (RFC 8446, 6.1), without it the stream was cut. Towards the server an end in order cannot
/// be acknowledged; its completion reply is what counts. Lives for one transfer; owned by it.
class DataChannel
{
public:
    static constexpr qint64 chunk = 256LL * 1024;

    enum class Direction { Receive, Send };

    explicit DataChannel(Direction direction);

    /// Before connectTo or listenOn: the connection is to be a TLS one.
    void protect(DataProtection protection) { m_protection = std::move(protection); }
    /// Begins to connect; failed() or connected() tells later.
    void connectTo(const QString &host, quint16 port, const QNetworkProxy &proxy);
    /// Waits for the server's connection on a free port of the address; 0 when that fails.
    [[nodiscard]] quint16 listenOn(const QHostAddress &address, const QHostAddress &peer);

    [[nodiscard]] bool connected();
    /// The connection could not be made, or broke before its work was done.
    [[nodiscard]] bool failed() const;
    [[nodiscard]] QString errorWords() const;

    /// The bytes that have arrived, at most a few chunks.
    [[nodiscard]] QByteArray read();
    /// Everything the peer sent was read and it closed in order.
    [[nodiscard]] bool atEnd() const;
    /// It was reset: what arrived may be a part. A reset looks like an end in order otherwise.
    [[nodiscard]] bool wasReset() const { return m_wasReset; }
    /// Space for another chunk.
    [[nodiscard]] bool wantsBytes() const;
    void write(const QByteArray &bytes);
    /// No more bytes: the peer sees the end once all are sent.
    void finishWriting();
    /// All bytes left this program and the connection is closed.
    [[nodiscard]] bool allSent() const;
    /// All is over and no session ticket came, where TLS 1.3 has them come.
    [[nodiscard]] bool ticketMissed() const;
    [[nodiscard]] qint64 movedBytes() const { return m_moved; }
    /// No byte was read or handed over for sending.
    [[nodiscard]] bool untouched() const { return m_moved == 0 && m_queued == 0; }
    void abort();

private:
    void adopt(std::unique_ptr<QTcpSocket> socket);
    void takePending();
    void onConnected();
    void onDisconnected();
    void onEncrypted();
    void closeWhenSent();
    void onTlsError(QAbstractSocket::SocketError error);
    [[nodiscard]] qint64 unsentBytes() const;
    [[nodiscard]] bool closedInOrder() const;

    Direction m_direction;
    std::optional<DataProtection> m_protection;
    std::unique_ptr<QTcpSocket> m_socket;
    QSslSocket *m_tls = nullptr; ///< the socket, where it is a protected one
    std::unique_ptr<QTcpServer> m_server;
    QHostAddress m_peer;
    qint64 m_moved = 0;
    qint64 m_queued = 0;
    std::optional<ConnectionEnd> m_end; ///< of a plain connection that receives
    bool m_wasReset = false;
    bool m_wasConnected = false; ///< and its handshake was done
    bool m_closeNotified = false;
    bool m_closing = false; ///< close_notify is on its way
    bool m_ticketCame = false;
    bool m_ticketsPossible = false; ///< TLS 1.3
    QDeadlineTimer m_ticketWait;
    bool m_otherServer = false; ///< the certificate is not that of the control connection
    bool m_finishing = false;
};

} // namespace venlo
