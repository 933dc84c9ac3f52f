#pragma once

#include <QtGlobal>

namespace venlo
{

/// A second handle of a TCP connection, by which to tell how the peer ended it: the first one is
/// closed by then, and a reset looks like an end in order to whoever reads. Keeps the connection
/// open until it goes.
class ConnectionEnd
{
public:
    /// descriptor: of a connected socket. Without one, and where the system cannot say, no
    /// connection counts as reset.
    explicit ConnectionEnd(qintptr descriptor);
    ~ConnectionEnd();
    ConnectionEnd(const ConnectionEnd &) = delete;
    ConnectionEnd &operator=(const ConnectionEnd &) = delete;

    /// True once the peer, or something on the way, has reset the connection (RFC 9293, 3.5.2).
    [[nodiscard]] bool wasReset() const;

private:
    qintptr m_descriptor = -1;
};

} // namespace venlo
