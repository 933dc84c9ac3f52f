#include "support/Socket.h"

#include "support/SocketCalls.h"

namespace venlo::test
{

namespace
{

struct Address {
    sockaddr_storage storage = {};
    socklen_t size = 0;
    [[nodiscard]] const sockaddr *get() const
    {
        return reinterpret_cast<const sockaddr *>(&storage);
    }
};

Address addressOf(const QByteArray &text, quint16 port)
{
    Address address;
    if (text.contains(':')) {
        auto *v6 = reinterpret_cast<sockaddr_in6 *>(&address.storage);
        v6->sin6_family = AF_INET6;
        v6->sin6_port = htons(port);
        if (::inet_pton(AF_INET6, text.constData(), &v6->sin6_addr) == 1)
            address.size = sizeof *v6;
    } else {
        auto *v4 = reinterpret_cast<sockaddr_in *>(&address.storage);
        v4->sin_family = AF_INET;
        v4->sin_port = htons(port);
        if (::inet_pton(AF_INET, text.constData(), &v4->sin_addr) == 1)
            address.size = sizeof *v4;
    }
    return address;
}

Socket openFor(const Address &address)
{
    return address.size == 0 ? Socket() : Socket(openSocket(address.storage.ss_family));
}

pollfd asked(int fd, short events)
{
    pollfd question = {};
    question.fd = static_cast<decltype(question.fd)>(fd);
    question.events = events;
    return question;
}

/// Sockets are numbers of another type on Windows.
auto number(int fd)
{
    return static_cast<decltype(pollfd::fd)>(fd);
}

template <typename Option>
void setOption(int fd, int name, const Option &value)
{
    ::setsockopt(number(fd), SOL_SOCKET, name, reinterpret_cast<const char *>(&value),
                 sizeof value);
}

bool waitFor(int fd, short events, const StopBell &bell, int limitMs)
{
    pollfd fds[2] = {asked(fd, events), asked(bell.fd(), POLLIN)};
    return pollSockets(fds, 2, limitMs) > 0 && fds[1].revents == 0 && fds[0].revents != 0;
}

} // namespace

StopBell::StopBell() : m_fd(openBell()) {}

StopBell::~StopBell()
{
    closeBell(m_fd);
}

bool StopBell::waitFor(int ms) const
{
    pollfd fd = asked(m_fd, POLLIN);
    return pollSockets(&fd, 1, ms) > 0;
}

void StopBell::ring() const
{
    ringBell(m_fd);
}

Socket &Socket::operator=(Socket &&other) noexcept
{
    if (this != &other) {
        close();
        m_fd = std::exchange(other.m_fd, -1);
    }
    return *this;
}

Socket Socket::listenOn(bool ipv6, quint16 port)
{
    const Address address = addressOf(ipv6 ? "::1" : "127.0.0.1", port);
    Socket socket = openFor(address);
#ifndef _WIN32 // there it would let two sockets have one port
    setOption(socket.fd(), SO_REUSEADDR, 1);
#endif
    if (::bind(number(socket.fd()), address.get(), address.size) != 0 ||
        ::listen(number(socket.fd()), 64) != 0)
        return {};
    return socket;
}

Socket Socket::connectTo(const QByteArray &address, quint16 port)
{
    const Address target = addressOf(address, port);
    Socket socket = openFor(target);
    // Loopback answers at once, with a connection or a refusal.
    if (!socket.isValid() || ::connect(number(socket.fd()), target.get(), target.size) != 0)
        return {};
    dontWait(socket.fd());
    return socket;
}

quint16 Socket::port() const
{
    Address address;
    address.size = sizeof address.storage;
    if (::getsockname(number(m_fd), reinterpret_cast<sockaddr *>(&address.storage),
                      &address.size) != 0)
        return 0;
    if (address.storage.ss_family == AF_INET6)
        return ntohs(reinterpret_cast<sockaddr_in6 *>(&address.storage)->sin6_port);
    return ntohs(reinterpret_cast<sockaddr_in *>(&address.storage)->sin_port);
}

Socket Socket::accept(const StopBell &bell, int limitMs) const
{
    if (!waitReadable(bell, limitMs))
        return {};
    Socket accepted(acceptOn(m_fd));
    if (accepted.isValid())
        dontWait(accepted.fd());
    return accepted;
}

bool Socket::waitReadable(const StopBell &bell, int limitMs) const
{
    return waitFor(m_fd, POLLIN, bell, limitMs);
}

bool Socket::waitWritable(const StopBell &bell, int limitMs) const
{
    return waitFor(m_fd, POLLOUT, bell, limitMs);
}

QByteArray Socket::read(int max) const
{
    QByteArray bytes(max, Qt::Uninitialized);
    const auto got = ::recv(number(m_fd), bytes.data(), max, 0);
    bytes.resize(got > 0 ? static_cast<qsizetype>(got) : 0);
    return bytes;
}

qint64 Socket::writeSome(const char *bytes, qint64 size) const
{
    return sendSome(m_fd, bytes, size);
}

bool Socket::write(const QByteArray &bytes, const StopBell &bell, int limitMs) const
{
    qint64 done = 0;
    while (done < bytes.size()) {
        const qint64 sent = writeSome(bytes.constData() + done, bytes.size() - done);
        if (sent < 0 || (sent == 0 && !waitWritable(bell, limitMs)))
            return false;
        done += sent;
    }
    return true;
}

void Socket::close()
{
    if (m_fd >= 0)
        closeSocket(std::exchange(m_fd, -1));
}

void Socket::reset()
{
    const linger none{1, 0};
    setOption(m_fd, SO_LINGER, none);
    close();
}

void Socket::shutDown() const
{
#ifdef _WIN32
    constexpr int both = SD_BOTH;
#else
    constexpr int both = SHUT_RDWR;
#endif
    ::shutdown(number(m_fd), both);
}

} // namespace venlo::test
