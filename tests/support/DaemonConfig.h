#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace venlo::test
{

enum class DaemonKind { Vsftpd, Proftpd, Pureftpd };

/// Which TLS a daemon takes.
enum class DaemonTls { None, V12, V13 };

/// What a test asks of a real FTP daemon.
struct DaemonOptions {
    QString root;      ///< the folder it serves as "/"; empty: a temporary one
    quint16 port = 0;  ///< 0: a free one
    bool ipv6 = false; ///< ::1 instead of 127.0.0.1
    /// The daemon's TZ in POSIX form ("JST-9", "UTC0", "EST5"), which needs no zone files.
    QByteArray timeZone = "JST-9";
    /// LIST in the daemon's zone instead of UTC. pure-ftpd always does; vsftpd then shows local
    /// time in MDTM too, against RFC 3659, 3.1.
    bool localListTimes = false;
    QByteArray umask = "022";
    bool writable = true;
    int maxClients = 50; ///< connections above it are refused with 421
    /// Under TLS vsftpd and proftpd insist on data connections that resume the control session.
    DaemonTls tls = DaemonTls::None;
    QString certificate;      ///< key and certificate in PEM
    bool implicitTls = false; ///< TLS from the first byte on; pure-ftpd cannot
};

/// A command line.
struct DaemonCommand {
    QString program;
    QStringList arguments;
};

/// What the OpenSSL of a daemon is told about versions; empty without TLS. For OPENSSL_CONF.
[[nodiscard]] QString opensslConfiguration(const DaemonOptions &options, const QString &work);

/// The account that the daemons' sessions work as: "daemon" of every Debian.
constexpr unsigned daemonUid = 1;

/// The login of a kind. vsftpd cannot have accounts of its own, so that it takes its anonymous
/// user, whose password it is made to check.
[[nodiscard]] QString daemonUser(DaemonKind kind);
[[nodiscard]] QString daemonPassword();

/// Where the daemons are: the folder made by tools/setup-daemons, and its library folders as the
/// loader wants them.
struct DaemonPrograms {
    QString folder;
    QString libraryPath;
};

/// Writes the configuration into the work folder and gives the command that starts the daemon in
/// the foreground; an empty program and a reason when that fails.
[[nodiscard]] DaemonCommand configureDaemon(DaemonKind kind, const DaemonOptions &options,
                                            const DaemonPrograms &programs, const QString &work,
                                            QString *why);

} // namespace venlo::test
