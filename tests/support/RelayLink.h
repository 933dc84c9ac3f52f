#pragma once

#include "support/FaultRelay.h"

#include <vector>

#include <poll.h>

namespace venlo::test
{

/// The data connection of one relayed transfer. Everything is done by the session's thread: it adds
/// what it waits for to a poll and moves what can be moved. Owned by the session.
class RelayLink
{
public:
    /// upstream: the port that the server named. host: its loopback address.
    explicit RelayLink(quint16 upstream);

    [[nodiscard]] quint16 port() const { return m_listener.port(); }
    [[nodiscard]] bool isValid() const { return m_listener.isValid(); }
    void setFault(const RelayFault &fault) { m_fault = fault; }
    [[nodiscard]] bool hasFault() const { return m_fault.has_value(); }
    /// Both directions have ended; what the server says about it may pass.
    [[nodiscard]] bool ended() const { return m_ended; }
    /// The fault ends the control connection too.
    [[nodiscard]] bool dropsControl() const { return m_dropsControl; }

    void addTo(std::vector<pollfd> &fds) const;
    /// After a poll.
    void move(const StopBell &bell);
    void reset();

private:
    struct Direction {
        Socket *from;
        Socket *to;
    };
    void pump(Direction way, const StopBell &bell);
    void forward(Direction way, QByteArray bytes, const StopBell &bell);
    void cut(Direction way);
    void end();

    quint16 m_upstream;
    Socket m_listener;
    Socket m_client;
    Socket m_server;
    std::optional<RelayFault> m_fault;
    qint64 m_moved = 0;
    bool m_draining = false; ///< the rest is read and thrown away
    bool m_stalled = false;
    bool m_ended = false;
    bool m_dropsControl = false;
};

} // namespace venlo::test
