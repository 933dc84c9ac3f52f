#include "support/ScriptedServer.h"

#include "support/ScriptedSession.h"

#include <utility>

namespace venlo::test
{

namespace
{

constexpr int acceptLimitMs = 60'000;

} // namespace

ScriptedServer::ScriptedServer(ServerOptions options)
{
    m_context.options = std::move(options);
}

ScriptedServer::~ScriptedServer()
{
    stop();
}

bool ScriptedServer::start()
{
    stop();
    m_context.bell = std::make_unique<StopBell>();
    m_listener = Socket::listenOn(m_context.options.ipv6, m_port);
    if (!m_listener.isValid())
        return false;
    m_port = m_listener.port();
    m_acceptor = std::thread([this] { listen(); });
    return true;
}

void ScriptedServer::stop()
{
    if (!m_acceptor.joinable())
        return;
    m_context.bell->ring();
    m_acceptor.join();
    m_listener.close();
    for (std::thread &thread : m_threads)
        thread.join();
    m_threads.clear();
}

QString ScriptedServer::host() const
{
    return m_context.options.ipv6 ? QStringLiteral("::1") : QStringLiteral("127.0.0.1");
}

QString ScriptedServer::server() const
{
    const QString pattern =
        m_context.options.ipv6 ? QStringLiteral("[%1]:%2") : QStringLiteral("%1:%2");
    return pattern.arg(host()).arg(m_port);
}

void ScriptedServer::listen()
{
    while (!m_context.bell->hasRung()) {
        Socket socket = m_listener.accept(*m_context.bell, acceptLimitMs);
        if (!socket.isValid())
            continue;
        auto shared = std::make_shared<Socket>(std::move(socket));
        m_threads.emplace_back([this, shared] { serve(std::move(*shared)); });
    }
}

void ScriptedServer::serve(Socket socket)
{
    ScriptedSession session(m_context, std::move(socket));
    {
        const std::scoped_lock lock(m_mutex);
        m_sessions.push_back(&session);
    }
    session.run();
    const std::scoped_lock lock(m_mutex);
    m_sessions.remove(&session);
}

void ScriptedServer::say(const QByteArray &bytes)
{
    const std::scoped_lock lock(m_mutex);
    for (ScriptedSession *session : m_sessions)
        session->say(bytes);
}

void ScriptedServer::dropConnections()
{
    const std::scoped_lock lock(m_mutex);
    for (const ScriptedSession *session : m_sessions)
        session->shutDown();
}

} // namespace venlo::test
