#include "ftp/protocol/ControlChannel.h"

#include "ftp/protocol/Waiter.h"

#include <QRegularExpression>

#include <algorithm>

namespace venlo
{

using namespace std::chrono_literals;

namespace
{
// How long a cancelled command may still bring its reply, so that the session stays in step.
constexpr auto cancelGrace = 1s; // a server that answers within it keeps its session
constexpr int serviceClosing = 421;
constexpr int directoryStatus = 212;
constexpr int fileStatus = 213;
constexpr qsizetype mostTraced = 30; // lines of a reply
constexpr char telnetIac = '\xff';
constexpr qsizetype shortestSecret = 4; // that may be searched for inside of words
constexpr int firstMessage = 300;       // replies from here on are read by nobody but a person
constexpr int mostUnasked = 100;        ///< a server that goes on like that would never let go

bool hasForbiddenByte(const QByteArray &command)
{
    return command.contains('\r') || command.contains('\n') || command.contains('\0');
}

/// With 0xFF doubled, which is a Telnet command otherwise, and its line end.
QByteArray wireLine(QByteArray command)
{
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

void ControlChannel::letStragglersCome()
{
    if (m_stragglers.hasExpired())
        return;
    const std::chrono::milliseconds left(m_stragglers.remainingTime());
    m_stragglers = {};
    (void)m_waiter.untilEvenIfCancelled([this] { return !isOpen(); }, left);
}

void ControlChannel::pump()
{
    // What comes behind the next reply stays with the system: many may be on the way.
    if (!m_next)
        m_next = m_parser.next();
    if (!m_next && m_socket->bytesAvailable() > 0) {
        m_parser.feed(m_socket->readAll());
        m_next = m_parser.next();
    }
}

bool ControlChannel::hasNews()
{
    pump();
    return m_next || m_parser.broken() || m_socket->state() != QAbstractSocket::ConnectedState;
}

bool ControlChannel::isOpen()
{
    if (m_socket->state() == QAbstractSocket::UnconnectedState)
        return false;
    pump();
    while (m_next && m_outstanding == 0) {
        const Reply unasked = *m_next;
        m_next.reset();
        trace(QStringLiteral("< (unasked) ") + unasked.text());
        if (unasked.code == serviceClosing || ++m_unasked > mostUnasked) {
            (void)lost(unasked.code == serviceClosing
                           ? unasked.text()
                           : QStringLiteral("replies without end that nobody asked for"));
            return false;
        }
        pump();
    }
    if (m_parser.broken()) {
        (void)lost(QStringLiteral("the server sent something that is no reply"));
        return false;
    }
    return m_socket->state() == QAbstractSocket::ConnectedState;
}

Result<Reply> ControlChannel::accounted(Reply reply)
{
    if (m_outstanding > 0)
        --m_outstanding;
    traceReply(reply);
    if (reply.code == serviceClosing) {
        Error error = lost(reply.text());
        error.replyCode = reply.code;
        return error;
    }
    if (reply.code >= firstMessage) {
        for (QString &line : reply.lines)
            line = withoutSecret(line);
    }
    return reply;
}

void ControlChannel::traceReply(const Reply &reply) const
{
    // What STAT shows of a directory is no dialogue.
    const bool status = reply.code == directoryStatus || reply.code == fileStatus;
    if (reply.lines.size() <= (status ? 3 : mostTraced))
        trace(QStringLiteral("< ") + reply.text());
    else
        trace(QStringLiteral("< %1 %2 (%3 lines)")
                  .arg(reply.code)
                  .arg(reply.lines.first())
                  .arg(reply.lines.size()));
}

std::optional<Reply> ControlChannel::takeReply()
{
    pump();
    if (!m_next)
        return std::nullopt;
    Reply reply = *std::move(m_next);
    m_next.reset();
    auto result = accounted(std::move(reply));
    if (!result)
        return Reply{serviceClosing, {result.error().words}};
    return result.value();
}

Result<Reply> ControlChannel::whenReplyCame(bool timedOut)
{
    if (m_next) {
        Reply reply = *std::move(m_next);
        m_next.reset();
        return accounted(std::move(reply));
    }
    if (m_parser.broken())
        return lost(QStringLiteral("the server sent something that is no reply"));
    if (timedOut)
        return lost(QStringLiteral("no reply in time"));
    return lost(m_socket->errorString());
}

Result<Reply> ControlChannel::readReply()
{
    WaitEnd end = m_waiter.until([this] { return hasNews(); }, m_replyLimit);
    if (end == WaitEnd::Cancelled) {
        end = m_waiter.untilEvenIfCancelled([this] { return hasNews(); }, cancelGrace);
        if (end != WaitEnd::Done) {
            Error error = lost(QStringLiteral("cancelled while the server did not answer"));
            error.kind = ErrorClass::Cancelled;
            return error;
        }
    }
    return whenReplyCame(end == WaitEnd::TimedOut);
}

Result<Reply> ControlChannel::readReplyWithin(std::chrono::milliseconds limit)
{
    const WaitEnd end = m_waiter.untilEvenIfCancelled([this] { return hasNews(); }, limit);
    return whenReplyCame(end == WaitEnd::TimedOut);
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
