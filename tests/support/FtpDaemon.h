#pragma once

#include "support/DaemonConfig.h"

#include <QDateTime>
#include <QProcess>
#include <QTemporaryDir>

#include <memory>
#include <vector>

namespace venlo::test
{

/// A real FTP daemon on a loopback port, over a folder that the test sees. A test owns it; it ends
/// with all its sessions when it is destroyed and also when the test itself dies, because the
/// process that watches over it sees its input end. It must not be used to serve anything but
/// throwaway folders: everything in the root is handed to the daemon's account.
class FtpDaemon
{
public:
    using Kind = DaemonKind;

    /// All kinds, for data-driven tests.
    [[nodiscard]] static std::vector<Kind> all();
    [[nodiscard]] static const char *name(Kind kind);
    /// False with a reason when the daemon is not on this machine. Under CI=true the answer is
    /// always true, so that a missing daemon fails at start() instead of being skipped.
    [[nodiscard]] static bool available(Kind kind, QString *why);

    explicit FtpDaemon(Kind kind, DaemonOptions options = {});
    ~FtpDaemon();
    Q_DISABLE_COPY_MOVE(FtpDaemon)

    /// Starts it and waits until it greets with 220. After a stop() it takes the same port again.
    [[nodiscard]] bool start(QString *why);
    /// The same; what hinders it is a warning.
    [[nodiscard]] bool start();
    /// Ends it with all its sessions, at once; connections to it are lost.
    void stop();
    [[nodiscard]] bool isRunning() const;
    /// Ends its sessions at once and leaves the daemon itself listening; how many there were.
    int dropSessions();

    [[nodiscard]] Kind kind() const { return m_kind; }
    [[nodiscard]] quint16 port() const { return m_options.port; }
    [[nodiscard]] QString host() const;
    /// "127.0.0.1:port" or "[::1]:port".
    [[nodiscard]] QString server() const;
    [[nodiscard]] QString user() const { return daemonUser(m_kind); }
    [[nodiscard]] QString password() const { return daemonPassword(); }
    /// The folder it serves as "/", without a trailing "/".
    [[nodiscard]] QString root() const { return m_options.root; }
    /// What it printed, for the report of a failed test.
    [[nodiscard]] QString log() const;

    /// Hands everything below the root to the daemon's account; call it after writing there by
    /// other means than put() and makeFolder().
    void own() const;
    /// Writes a file below the root (missing folders are made). Names are raw bytes.
    [[nodiscard]] bool put(const QByteArray &path, const QByteArray &bytes,
                           const QDateTime &modified = {}) const;
    [[nodiscard]] bool makeFolder(const QByteArray &path) const;
    /// Bytes of a file below the root; null when there is none.
    [[nodiscard]] QByteArray file(const QByteArray &path) const;
    [[nodiscard]] bool exists(const QByteArray &path) const;

private:
    [[nodiscard]] bool startOnce(QString *why);
    [[nodiscard]] bool waitForGreeting(QString *why);
    /// Names that are no UTF-8 keep QTemporaryDir from removing it.
    void removeRoot() const;
    [[nodiscard]] QByteArray rawPath(const QByteArray &path) const;

    Kind m_kind;
    DaemonOptions m_options;
    QTemporaryDir m_work;
    bool m_ownRoot = false;              ///< the root is ours to remove
    std::unique_ptr<QProcess> m_watcher; ///< a shell; holds the daemon while its input is open
    qint64 m_pid = 0;                    ///< the daemon; also its process group and session
};

} // namespace venlo::test
