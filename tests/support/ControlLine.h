#pragma once

#include "support/Socket.h"

#include <atomic>
#include <deque>
#include <optional>

namespace venlo::test
{

/// The control connection of a scripted session: lines in, replies out. Telnet's interrupt bytes
/// are dropped and its doubled 0xFF undone (RFC 959, 4.1.3 and RFC 854).
class ControlLine
{
public:
    struct Line {
        QByteArray text; ///< without its end
        int batch = 0;   ///< the same for lines that came in one go
    };

    /// firstLineOnly: see ServerOptions.
    ControlLine(Socket socket, const StopBell &bell, bool firstLineOnly = false)
        : m_socket(std::move(socket)), m_bell(bell), m_firstLineOnly(firstLineOnly)
    {
    }

    /// The next line; nothing at the end of the connection or the wait.
    [[nodiscard]] std::optional<Line> readLine();
    /// A line that is there already, while a transfer runs.
    [[nodiscard]] std::optional<Line> lineAtHand();
    /// Puts a line back; readLine() gives it before anything else.
    void putBack(Line line) { m_lines.push_front(std::move(line)); }
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
    [[nodiscard]] std::optional<Line> takeLine();
    /// False when the client has closed.
    [[nodiscard]] bool readMore();

    Socket m_socket;
    const StopBell &m_bell;
    bool m_firstLineOnly = false;
    QByteArray m_buffer; ///< of a line that is not whole
    std::deque<Line> m_lines;
    int m_batch = 0;
    std::atomic<bool> m_open = true; ///< the test's thread looks at it, too
};

} // namespace venlo::test
