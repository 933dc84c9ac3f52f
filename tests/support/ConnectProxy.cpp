#include "support/ConnectProxy.h"

#include <QTcpSocket>
#include <QTimer>

#include <memory>

namespace venlo::test
{

namespace
{
constexpr int silentMs = 300;
} // namespace

bool ConnectProxy::start()
{
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
        while (QTcpSocket *client = m_server.nextPendingConnection())
            take(client);
    });
    return m_server.listen(QHostAddress::LocalHost);
}

QString ConnectProxy::text() const
{
    return QStringLiteral("127.0.0.1:%1").arg(m_server.serverPort());
}

void ConnectProxy::take(QTcpSocket *client)
{
    auto *target = new QTcpSocket(client);
    const auto head = std::make_shared<QByteArray>();
    QObject::connect(client, &QTcpSocket::readyRead, target, [this, client, target, head] {
        if (target->state() == QAbstractSocket::ConnectedState) {
            target->write(client->readAll());
            return;
        }
        *head += client->readAll();
        if (!head->endsWith("\r\n\r\n") || !head->startsWith("CONNECT "))
            return;
        m_asked.append(head->split(' ').value(1));
        const qsizetype colon = m_asked.last().lastIndexOf(':');
        target->connectToHost(QString::fromLatin1(m_asked.last().left(colon)),
                              m_asked.last().mid(colon + 1).toUShort());
    });
    QObject::connect(target, &QTcpSocket::connected, client,
                     [client] { client->write("HTTP/1.1 200 Connected\r\n\r\n"); });
    const auto kept = std::make_shared<QByteArray>();
    const auto total = std::make_shared<qint64>(0);
    auto *silence = new QTimer(client);
    silence->setSingleShot(true);
    QObject::connect(silence, &QTimer::timeout, client, &QTcpSocket::disconnectFromHost);
    QObject::connect(target, &QTcpSocket::readyRead, client,
                     [this, client, target, kept, total, head, silence] {
                         const QByteArray bytes = target->readAll();
                         *kept += bytes;
                         *total += bytes.size();
                         const bool first = head->split(' ').value(1) == m_asked.constFirst();
                         const bool cuts = !first && *total > freeBytes;
                         if (cuts && m_swallowed > 0)
                             silence->start(silentMs);
                         const qsizetype passed = kept->size() - (cuts ? m_swallowed : 0);
                         if (passed <= 0)
                             return;
                         client->write(kept->first(passed));
                         kept->remove(0, passed);
                     });
    QObject::connect(target, &QTcpSocket::disconnected, client, &QTcpSocket::disconnectFromHost);
    QObject::connect(client, &QTcpSocket::disconnected, target, &QTcpSocket::disconnectFromHost);
}

} // namespace venlo::test
