#include "support/TunnelProxy.h"

#include <QHostAddress>
#include <QTcpSocket>

#include <sys/socket.h>

namespace venlo::test
{

namespace
{
constexpr char socksVersion = 5;

char lengthByte(const QByteArray &text)
{
    return static_cast<char>(text.size());
}
} // namespace

/// One connection of a client: what it asks for, then the bytes both ways.
class TunnelProxy::Tunnel : public QObject
{
public:
    Tunnel(TunnelProxy &proxy, QTcpSocket &client)
        : QObject(&client), m_proxy(proxy), m_client(client)
    {
        connect(&m_client, &QTcpSocket::readyRead, this, [this] { fromClient(); });
        connect(&m_client, &QTcpSocket::disconnected, &m_target, &QTcpSocket::disconnectFromHost);
        connect(&m_target, &QTcpSocket::connected, this, [this] { opened(); });
        connect(&m_target, &QTcpSocket::readyRead, this,
                [this] { pass(m_target.readAll(), m_client); });
        connect(&m_target, &QTcpSocket::disconnected, this, [this] {
            if (!m_stalled)
                m_client.disconnectFromHost();
        });
    }
    /// Both ends are going: neither may tell the other.
    ~Tunnel() override { m_target.disconnect(); }
    Q_DISABLE_COPY_MOVE(Tunnel)

private:
    void fromClient()
    {
        if (m_target.state() == QAbstractSocket::ConnectedState) {
            pass(m_client.readAll(), m_target);
            return;
        }
        m_head += m_client.readAll();
        m_socks = m_socks || m_head.startsWith(socksVersion);
        if (m_socks)
            readSocks();
        else if (m_head.startsWith("CONNECT ") && m_head.endsWith("\r\n\r\n"))
            open(m_head.split(' ').value(1));
    }

    /// RFC 1928, 3 to 6, and RFC 1929.
    void readSocks()
    {
        const QByteArray &login = m_proxy.m_login;
        if (m_step == 0 && m_head.size() >= 2 && m_head.size() >= 2 + m_head.at(1)) {
            m_head.remove(0, 2 + m_head.at(1));
            m_client.write(QByteArray(1, socksVersion) + (login.isEmpty() ? '\0' : '\2'));
            m_step = login.isEmpty() ? 2 : 1;
        }
        if (m_step == 1 && m_head.size() >= login.size()) {
            const bool right = m_head.startsWith(login);
            m_client.write(QByteArray("\1", 1) + (right ? '\0' : '\1'));
            m_head.clear();
            m_step = right ? 2 : 3;
        }
        if (m_step != 2 || m_head.size() < 7)
            return;
        const bool named = m_head.at(3) == 3;
        const int size = named ? 1 + m_head.at(4) : 4; // of the address
        if (m_head.size() < 4 + size + 2)
            return;
        const auto byte = [this](int at) { return static_cast<unsigned char>(m_head.at(at)); };
        const int port = byte(4 + size) * 256 + byte(5 + size);
        const QByteArray host =
            named ? m_head.mid(5, size - 1)
                  : QByteArray::number(byte(4)) + '.' + QByteArray::number(byte(5)) + '.' +
                        QByteArray::number(byte(6)) + '.' + QByteArray::number(byte(7));
        m_step = 3;
        open(host + ':' + QByteArray::number(port));
    }

    void open(const QByteArray &place)
    {
        m_number = static_cast<int>(m_proxy.m_asked.size());
        m_proxy.m_asked.append(place);
        m_target.connectToHost(QHostAddress(QHostAddress::LocalHost),
                               place.mid(place.lastIndexOf(':') + 1).toUShort());
    }

    void opened()
    {
        m_client.write(m_socks ? QByteArray("\5\0\0\1\177\0\0\1\0\0", 10)
                               : QByteArray("HTTP/1.1 200 Connected\r\n\r\n"));
    }

    void pass(const QByteArray &bytes, QTcpSocket &to)
    {
        const Fault *fault = m_proxy.m_fault.get();
        if (m_stalled)
            return;
        if (fault == nullptr || fault->tunnel != m_number ||
            m_passed + bytes.size() <= fault->bytes) {
            m_passed += bytes.size();
            to.write(bytes);
            return;
        }
        to.write(bytes.first(fault->bytes - m_passed));
        to.flush();
        m_passed = fault->bytes;
        ++m_proxy.m_hits;
        happen(fault->kind);
    }

    void happen(Fault::Kind kind)
    {
        m_stalled = true;
        if (kind == Fault::Kind::Stall)
            return;
        m_target.abort();
        if (kind == Fault::Kind::Close) {
            m_client.disconnectFromHost();
            return;
        }
        const linger atOnce = {1, 0};
        setsockopt(static_cast<int>(m_client.socketDescriptor()), SOL_SOCKET, SO_LINGER, &atOnce,
                   sizeof atOnce);
        m_client.abort();
    }

    TunnelProxy &m_proxy;
    QTcpSocket &m_client;
    QTcpSocket m_target;
    QByteArray m_head;
    bool m_socks = false;
    bool m_stalled = false;
    int m_step = 0; ///< methods, login, request, nothing more
    int m_number = -1;
    qint64 m_passed = 0;
};

TunnelProxy::TunnelProxy() = default;
TunnelProxy::~TunnelProxy() = default;

bool TunnelProxy::start()
{
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
        while (QTcpSocket *client = m_server.nextPendingConnection())
            take(client);
    });
    return m_server.listen(QHostAddress::LocalHost);
}

void TunnelProxy::take(QTcpSocket *client)
{
    new Tunnel(*this, *client); // the client owns it
}

void TunnelProxy::requireLogin(const QByteArray &user, const QByteArray &password)
{
    m_login = QByteArray("\1") + lengthByte(user) + user + lengthByte(password) + password;
    m_loginText = user + ':' + password + '@';
}

QString TunnelProxy::http() const
{
    return QStringLiteral("http://127.0.0.1:%1").arg(m_server.serverPort());
}

QString TunnelProxy::socks() const
{
    return QStringLiteral("socks5://") + QString::fromUtf8(m_loginText) +
           QStringLiteral("127.0.0.1:%1").arg(m_server.serverPort());
}

} // namespace venlo::test
