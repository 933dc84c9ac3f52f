#pragma once

#include <QByteArray>
#include <QTcpSocket>

namespace venlo::test
{

/// The smallest FTP client: sends lines and waits for replies, nothing else. It drives the servers
/// of the tests in their own tests, so that these do not depend on the program's client.
/// Every wait ends after some seconds with an empty reply.
class RawClient
{
public:
    /// Connects and gives the greeting.
    [[nodiscard]] QByteArray connectTo(const QString &host, quint16 port);
    /// Greeting, USER and PASS; the reply to PASS.
    [[nodiscard]] QByteArray login(const QString &host, quint16 port, const QString &user,
                                   const QString &password);
    void send(const QByteArray &line);
    /// The next complete reply, with its lines joined by "\n".
    [[nodiscard]] QByteArray reply();
    [[nodiscard]] QByteArray command(const QByteArray &line);

    /// One transfer over a passive connection; the opening and the completion reply, joined by
    /// " / ". Data to send, or null to receive into received().
    [[nodiscard]] QByteArray transfer(const QByteArray &line, const QByteArray &toSend = {});
    /// The same over an active connection, announced by EPRT or PORT; receives.
    [[nodiscard]] QByteArray transferActive(const QByteArray &line, bool byPort);
    /// EPSV and the data connection for the next command; false when nobody listens there.
    [[nodiscard]] bool openPassive();
    [[nodiscard]] const QByteArray &received() const { return m_received; }
    /// True when the server closed the connection, waiting a little for it.
    [[nodiscard]] bool isClosed();
    /// Whether it is closed already.
    [[nodiscard]] bool isClosedNow() const
    {
        return m_control.state() != QAbstractSocket::ConnectedState;
    }

private:
    [[nodiscard]] quint16 passivePort();
    void receive(QTcpSocket &data);

    QTcpSocket m_control;
    QTcpSocket m_data;
    QByteArray m_received;
};

} // namespace venlo::test
