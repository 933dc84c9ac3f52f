#include "support/Socket.h"

#include <cerrno>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

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
    return address.size == 0
               ? Socket()
               : Socket(::socket(address.storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0));
}

void dontWait(int fd)
{
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
    const int on = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

bool waitFor(int fd, short events, const StopBell &bell, int limitMs)
{
    pollfd fds[2] = {{fd, events, 0}, {bell.fd(), POLLIN, 0}};
    return ::poll(fds, 2, limitMs) > 0 && fds[1].revents == 0 && fds[0].revents != 0;
}

} // namespace

StopBell::StopBell() : m_fd(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

StopBell::~StopBell()
{
    ::close(m_fd);
}

bool StopBell::waitFor(int ms) const
{
    pollfd fd = {m_fd, POLLIN, 0};
    return ::poll(&fd, 1, ms) > 0;
}

void StopBell::ring() const
{
    ::eventfd_write(m_fd, 1);
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
    const int on = 1;
    ::setsockopt(socket.fd(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (::bind(socket.fd(), address.get(), address.size) != 0 || ::listen(socket.fd(), 64) != 0)
        return {};
    return socket;
}

Socket Socket::connectTo(const QByteArray &address, quint16 port)
{
    const Address target = addressOf(address, port);
    Socket socket = openFor(target);
    // Loopback answers at once, with a connection or a refusal.
    if (!socket.isValid() || ::connect(socket.fd(), target.get(), target.size) != 0)
        return {};
    dontWait(socket.fd());
    return socket;
}

quint16 Socket::port() const
{
    Address address;
    address.size = sizeof address.storage;
    if (::getsockname(m_fd, reinterpret_cast<sockaddr *>(&address.storage), &address.size) != 0)
        return 0;
    if (address.storage.ss_family == AF_INET6)
        return ntohs(reinterpret_cast<sockaddr_in6 *>(&address.storage)->sin6_port);
    return ntohs(reinterpret_cast<sockaddr_in *>(&address.storage)->sin_port);
}

Socket Socket::accept(const StopBell &bell, int limitMs) const
{
    if (!waitReadable(bell, limitMs))
        return {};
    Socket accepted(::accept4(m_fd, nullptr, nullptr, SOCK_CLOEXEC));
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
    const auto got = ::recv(m_fd, bytes.data(), static_cast<size_t>(max), 0);
    bytes.resize(got > 0 ? static_cast<qsizetype>(got) : 0);
    return bytes;
}

qint64 Socket::writeSome(const char *bytes, qint64 size) const
{
    const auto sent = ::send(m_fd, bytes, static_cast<size_t>(size), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0)
        return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR ? 0 : -1;
    return sent;
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
        ::close(std::exchange(m_fd, -1));
}

void Socket::reset()
{
    const linger none{1, 0};
    ::setsockopt(m_fd, SOL_SOCKET, SO_LINGER, &none, sizeof none);
    close();
}

void Socket::shutDown() const
{
    ::shutdown(m_fd, SHUT_RDWR);
}

} // namespace venlo::test
