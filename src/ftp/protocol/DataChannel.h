#pragma once

#include "shared/Result.h"

#include <QHostAddress>
#include <QNetworkProxy>
#include <QTcpServer>
#include <QTcpSocket>

#include <memory>

namespace venlo
{

/// One data connection (RFC 959, 3.2): opened towards the server or accepted from it, moves bytes
/// one way, and knows whether its end was clean. Lives for one transfer; owned by the transfer.
class DataChannel
{
public:
    static constexpr qint64 chunk = 256LL * 1024;

    enum class Direction { Receive, Send };

    explicit DataChannel(Direction direction);

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
    /// Space for another chunk.
    [[nodiscard]] bool wantsBytes() const;
    void write(const QByteArray &bytes);
    /// No more bytes: the peer sees the end once all are sent.
    void finishWriting();
    /// All bytes left this program and the connection is closed.
    [[nodiscard]] bool allSent() const;
    [[nodiscard]] qint64 movedBytes() const { return m_moved; }
    /// No byte was read or handed over for sending.
    [[nodiscard]] bool untouched() const { return m_moved == 0 && m_queued == 0; }
    void abort();

private:
    void adopt(std::unique_ptr<QTcpSocket> socket);
    void takePending();
    void onConnected();
    [[nodiscard]] bool closedInOrder() const;

    Direction m_direction;
    std::unique_ptr<QTcpSocket> m_socket;
    std::unique_ptr<QTcpServer> m_server;
    QHostAddress m_peer;
    qint64 m_moved = 0;
    qint64 m_queued = 0;
    bool m_wasConnected = false;
    bool m_finishing = false;
};

} // namespace venlo
