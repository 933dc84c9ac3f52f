#pragma once

#include <QByteArray>

#include <utility>

namespace venlo::test
{

/// The bell that ends every wait of a scripted server: once rung, it stays rung.
class StopBell
{
public:
    StopBell();
    ~StopBell();
    Q_DISABLE_COPY_MOVE(StopBell)
    void ring() const;
    /// Waits that long or until it rings; true when it has rung.
    [[nodiscard]] bool waitFor(int ms) const;
    [[nodiscard]] bool hasRung() const { return waitFor(0); }
    [[nodiscard]] int fd() const { return m_fd; }

private:
    int m_fd = -1;
};

/// A socket that closes itself. Blocking calls never block for longer than the limit they are
/// given, and end at once when the bell rings.
class Socket
{
public:
    Socket() = default;
    explicit Socket(int fd) : m_fd(fd) {}
    ~Socket() { close(); }
    Socket(Socket &&other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    Socket &operator=(Socket &&other) noexcept;
    Socket(const Socket &) = delete;
    Socket &operator=(const Socket &) = delete;

    /// Listens on a loopback address; port 0 takes a free one.
    [[nodiscard]] static Socket listenOn(bool ipv6, quint16 port);
    /// Connects to a loopback port within the limit; invalid when refused.
    [[nodiscard]] static Socket connectTo(const QByteArray &address, quint16 port);

    [[nodiscard]] bool isValid() const { return m_fd >= 0; }
    [[nodiscard]] int fd() const { return m_fd; }
    [[nodiscard]] quint16 port() const;
    [[nodiscard]] Socket accept(const StopBell &bell, int limitMs) const;
    /// Waits until it can be read; false on the limit or the bell.
    [[nodiscard]] bool waitReadable(const StopBell &bell, int limitMs) const;
    [[nodiscard]] bool waitWritable(const StopBell &bell, int limitMs) const;
    /// One read of at most max bytes; empty at the end of the data or an error.
    [[nodiscard]] QByteArray read(int max) const;
    /// What can be written without waiting; -1 on an error.
    [[nodiscard]] qint64 writeSome(const char *bytes, qint64 size) const;
    /// Everything, within the limit.
    [[nodiscard]] bool write(const QByteArray &bytes, const StopBell &bell, int limitMs) const;
    void close();
    /// Closes with RST instead of FIN.
    void reset();
    /// Ends both directions; a thread that waits in this socket wakes up.
    void shutDown() const;

private:
    int m_fd = -1;
};

} // namespace venlo::test
