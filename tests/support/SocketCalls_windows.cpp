#include "support/SocketCalls.h"

#include <algorithm>
#include <limits>

namespace venlo::test
{

namespace
{
/// Needed once before the first call; Qt may not have come to it yet.
void startSockets()
{
    [[maybe_unused]] static const int started = [] {
        WSADATA data = {};
        return WSAStartup(MAKEWORD(2, 2), &data);
    }();
}

int descriptor(SOCKET socket)
{
    if (socket == INVALID_SOCKET)
        return -1;
    SetHandleInformation(reinterpret_cast<HANDLE>(socket), HANDLE_FLAG_INHERIT, 0);
    return static_cast<int>(socket);
}

SOCKET socketOf(int fd)
{
    return static_cast<SOCKET>(fd);
}
} // namespace

int openSocket(int family)
{
    startSockets();
    return descriptor(::socket(family, SOCK_STREAM, 0));
}

int acceptOn(int fd)
{
    return descriptor(::accept(socketOf(fd), nullptr, nullptr));
}

void closeSocket(int fd)
{
    ::closesocket(socketOf(fd));
}

void dontWait(int fd)
{
    u_long on = 1;
    ::ioctlsocket(socketOf(fd), static_cast<long>(FIONBIO), &on);
    const BOOL atOnce = TRUE;
    ::setsockopt(socketOf(fd), IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char *>(&atOnce),
                 sizeof atOnce);
}

int pollSockets(pollfd *fds, unsigned count, int limitMs)
{
    return WSAPoll(fds, count, limitMs);
}

qint64 sendSome(int fd, const char *bytes, qint64 size)
{
    const auto part = static_cast<int>(std::min<qint64>(size, std::numeric_limits<int>::max()));
    const int sent = ::send(socketOf(fd), bytes, part, 0);
    if (sent == SOCKET_ERROR)
        return WSAGetLastError() == WSAEWOULDBLOCK ? 0 : -1;
    return sent;
}

/// A socket that gets a datagram from itself and never reads it.
int openBell()
{
    startSockets();
    const SOCKET bell = ::socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int size = sizeof address;
    auto *at = reinterpret_cast<sockaddr *>(&address);
    if (bell == INVALID_SOCKET || ::bind(bell, at, size) != 0 ||
        ::getsockname(bell, at, &size) != 0 || ::connect(bell, at, size) != 0)
        return -1;
    return descriptor(bell);
}

void ringBell(int fd)
{
    const char byte = 1;
    ::send(socketOf(fd), &byte, 1, 0);
}

void closeBell(int fd)
{
    closeSocket(fd);
}

} // namespace venlo::test
