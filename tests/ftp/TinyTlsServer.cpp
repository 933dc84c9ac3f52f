#include "ftp/TinyTlsServer.h"

#include <memory>
#include <utility>

namespace venlo::test
{

void TlsCapableListener::incomingConnection(qintptr descriptor)
{
    auto socket = std::make_unique<QSslSocket>();
    socket->setParent(this);
    if (socket->setSocketDescriptor(descriptor))
        addPendingConnection(socket.release());
}

TinyTlsServer::TinyTlsServer(QSslConfiguration configuration)
    : m_configuration(std::move(configuration))
{
}

bool TinyTlsServer::start()
{
    QObject::connect(&m_control, &QTcpServer::newConnection, &m_control, [this] {
        QSslSocket *control = m_control.next();
        control->setSslConfiguration(m_configuration);
        m_protected = false;
        control->write("220 tiny\r\n");
        QObject::connect(control, &QSslSocket::readyRead, control, [this, control] {
            while (control->canReadLine())
                handle(control, control->readLine().trimmed().split(' ').first());
        });
    });
    return m_control.listen(QHostAddress::LocalHost) && m_data.listen(QHostAddress::LocalHost);
}

QString TinyTlsServer::server() const
{
    return QStringLiteral("127.0.0.1:%1").arg(m_control.serverPort());
}

void TinyTlsServer::handle(QSslSocket *control, const QByteArray &verb)
{
    m_verbs.append(verb);
    const auto answer = m_answers.find(verb);
    const QByteArray reply =
        answer == m_answers.end() ? usual(verb) : answer->second(control->sessionProtocol());
    control->write(reply + "\r\n");
    if (verb == "AUTH") {
        control->flush();
        control->startServerEncryption();
    }
    while (verb == "EPSV" && m_data.hasPendingConnections())
        m_data.next()->deleteLater(); // that of a LIST that was refused
    if (verb == "PROT")
        m_protected = reply.startsWith('2');
    if (verb == "LIST" && reply.startsWith('1'))
        sendListing(control);
}

QByteArray TinyTlsServer::usual(const QByteArray &verb) const
{
    if (verb == "AUTH")
        return "234 go on";
    if (verb == "USER")
        return "331 password?";
    if (verb == "PASS")
        return "230 welcome";
    if (verb == "EPSV")
        return "229 here (|||" + QByteArray::number(m_data.serverPort()) + "|)";
    if (verb == "LIST")
        return "150 here it comes";
    return verb == "FEAT" ? "500 what?" : "200 fine";
}

void TinyTlsServer::sendListing(QSslSocket *control)
{
    const auto end = [control](QSslSocket *data) {
        data->write("-rw-r--r-- 1 u g 5 Jan  1  2024 a.txt\r\n");
        data->disconnectFromHost();
        control->write("226 done\r\n");
    };
    const auto serve = [this, end] {
        QSslSocket *data = m_data.next();
        if (!m_protected) {
            end(data);
            return;
        }
        data->setSslConfiguration(m_configuration);
        QObject::connect(data, &QSslSocket::encrypted, data, [data, end] { end(data); });
        data->startServerEncryption();
    };
    if (m_data.hasPendingConnections())
        serve();
    else
        QObject::connect(&m_data, &QTcpServer::newConnection, control, serve,
                         Qt::SingleShotConnection);
}

} // namespace venlo::test
