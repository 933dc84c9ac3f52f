#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QTcpServer>

namespace venlo::test
{

/// An HTTP proxy that knows CONNECT and nothing else, in the test's own thread: whoever uses it
/// must let the event loop run. It can swallow the end of what a server sends.
class ConnectProxy
{
public:
    [[nodiscard]] bool start();
    [[nodiscard]] QString text() const;
    /// "host:port" of every CONNECT, in order.
    [[nodiscard]] const QList<QByteArray> &asked() const { return m_asked; }
    /// From the second connection on, the last so many bytes of the server never arrive; once
    /// it is silent the connection ends. Not before freeBytes: a handshake must not wait for what
    /// is held back.
    static constexpr qint64 freeBytes = 10'000;
    void swallowEnd(qsizetype bytes) { m_swallowed = bytes; }

private:
    void take(QTcpSocket *client);

    QTcpServer m_server;
    QList<QByteArray> m_asked;
    qsizetype m_swallowed = 0;
};

} // namespace venlo::test
