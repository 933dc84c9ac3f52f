#include "platform/DisplayServer.h"

#include <cerrno>
#include <cstring>
#include <memory>

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "platform/XCookies.h"

namespace venlo
{

namespace
{
constexpr int answerLimitMs = 2000;
constexpr int xPortBase = 6000;
constexpr int maxXDisplay = 59535; ///< 6000 + this is the last port there is

/// A client socket that never blocks; closed with its scope.
class Socket
{
public:
    explicit Socket(int family)
        : m_fd(socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
    {
    }
    ~Socket()
    {
        if (m_fd >= 0)
            close(m_fd);
    }
    Socket(const Socket &) = delete;
    Socket &operator=(const Socket &) = delete;

    [[nodiscard]] bool connectTo(const sockaddr *address, socklen_t size) const
    {
        if (m_fd < 0)
            return false;
        if (connect(m_fd, address, size) == 0)
            return true;
        if (errno != EINPROGRESS || !wait(POLLOUT))
            return false;
        int error = 0;
        socklen_t length = sizeof error;
        return getsockopt(m_fd, SOL_SOCKET, SO_ERROR, &error, &length) == 0 && error == 0;
    }

    [[nodiscard]] bool write(const QByteArray &bytes) const
    {
        const auto size = static_cast<size_t>(bytes.size());
        return send(m_fd, bytes.constData(), size, MSG_NOSIGNAL) == static_cast<ssize_t>(size);
    }

    /// The first byte of the answer, -1 when none comes in time.
    [[nodiscard]] int firstByte() const
    {
        unsigned char byte = 0;
        return wait(POLLIN) && recv(m_fd, &byte, 1, 0) == 1 ? byte : -1;
    }

private:
    [[nodiscard]] bool wait(short events) const
    {
        pollfd entry = {m_fd, events, 0};
        return poll(&entry, 1, answerLimitMs) == 1;
    }

    int m_fd;
};

struct Address {
    int family = AF_UNSPEC;
    QByteArray bytes; ///< the system's socket address structure

    [[nodiscard]] bool connect(const Socket &to) const
    {
        return to.connectTo(reinterpret_cast<const sockaddr *>(bytes.constData()),
                            static_cast<socklen_t>(bytes.size()));
    }
};

/// Address of a local socket; a path that begins with NUL lies in the abstract name space.
Address localAddress(const QByteArray &path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.isEmpty() || static_cast<size_t>(path.size()) >= sizeof address.sun_path)
        return {};
    memcpy(address.sun_path, path.constData(), static_cast<size_t>(path.size()));
    const qsizetype size = static_cast<qsizetype>(offsetof(sockaddr_un, sun_path)) + path.size();
    return {AF_UNIX, QByteArray(reinterpret_cast<const char *>(&address), size)};
}

QList<Address> networkAddresses(const QByteArray &host, int port)
{
    addrinfo wanted = {};
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    const QByteArray service = QByteArray::number(port);
    if (getaddrinfo(host.constData(), service.constData(), &wanted, &found) != 0)
        return {};
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(found, freeaddrinfo);
    QList<Address> addresses;
    for (const addrinfo *one = found; one != nullptr; one = one->ai_next) {
        const auto size = static_cast<qsizetype>(one->ai_addrlen);
        addresses.append(
            {one->ai_family, QByteArray(reinterpret_cast<const char *>(one->ai_addr), size)});
    }
    return addresses;
}

QList<Address> xAddresses(QByteArray host, int number)
{
    if (host.isEmpty() || host == "unix") {
        const QByteArray path = "/tmp/.X11-unix/X" + QByteArray::number(number);
        return {localAddress('\0' + path), localAddress(path)};
    }
    if (host.startsWith('[') && host.endsWith(']'))
        host = host.mid(1, host.size() - 2);
    return networkAddresses(host, xPortBase + number);
}

/// The X11 connection set-up (X11 protocol, section 8): 1 in the first byte of the answer lets in.
bool letsIn(const Address &address, const QByteArray &cookie)
{
    const Socket socket(address.family);
    return address.connect(socket) && socket.write(xSetupRequest(cookie)) &&
           socket.firstByte() == 1;
}
} // namespace

bool xServerAnswers(const QByteArray &display)
{
    const qsizetype colon = display.lastIndexOf(':');
    if (colon < 0)
        return false;
    bool isNumber = false;
    const QByteArray digits = display.mid(colon + 1).split('.').first();
    const int number = digits.toInt(&isNumber);
    if (!isNumber || number < 0 || number > maxXDisplay)
        return false;
    const QList<QByteArray> cookies = QList<QByteArray>{QByteArray()} + xCookies(digits);
    for (const Address &address : xAddresses(display.left(colon), number)) {
        if (!address.connect(Socket(address.family)))
            continue;
        for (const QByteArray &cookie : cookies) {
            if (letsIn(address, cookie))
                return true;
        }
    }
    return false;
}

bool waylandAnswers(const QByteArray &display)
{
    if (display.isEmpty())
        return false;
    const bool isPath = display.startsWith('/');
    const Address address =
        localAddress(isPath ? display : qgetenv("XDG_RUNTIME_DIR") + '/' + display);
    return address.connect(Socket(address.family));
}

} // namespace venlo
