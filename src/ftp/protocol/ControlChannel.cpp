#include "ftp/protocol/ControlChannel.h"

#include "ftp/protocol/Waiter.h"

#include <QRegularExpression>

#include <algorithm>

namespace venlo
{

namespace
{
constexpr char telnetIac = '\xff';
constexpr qsizetype shortestSecret = 4; // that may be searched for inside of words

bool hasForbiddenByte(const QByteArray &command)
{
    return command.contains('\r') || command.contains('\n') || command.contains('\0');
}

/// With 0xFF doubled, which is a Telnet command otherwise, and its line end.
QByteArray wireLine(QByteArray command)
{
    if (command.contains(telnetIac))
        command.replace(QByteArray(1, telnetIac), QByteArray(2, telnetIac));
    return command + "\r\n";
}

bool endsByPeer(QAbstractSocket::SocketError error)
{
    return error == QAbstractSocket::RemoteHostClosedError ||
           error == QAbstractSocket::SslHandshakeFailedError ||
           error == QAbstractSocket::SslInternalError;
}
} // namespace

ControlChannel::ControlChannel(Waiter &waiter, std::chrono::milliseconds replyLimit)
    : m_waiter(waiter), m_replyLimit(replyLimit), m_socket(std::make_unique<QSslSocket>())
{
}

Result<void> ControlChannel::connectTo(const QString &host, quint16 port,
                                       const QNetworkProxy &proxy, std::chrono::milliseconds limit)
{
    m_host = host;
    m_port = port;
    m_lostWords.clear();
    m_endedByPeer = false;
    m_socket = std::make_unique<QSslSocket>();
    m_socket->setReadBufferSize(ReplyParser::maxReply);
    m_socket->setProxy(proxy);
    m_socket->connectToHost(host, port);
    const WaitEnd end = m_waiter.until(
        [this] {
            return m_socket->state() == QAbstractSocket::ConnectedState ||
                   m_socket->state() == QAbstractSocket::UnconnectedState;
        },
        limit);
    if (m_socket->state() == QAbstractSocket::ConnectedState) {
        m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        m_socket->setSocketOption(QAbstractSocket::KeepAliveOption, 1);
        m_outstanding = 1; // the greeting
        return {};
    }
    const QString words =
        end == WaitEnd::TimedOut ? QStringLiteral("connect timed out") : m_socket->errorString();
    close();
    if (end == WaitEnd::Cancelled)
        return Error{ErrorClass::Cancelled, QStringLiteral("cancelled")};
    return Error{ErrorClass::Lost, words};
}

Result<void> ControlChannel::send(const QByteArray &command, const QByteArray &shown)
{
    if (hasForbiddenByte(command))
        return Error{ErrorClass::Local, QStringLiteral("a name or password holds a line end")};
    letStragglersCome();
    if (!isOpen())
        return lost(QStringLiteral("not connected"));
    trace(QStringLiteral("> ") + QString::fromUtf8(shown.isEmpty() ? command : shown));
    m_socket->write(wireLine(command));
    m_socket->flush();
    ++m_outstanding;
    return {};
}

Result<void> ControlChannel::sendTogether(const QList<QByteArray> &commands)
{
    if (std::any_of(commands.begin(), commands.end(), hasForbiddenByte))
        return Error{ErrorClass::Local, QStringLiteral("a name or password holds a line end")};
    letStragglersCome();
    if (!isOpen())
        return lost(QStringLiteral("not connected"));
    QByteArray lines;
    for (const QByteArray &command : commands) {
        trace(QStringLiteral("> ") + QString::fromUtf8(command));
        lines += wireLine(command);
    }
    m_socket->write(lines);
    m_socket->flush();
    m_outstanding += static_cast<int>(commands.size());
    return {};
}

Result<Reply> ControlChannel::command(const QByteArray &command, const QByteArray &shown)
{
    if (auto sent = send(command, shown); !sent)
        return sent.error();
    return readReply();
}

void ControlChannel::close()
{
    m_socket->abort();
    m_parser = ReplyParser();
    m_next.reset();
    m_outstanding = 0;
    m_stragglers = {};
    m_unasked = 0;
}

Error ControlChannel::lost(const QString &why)
{
    if (m_socket->state() != QAbstractSocket::UnconnectedState || m_lostWords.isEmpty()) {
        m_lostWords = withoutSecret(why);
        trace(QStringLiteral("! ") + why);
    }
    m_endedByPeer = m_endedByPeer || endsByPeer(m_socket->error());
    close();
    return Error{ErrorClass::Lost, m_lostWords};
}

void ControlChannel::trace(const QString &line) const
{
    if (m_trace)
        m_trace(withoutSecret(line));
}

QString ControlChannel::withoutSecret(QString text) const
{
    const QString hidden = QStringLiteral("****");
    if (m_secret.size() >= shortestSecret)
        return text.replace(m_secret, hidden);
    if (m_secret.isEmpty())
        return text;
    const QString alone = QStringLiteral("(?<![\\p{L}\\p{N}])") +
                          QRegularExpression::escape(m_secret) +
                          QStringLiteral("(?![\\p{L}\\p{N}])");
    return text.replace(QRegularExpression(alone, QRegularExpression::UseUnicodePropertiesOption),
                        hidden);
}

} // namespace venlo
