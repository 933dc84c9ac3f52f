// The TLS handshake of the control connection.
#include "ftp/protocol/ControlChannel.h"

#include "ftp/protocol/Waiter.h"

namespace venlo
{

Result<ServerCertificate> ControlChannel::startTls(std::chrono::milliseconds limit, TlsRange range)
{
    pump();
    if (m_next || m_parser.broken() || m_parser.pending())
        return lost(QStringLiteral("the server sent something before the TLS handshake"));
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setProtocol(range == TlsRange::Only12 ? QSsl::TlsV1_2 : QSsl::TlsV1_2OrLater);
    configuration.setPeerVerifyMode(QSslSocket::QueryPeer);
    // Data connections resume this session; without persistence it could not be handed to them.
    configuration.setSslOption(QSsl::SslOptionDisableSessionPersistence, false);
    m_socket->setSslConfiguration(configuration);
    m_socket->setPeerVerifyName(m_host);
    m_socket->startClientEncryption();
    const WaitEnd end = m_waiter.until(
        [this] {
            return m_socket->isEncrypted() || m_socket->state() != QAbstractSocket::ConnectedState;
        },
        limit);
    if (end == WaitEnd::Cancelled) {
        close();
        return Error{ErrorClass::Cancelled, QStringLiteral("cancelled")};
    }
    if (!m_socket->isEncrypted())
        return lost(QStringLiteral("TLS handshake failed: ") +
                    (end == WaitEnd::TimedOut ? QStringLiteral("no answer in time")
                                              : m_socket->errorString()));
    trace(QStringLiteral("! ") + tlsVersion());
    const QString host =
        m_host.contains(QLatin1Char(':')) ? QLatin1Char('[') + m_host + QLatin1Char(']') : m_host;
    return ServerCertificate{host + QLatin1Char(':') + QString::number(m_port),
                             m_socket->peerCertificate(), m_socket->sslHandshakeErrors()};
}

QString ControlChannel::tlsVersion() const
{
    if (!encrypted() || m_socket->state() != QAbstractSocket::ConnectedState)
        return {};
    switch (m_socket->sessionProtocol()) {
    case QSsl::TlsV1_2:
        return QStringLiteral("TLSv1.2");
    case QSsl::TlsV1_3:
        return QStringLiteral("TLSv1.3");
    default:
        return QStringLiteral("TLS");
    }
}

} // namespace venlo
