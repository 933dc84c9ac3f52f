#include "support/FaultRelay.h"

#include "support/RelaySession.h"

namespace venlo::test
{

namespace
{
constexpr int acceptLimitMs = 60'000;
}

FaultRelay::FaultRelay(quint16 upstream) : m_upstream(upstream) {}

FaultRelay::~FaultRelay()
{
    stop();
}

bool FaultRelay::start()
{
    stop();
    m_bell = std::make_unique<StopBell>();
    m_listener = Socket::listenOn(false, m_port);
    if (!m_listener.isValid())
        return false;
    m_port = m_listener.port();
    m_acceptor = std::thread([this] { listen(); });
    return true;
}

void FaultRelay::stop()
{
    if (!m_acceptor.joinable())
        return;
    m_bell->ring();
    m_acceptor.join();
    m_listener.close();
    (void)dropConnections();
    reap(true);
}

QString FaultRelay::server() const
{
    return QStringLiteral("127.0.0.1:%1").arg(m_port);
}

void FaultRelay::listen()
{
    while (!m_bell->hasRung()) {
        Socket client = m_listener.accept(*m_bell, acceptLimitMs);
        reap(false);
        if (!client.isValid())
            continue;
        Socket server = Socket::connectTo("127.0.0.1", m_upstream);
        if (!server.isValid())
            continue;
        auto session = std::make_shared<RelaySession>(*this, std::move(client), std::move(server));
        const std::scoped_lock lock(m_mutex);
        m_running.push_back({session, std::thread([session] { session->run(); })});
    }
}

/// Joins the threads of sessions that have ended.
void FaultRelay::reap(bool all)
{
    std::list<Running> ended;
    {
        const std::scoped_lock lock(m_mutex);
        for (auto it = m_running.begin(); it != m_running.end();) {
            const auto next = std::next(it);
            if (all || it->session->isOver())
                ended.splice(ended.end(), m_running, it);
            it = next;
        }
    }
    for (Running &running : ended)
        running.thread.join();
}

int FaultRelay::dropConnections()
{
    const std::scoped_lock lock(m_mutex);
    int dropped = 0;
    for (const Running &running : m_running) {
        dropped += running.session->isOver() ? 0 : 1;
        running.session->drop();
    }
    return dropped;
}

void FaultRelay::setFault(std::optional<RelayFault> fault)
{
    const std::scoped_lock lock(m_mutex);
    m_fault = std::move(fault);
    m_verbs.clear();
    m_hits = 0;
}

int FaultRelay::hits() const
{
    const std::scoped_lock lock(m_mutex);
    return m_hits;
}

QList<QByteArray> FaultRelay::verbs() const
{
    const std::scoped_lock lock(m_mutex);
    return m_verbs;
}

std::optional<RelayFault> FaultRelay::faultOf(const QByteArray &verb)
{
    const std::scoped_lock lock(m_mutex);
    m_verbs.append(verb);
    if (!m_fault || m_fault->verb != verb)
        return std::nullopt;
    const auto occurrence = m_verbs.count(verb);
    const bool hit =
        m_fault->always ? occurrence >= m_fault->occurrence : occurrence == m_fault->occurrence;
    if (!hit)
        return std::nullopt;
    ++m_hits;
    return m_fault;
}

} // namespace venlo::test
