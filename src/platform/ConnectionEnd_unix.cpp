#include "platform/ConnectionEnd.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace venlo
{

ConnectionEnd::ConnectionEnd(qintptr descriptor)
    : m_descriptor(descriptor < 0 ? -1 : ::fcntl(static_cast<int>(descriptor), F_DUPFD_CLOEXEC, 0))
{
}

ConnectionEnd::~ConnectionEnd()
{
    if (m_descriptor >= 0)
        ::close(static_cast<int>(m_descriptor));
}

bool ConnectionEnd::wasReset() const
{
#ifdef Q_OS_LINUX
    tcp_info info = {};
    socklen_t size = sizeof info;
    // A peer that closed in order leaves the connection waiting for this side to close too.
    return m_descriptor >= 0 &&
           ::getsockopt(static_cast<int>(m_descriptor), IPPROTO_TCP, TCP_INFO, &info, &size) == 0 &&
           info.tcpi_state == TCP_CLOSE;
#else
    return false;
#endif
}

} // namespace venlo
