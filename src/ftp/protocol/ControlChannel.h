#pragma once

#include "ftp/protocol/Reply.h"
#include "ftp/protocol/ServerCertificate.h"
#include "shared/Result.h"

#include <QDeadlineTimer>
#include <QHostAddress>
#include <QList>
#include <QNetworkProxy>
#include <QSslConfiguration>
#include <QSslSocket>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace venlo
{

class Waiter;

/// The control connection (RFC 959, 2.3): sends one command line at a time and hands out complete
/// replies in order. Counts what is outstanding, so that a reply can never be taken for that of
/// another command; whatever breaks that count closes the connection. Owned by FtpClient.
class ControlChannel
{
public:
    using Trace = std::function<void(const QString &)>;

    ControlChannel(Waiter &waiter, std::chrono::milliseconds replyLimit);

    [[nodiscard]] Result<void> connectTo(const QString &host, quint16 port,
                                         const QNetworkProxy &proxy,
                                         std::chrono::milliseconds limit);
    /// The TLS handshake (RFC 4217, 4), TLS 1.2 or newer. It succeeds with any certificate: nothing
    /// secret may be sent before somebody has judged it. Bytes that came before it are refused,
    /// because whoever sat on the line could have put replies there.
    enum class TlsRange { From12, Only12 };
    [[nodiscard]] Result<ServerCertificate> startTls(std::chrono::milliseconds limit,
                                                     TlsRange range);
    [[nodiscard]] bool encrypted() const { return m_socket->isEncrypted(); }
    /// "TLSv1.3", empty on a plain connection.
    [[nodiscard]] QString tlsVersion() const;
    /// What a data connection needs to resume this connection's TLS session.
    [[nodiscard]] QSslConfiguration tlsSession() const { return m_socket->sslConfiguration(); }
    /// The peer ended the connection, or no TLS could be agreed with it; nothing else closed it.
    [[nodiscard]] bool endedByPeer() const { return m_endedByPeer; }
    /// Sends a command. CR, LF and NUL are refused before a byte leaves; 0xFF is doubled (RFC 854).
    /// shown is what the trace gets instead of a secret.
    [[nodiscard]] Result<void> send(const QByteArray &command, const QByteArray &shown = {});
    /// Several commands in one go; their replies come in order. None leaves when one is refused.
    [[nodiscard]] Result<void> sendTogether(const QList<QByteArray> &commands);
    /// The next reply. 421 is a lost connection whatever was asked.
    [[nodiscard]] Result<Reply> readReply();
    /// The next reply if it is complete already.
    [[nodiscard]] std::optional<Reply> takeReply();
    /// The same as readReply within a limit of its own and without looking at Cancel.
    [[nodiscard]] Result<Reply> readReplyWithin(std::chrono::milliseconds limit);
    [[nodiscard]] Result<Reply> command(const QByteArray &command, const QByteArray &shown = {});

    /// False once the connection is known to be gone; looks at what has arrived unasked.
    [[nodiscard]] bool isOpen();
    /// A reply waits, or none can come any more.
    [[nodiscard]] bool hasNews();
    void close();
    /// Bytes that one reply may have.
    void setLongestReply(int bytes) { m_parser.setLongest(bytes); }
    [[nodiscard]] int outstanding() const { return m_outstanding; }
    /// A preliminary reply is not the last one of its command.
    void expectOneMore() { ++m_outstanding; }
    /// What still comes was not asked for.
    void expectNothing() { m_outstanding = 0; }
    /// Some of that may still be on its way: until then the next command waits.
    void waitForStragglers(std::chrono::milliseconds limit)
    {
        m_stragglers.setRemainingTime(limit);
    }

    [[nodiscard]] QHostAddress localAddress() const { return m_socket->localAddress(); }
    [[nodiscard]] QHostAddress peerAddress() const { return m_socket->peerAddress(); }
    [[nodiscard]] QString peerName() const { return m_host; }
    void setTrace(Trace trace) { m_trace = std::move(trace); }
    /// A password that no trace, error or refusal may show; one shorter than four characters, which
    /// is a part of many words, only where it stands alone.
    void setSecret(const QString &secret) { m_secret = secret; }
    [[nodiscard]] QString withoutSecret(QString text) const;
    void trace(const QString &line) const;
    [[nodiscard]] Error lost(const QString &why);

private:
    void pump();
    void letStragglersCome();
    [[nodiscard]] Result<Reply> accounted(Reply reply);
    void traceReply(const Reply &reply) const;
    [[nodiscard]] Result<Reply> whenReplyCame(bool timedOut);

    Waiter &m_waiter;
    std::chrono::milliseconds m_replyLimit;
    std::unique_ptr<QSslSocket> m_socket; ///< a new one for every connection
    ReplyParser m_parser;
    std::optional<Reply> m_next;
    QString m_host;
    quint16 m_port = 0;
    QString m_lostWords;
    QString m_secret;
    Trace m_trace;
    int m_outstanding = 0;
    QDeadlineTimer m_stragglers;
    int m_unasked = 0; ///< replies of this connection that nobody asked for
    bool m_endedByPeer = false;
};

} // namespace venlo
