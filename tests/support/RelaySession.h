#pragma once

#include "support/RelayLink.h"

#include <atomic>

namespace venlo::test
{

/// One control connection through a FaultRelay, with its data connections. Runs in a thread of the
/// relay's until one side ends or the bell rings.
class RelaySession
{
public:
    RelaySession(FaultRelay &relay, Socket client, Socket server);

    void run();
    /// From any thread: ends it with RST.
    void drop() { m_bell.ring(); }
    [[nodiscard]] bool isOver() const { return m_finished; }

private:
    void loop();
    void fromClient();
    void fromServer();
    void command(const QByteArray &line);
    /// The fault acts instead of, or before, sending the command on; false when it is not sent.
    [[nodiscard]] bool passes(const RelayFault &fault);
    void reply(QByteArray bytes);
    void completion(QByteArray bytes);
    [[nodiscard]] QByteArray rewritten(const QByteArray &bytes);
    void say(const QByteArray &bytes);
    void end(bool withReset);

    FaultRelay &m_relay;
    StopBell m_bell;
    Socket m_client;
    Socket m_server;
    QByteArray m_commands; ///< received, no whole line yet
    QByteArray m_lines;
    QByteArray m_reply; ///< the lines of a reply that is not whole yet
    QByteArray m_held;  ///< a completion reply that waits for the end of the data
    QByteArray m_verb;
    std::optional<RelayFault> m_fault; ///< of the command in hand
    std::unique_ptr<RelayLink> m_link;
    Socket m_closed;        ///< bound, and does not listen
    bool m_swallow = false; ///< the greeting is replaced
    bool m_over = false;
    std::atomic<bool> m_finished = false;
};

} // namespace venlo::test
