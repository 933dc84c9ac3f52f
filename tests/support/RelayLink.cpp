#include "support/RelayLink.h"

namespace venlo::test
{

namespace
{
constexpr int chunk = 64 * 1024;
constexpr int slowChunk = 1024;
constexpr int slowPauseMs = 10;
constexpr int writeLimitMs = 60'000;

bool readable(const Socket &socket)
{
    pollfd fd = {socket.fd(), POLLIN, 0};
    return socket.isValid() && ::poll(&fd, 1, 0) > 0 && fd.revents != 0;
}
} // namespace

RelayLink::RelayLink(quint16 upstream)
    : m_upstream(upstream), m_listener(Socket::listenOn(false, 0))
{
}

void RelayLink::addTo(std::vector<pollfd> &fds) const
{
    if (m_ended || m_stalled)
        return;
    for (const Socket *socket : {&m_listener, &m_client, &m_server}) {
        if (socket->isValid())
            fds.push_back({socket->fd(), POLLIN, 0});
    }
}

void RelayLink::move(const StopBell &bell)
{
    if (m_ended || m_stalled)
        return;
    if (m_listener.isValid() && readable(m_listener)) {
        m_client = m_listener.accept(bell, 0);
        m_listener.close();
        m_server = Socket::connectTo("127.0.0.1", m_upstream);
        if (!m_server.isValid())
            end();
    }
    if (readable(m_server))
        pump({&m_server, &m_client}, bell);
    if (!m_ended && !m_stalled && readable(m_client))
        pump({&m_client, &m_server}, bell);
}

void RelayLink::pump(Direction way, const StopBell &bell)
{
    const bool slow = m_fault && m_fault->kind == RelayFault::Kind::DataSlow;
    const QByteArray bytes = way.from->read(slow ? slowChunk : chunk);
    if (slow && bell.waitFor(slowPauseMs))
        return;
    if (bytes.isEmpty())
        end();
    else if (!m_draining)
        forward(way, bytes, bell);
}

void RelayLink::forward(Direction way, QByteArray bytes, const StopBell &bell)
{
    using Kind = RelayFault::Kind;
    const bool limited =
        m_fault && m_fault->kind >= Kind::DataDrop && m_fault->kind != Kind::DataSlow;
    const qint64 left = limited ? m_fault->bytes - m_moved : bytes.size();
    const bool last = limited && bytes.size() >= left;
    bytes.truncate(std::min<qint64>(left, bytes.size()));
    m_moved += bytes.size();
    if (!way.to->write(bytes, bell, writeLimitMs))
        end();
    else if (last)
        cut(way);
}

void RelayLink::cut(Direction way)
{
    switch (m_fault->kind) {
    case RelayFault::Kind::DataDrop:
        m_dropsControl = true;
        end();
        break;
    case RelayFault::Kind::DataReset:
        reset();
        break;
    case RelayFault::Kind::DataStall:
        m_stalled = true;
        break;
    default:
        way.to->close();
        m_draining = true;
    }
}

void RelayLink::end()
{
    m_client.close();
    m_server.close();
    m_ended = true;
}

void RelayLink::reset()
{
    if (m_client.isValid())
        m_client.reset();
    if (m_server.isValid())
        m_server.reset();
    m_ended = true;
}

} // namespace venlo::test
