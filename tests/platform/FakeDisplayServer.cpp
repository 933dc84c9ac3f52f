#include "platform/FakeDisplayServer.h"

#include <cstring>
#include <utility>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace venlo::test
{

namespace
{
constexpr int xPortBase = 6000;
constexpr int pollMs = 20;

int listenOn(int family, const sockaddr *address, socklen_t size)
{
    const int listener = socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (listener < 0 || bind(listener, address, size) != 0 || listen(listener, 8) != 0)
        qFatal("cannot listen");
    return listener;
}

int listenOnNetwork()
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return listenOn(AF_INET, reinterpret_cast<const sockaddr *>(&address), sizeof address);
}

bool readable(int fd)
{
    pollfd entry = {fd, POLLIN, 0};
    return poll(&entry, 1, pollMs) == 1;
}
} // namespace

FakeDisplayServer FakeDisplayServer::network(const QByteArray &wantedText)
{
    return {listenOnNetwork(), wantedText, true};
}

FakeDisplayServer FakeDisplayServer::silent()
{
    return {listenOnNetwork(), QByteArray(), false};
}

FakeDisplayServer FakeDisplayServer::local(const QByteArray &path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (static_cast<size_t>(path.size()) >= sizeof address.sun_path)
        qFatal("socket path too long");
    memcpy(address.sun_path, path.constData(), static_cast<size_t>(path.size()));
    return {listenOn(AF_UNIX, reinterpret_cast<const sockaddr *>(&address), sizeof address),
            QByteArray(), true};
}

FakeDisplayServer::FakeDisplayServer(int listener, QByteArray wantedText, bool answers)
    : m_listener(listener), m_wantedText(std::move(wantedText)), m_answers(answers),
      m_thread([this](const std::stop_token &stop) { serve(stop); })
{
}

FakeDisplayServer::~FakeDisplayServer()
{
    m_thread.request_stop();
    m_thread.join();
    close(m_listener);
}

QByteArray FakeDisplayServer::number() const
{
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    if (getsockname(m_listener, reinterpret_cast<sockaddr *>(&address), &size) != 0)
        qFatal("no socket name");
    return QByteArray::number(ntohs(address.sin_port) - xPortBase);
}

QByteArray FakeDisplayServer::display() const
{
    return "127.0.0.1:" + number();
}

void FakeDisplayServer::serve(const std::stop_token &stop) const
{
    while (!stop.stop_requested()) {
        if (!readable(m_listener))
            continue;
        const int connection = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        for (int waits = 0; waits < 200 && !stop.stop_requested(); ++waits) {
            if (!readable(connection))
                continue;
            if (m_answers)
                answer(connection);
            break;
        }
        while (!m_answers && !stop.stop_requested())
            readable(m_listener);
        close(connection);
    }
}

void FakeDisplayServer::answer(int connection) const
{
    QByteArray request(4096, '\0');
    const ssize_t size = recv(connection, request.data(), static_cast<size_t>(request.size()), 0);
    request.truncate(size < 0 ? 0 : size);
    const char byte = m_wantedText.isEmpty() || request.contains(m_wantedText) ? 1 : 0;
    if (size > 0)
        send(connection, &byte, 1, MSG_NOSIGNAL);
}

} // namespace venlo::test
