#include "support/SocketCalls.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace venlo::test
{

int openSocket(int family)
{
    return ::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
}

int acceptOn(int fd)
{
    return ::accept4(fd, nullptr, nullptr, SOCK_CLOEXEC);
}

void closeSocket(int fd)
{
    ::close(fd);
}

void dontWait(int fd)
{
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
    const int on = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

int pollSockets(pollfd *fds, unsigned count, int limitMs)
{
    return ::poll(fds, count, limitMs);
}

qint64 sendSome(int fd, const char *bytes, qint64 size)
{
    const auto sent = ::send(fd, bytes, static_cast<size_t>(size), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0)
        return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR ? 0 : -1;
    return sent;
}

int openBell()
{
    return ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
}

void ringBell(int fd)
{
    ::eventfd_write(fd, 1);
}

void closeBell(int fd)
{
    ::close(fd);
}

} // namespace venlo::test
