#include "support/RelaySession.h"

#include <QRegularExpression>

#include <netinet/in.h>
#include <sys/socket.h>

namespace venlo::test
{

namespace
{
using Kind = RelayFault::Kind;
constexpr int writeLimitMs = 5'000;
constexpr int delayMs = 120;
constexpr int readSize = 64 * 1024;

/// A port where nobody listens, and nobody else can begin to.
Socket boundOnly()
{
    Socket socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(socket.fd(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        return {};
    return socket;
}

bool isTransfer(const QByteArray &verb)
{
    return verb == "LIST" || verb == "MLSD" || verb == "NLST" || verb == "RETR" || verb == "STOR";
}

/// The port in a reply to EPSV or PASV; 0 when there is none.
quint16 portIn(const QByteArray &reply)
{
    static const QRegularExpression extended(QStringLiteral("\\|(\\d+)\\|\\)"));
    static const QRegularExpression plain(QStringLiteral("(\\d+),(\\d+)\\)?\\.?\\s*$"));
    const QString text = QString::fromLatin1(reply);
    if (const auto match = extended.match(text); match.hasMatch())
        return static_cast<quint16>(match.captured(1).toUInt());
    if (const auto match = plain.match(text); match.hasMatch())
        return static_cast<quint16>(match.captured(1).toUInt() * 256 + match.captured(2).toUInt());
    return 0;
}

QByteArray passiveReply(bool extended, const QByteArray &host, quint16 port)
{
    if (extended) {
        const QByteArray inside = host.isEmpty() ? QByteArray("||") : "1|" + host + '|';
        return "229 Entering Extended Passive Mode (|" + inside + QByteArray::number(port) +
               "|)\r\n";
    }
    QByteArray commas = host.isEmpty() ? QByteArray("127.0.0.1") : host;
    commas.replace('.', ',');
    return "227 Entering Passive Mode (" + commas + ',' + QByteArray::number(port / 256) + ',' +
           QByteArray::number(port % 256) + ")\r\n";
}

bool isLastLine(const QByteArray &first, const QByteArray &line)
{
    return line.size() >= 4 && line.at(3) == ' ' && line.left(3) == first.left(3);
}
} // namespace

RelaySession::RelaySession(FaultRelay &relay, Socket client, Socket server)
    : m_relay(relay), m_client(std::move(client)), m_server(std::move(server))
{
}

void RelaySession::run()
{
    m_verb = "CONNECT";
    m_fault = m_relay.faultOf(m_verb);
    if (m_fault && !passes(*m_fault))
        m_swallow = true;
    loop();
    if (m_bell.hasRung()) {
        end(true);
        if (m_link)
            m_link->reset();
    }
    m_link.reset();
    m_client.close();
    m_server.close();
    m_finished = true;
}

void RelaySession::loop()
{
    while (!m_over) {
        std::vector<pollfd> fds{
            {m_bell.fd(), POLLIN, 0}, {m_client.fd(), POLLIN, 0}, {m_server.fd(), POLLIN, 0}};
        if (m_link)
            m_link->addTo(fds);
        (void)::poll(fds.data(), fds.size(), -1);
        if (fds[0].revents != 0)
            return;
        if (m_link) {
            m_link->move(m_bell);
            if (m_link->dropsControl())
                return;
            if (m_link->ended() && !m_held.isEmpty())
                completion(std::exchange(m_held, {}));
        }
        if (!m_over && fds[1].revents != 0)
            fromClient();
        if (!m_over && fds[2].revents != 0)
            fromServer();
    }
}

void RelaySession::fromClient()
{
    const QByteArray bytes = m_client.read(readSize);
    if (bytes.isEmpty())
        m_over = true;
    m_commands += bytes;
    for (qsizetype at = m_commands.indexOf('\n'); at >= 0 && !m_over;
         at = m_commands.indexOf('\n')) {
        const QByteArray line = m_commands.left(at + 1);
        m_commands.remove(0, at + 1);
        command(line);
    }
}

void RelaySession::command(const QByteArray &line)
{
    m_verb = line.trimmed().split(' ').value(0).toUpper();
    m_fault = m_relay.faultOf(m_verb);
    if (m_fault && !passes(*m_fault))
        return;
    if (m_fault && m_fault->kind >= Kind::DataDrop && m_link)
        m_link->setFault(*m_fault);
    if (!m_server.write(line, m_bell, writeLimitMs))
        m_over = true;
}

bool RelaySession::passes(const RelayFault &fault)
{
    switch (fault.kind) {
    case Kind::Drop:
        end(false);
        return false;
    case Kind::Reset:
        end(true);
        return false;
    case Kind::Stall:
        return false;
    case Kind::Reply:
        say(fault.reply);
        if (fault.reply.startsWith("421"))
            end(false);
        return false;
    case Kind::HalfReply:
        say("25");
        return false;
    case Kind::HalfReplyDrop:
        say("250-half");
        end(false);
        return false;
    case Kind::Garbage:
        say(QByteArray("\x01\xff\x00\x80 <html>\r\n", 12));
        return false;
    case Kind::Delay:
        (void)m_bell.waitFor(delayMs);
        return true;
    default:
        return true;
    }
}

void RelaySession::fromServer()
{
    const QByteArray bytes = m_server.read(readSize);
    if (bytes.isEmpty())
        m_over = true;
    m_lines += bytes;
    for (qsizetype at = m_lines.indexOf('\n'); at >= 0 && !m_over; at = m_lines.indexOf('\n')) {
        const QByteArray line = m_lines.left(at + 1);
        m_lines.remove(0, at + 1);
        m_reply += line;
        if (isLastLine(m_reply, line))
            reply(std::exchange(m_reply, {}));
    }
}

void RelaySession::reply(QByteArray bytes)
{
    if (std::exchange(m_swallow, false))
        return;
    if (bytes.startsWith('1')) {
        say(bytes);
        return;
    }
    if ((m_verb == "EPSV" || m_verb == "PASV") && bytes.startsWith("22"))
        bytes = rewritten(bytes);
    // A completion that overtakes the data would blur what the fault is.
    if (isTransfer(m_verb) && bytes.startsWith('2') && m_link && m_link->hasFault() &&
        !m_link->ended()) {
        m_held = bytes;
        return;
    }
    completion(bytes);
}

void RelaySession::completion(QByteArray bytes)
{
    const auto fault = std::exchange(m_fault, {});
    const Kind kind = fault ? fault->kind : Kind::Delay;
    if (kind == Kind::DropAfter || kind == Kind::ResetAfter)
        end(kind == Kind::ResetAfter);
    else if (kind == Kind::ReplyAfter || kind == Kind::DataCut)
        say(fault->reply);
    else if (kind != Kind::StallAfter)
        say(bytes);
    if (kind == Kind::ReplyAfter && fault->reply.startsWith("421"))
        end(false);
}

QByteArray RelaySession::rewritten(const QByteArray &bytes)
{
    const bool extended = bytes.startsWith("229");
    m_link = std::make_unique<RelayLink>(portIn(bytes));
    if (!m_closed.isValid())
        m_closed = boundOnly();
    if (m_fault && m_fault->kind == Kind::ClosedPort)
        return passiveReply(extended, {}, m_closed.port());
    if (m_fault && m_fault->kind == Kind::WrongAddress)
        return passiveReply(extended, "192.0.2.1", m_link->port());
    return passiveReply(extended, {}, m_link->port());
}

void RelaySession::say(const QByteArray &bytes)
{
    if (!m_client.write(bytes, m_bell, writeLimitMs))
        m_over = true;
}

void RelaySession::end(bool withReset)
{
    if (withReset && m_client.isValid())
        m_client.reset();
    m_over = true;
}

} // namespace venlo::test
