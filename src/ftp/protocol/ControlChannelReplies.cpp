// How the control connection takes replies and accounts for them.
#include "ftp/protocol/ControlChannel.h"

#include "ftp/protocol/Waiter.h"

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
constexpr int firstMessage = 300;    // replies from here on are read by nobody but a person
constexpr int mostUnasked = 100;     ///< a server that goes on like that would never let go
} // namespace

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

} // namespace venlo
