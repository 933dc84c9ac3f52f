#pragma once

#ifdef _WIN32
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#endif

#include <QtGlobal>

namespace venlo::test
{

// What the systems call differently. A descriptor is an int on both: the numbers that Windows gives
// its sockets fit.

/// Not handed on to programs that are started; -1 on an error.
[[nodiscard]] int openSocket(int family);
[[nodiscard]] int acceptOn(int fd);
void closeSocket(int fd);
/// Calls on it return at once, small writes are sent at once.
void dontWait(int fd);
[[nodiscard]] int pollSockets(pollfd *fds, unsigned count, int limitMs);
/// Bytes that went without waiting, 0 when none could, -1 on an error.
[[nodiscard]] qint64 sendSome(int fd, const char *bytes, qint64 size);

/// Something to poll beside sockets: readable once it was rung.
[[nodiscard]] int openBell();
void ringBell(int fd);
void closeBell(int fd);

} // namespace venlo::test
