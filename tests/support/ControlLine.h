#pragma once

#include "support/Socket.h"

#include <atomic>
#include <optional>

namespace venlo::test
{

/// The control connection of a scripted session: lines in, replies out. Telnet's interrupt bytes
/// are dropped and its doubled 0xFF undone (RFC 959, 4.1.3 and RFC 854).
class ControlLine
{
public:
    ControlLine(Socket socket, const StopBell &bell) : m_socket(std::move(socket)), m_bell(bell) {}

    /// The next line without its end; nothing at the end of the connection or the wait.
    [[nodiscard]] std::optional<QByteArray> readLine();
    /// A line that is there already, while a transfer runs.
    [[nodiscard]] std::optional<QByteArray> lineAtHand();
    /// Puts a line back; readLine() gives it before anything else.
    void putBack(const QByteArray &line) { m_buffer.prepend(line + "\r\n"); }
    /// False when the client is gone.
    [[nodiscard]] bool send(const QByteArray &bytes);
    /// Waits until the client closes, the server stops, or a minute has passed.
    void waitForClose();
    /// Ends the connection. The socket itself stays until this object goes, so that other threads
    /// never see its number reused.
    void close();
    [[nodiscard]] bool isOpen() const { return m_open; }
    [[nodiscard]] const Socket &socket() const { return m_socket; }

private:
    [[nodiscard]] std::optional<QByteArray> takeLine();
    /// False when the client has closed.
    [[nodiscard]] bool readMore();

    Socket m_socket;
    const StopBell &m_bell;
    QByteArray m_buffer;
    std::atomic<bool> m_open = true; ///< the test's thread looks at it, too
};

} // namespace venlo::test
