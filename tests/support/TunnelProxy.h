#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QTcpServer>

#include <memory>

class QTcpSocket;

namespace venlo::test
{

/// An HTTP (CONNECT) and SOCKS5 proxy in the test's own thread: whoever uses it must let the event
/// loop run. It sees no more of a tunnel than its bytes, and can end or hold one up behind so many.
/// It leads every name to 127.0.0.1.
class TunnelProxy
{
public:
    /// What happens to a tunnel once so many bytes, both ways together, went through.
    struct Fault {
        enum class Kind { Close, Reset, Stall };
        Kind kind = Kind::Close;
        int tunnel = 0; ///< by number, from 0 on
        qint64 bytes = 0;
    };

    TunnelProxy();
    ~TunnelProxy();
    Q_DISABLE_COPY_MOVE(TunnelProxy)

    [[nodiscard]] bool start();
    /// With a login the SOCKS side insists on it.
    void requireLogin(const QByteArray &user, const QByteArray &password);
    [[nodiscard]] QString http() const;
    [[nodiscard]] QString socks() const;
    /// "host:port" of every tunnel, in order, as it was asked for.
    [[nodiscard]] const QList<QByteArray> &asked() const { return m_asked; }
    void setFault(const Fault &fault) { m_fault = std::make_unique<Fault>(fault); }
    void clearFault() { m_fault.reset(); }
    /// How often the fault came about.
    [[nodiscard]] int hits() const { return m_hits; }

private:
    class Tunnel;
    void take(QTcpSocket *client);

    QTcpServer m_server;
    QByteArray m_login; ///< as RFC 1929 sends it; empty: none
    QByteArray m_loginText;
    QList<QByteArray> m_asked;
    std::unique_ptr<Fault> m_fault;
    int m_hits = 0;
};

} // namespace venlo::test
