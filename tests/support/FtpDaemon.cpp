#include "support/FtpDaemon.h"

#include "support/DaemonProcess.h"
#include "support/Ports.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTcpSocket>

#include <csignal>
#include <utility>

#include <unistd.h>

namespace venlo::test
{

namespace
{

constexpr int startAttempts = 5;
constexpr int greetingLimitMs = 10'000;

// $0 is the log, the rest the command. The daemon gets a session of its own; when the input ends
// (stop() or the death of the test), it is killed with everything below it. Its group would not be
// enough: a vsftpd session makes a group of its own.
constexpr auto watcherScript =
    "trap : INT TERM HUP\n"
    "tree() { echo $1; for p in $(cat /proc/$1/task/$1/children); do tree $p; done; }\n"
    "setsid \"$@\" </dev/null >\"$0\" 2>&1 &\n"
    "echo $!\n"
    "read -r line\n"
    "kill -s KILL $(tree $!)\n"
    "kill -s KILL -- -$!\n"
    "wait $!\n";

QString programOf(DaemonKind kind)
{
    return unpackedDaemons().folder + QLatin1String("/usr/sbin/") +
           QLatin1String(FtpDaemon::name(kind));
}

/// Lets the daemon's account pass through a temporary folder of ours (made 0700 by Qt).
void openParents(QString path)
{
    while (QDir::cleanPath(path) != QDir::cleanPath(QDir::tempPath()) && path.size() > 1) {
        QFile::setPermissions(path, QFile::permissions(path) | QFile::ExeOther | QFile::ExeGroup);
        path = QFileInfo(path).path();
    }
}

} // namespace

std::vector<DaemonKind> FtpDaemon::all()
{
    return {Kind::Vsftpd, Kind::Proftpd, Kind::Pureftpd};
}

const char *FtpDaemon::name(Kind kind)
{
    switch (kind) {
    case Kind::Vsftpd:
        return "vsftpd";
    case Kind::Proftpd:
        return "proftpd";
    case Kind::Pureftpd:
        return "pure-ftpd";
    }
    return "";
}

bool FtpDaemon::available(Kind kind, QString *why)
{
    if (QFile::exists(programOf(kind)) || qEnvironmentVariable("CI") == QLatin1String("true"))
        return true;
    *why = QLatin1String("no ") + programOf(kind) + QLatin1String("; run tools/setup-daemons");
    return false;
}

FtpDaemon::FtpDaemon(Kind kind, DaemonOptions options) : m_kind(kind), m_options(std::move(options))
{
    m_ownRoot = m_options.root.isEmpty();
    if (m_ownRoot)
        m_options.root = m_work.filePath(QStringLiteral("root"));
    QDir().mkpath(m_options.root);
    openParents(m_work.path());
    openParents(m_options.root);
}

FtpDaemon::~FtpDaemon()
{
    stop();
    removeRoot();
}

bool FtpDaemon::start()
{
    QString why;
    const bool started = start(&why);
    if (!started)
        qWarning("%s", qPrintable(why));
    return started;
}

bool FtpDaemon::start(QString *why)
{
    if (!QFile::exists(programOf(m_kind))) {
        *why = QLatin1String("missing: ") + programOf(m_kind);
        return false;
    }
    own();
    const bool fixedPort = m_options.port != 0;
    for (int attempt = 0; attempt < startAttempts; ++attempt) {
        if (!fixedPort)
            m_options.port = freePort(m_options.ipv6);
        if (startOnce(why))
            return true;
        stop();
    }
    return false;
}

bool FtpDaemon::startOnce(QString *why)
{
    const DaemonPrograms programs = unpackedDaemons();
    const DaemonCommand command = configureDaemon(m_kind, m_options, programs, m_work.path(), why);
    if (command.program.isEmpty())
        return false;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TZ"), QString::fromLatin1(m_options.timeZone));
    environment.insert(QStringLiteral("LD_LIBRARY_PATH"), programs.libraryPath);
    if (m_options.tls != DaemonTls::None)
        environment.insert(QStringLiteral("OPENSSL_CONF"),
                           opensslConfiguration(m_options, m_work.path()));
    QStringList arguments{QStringLiteral("-c"), QLatin1String(watcherScript),
                          m_work.filePath(QStringLiteral("output"))};
    arguments << commandPrefix(m_kind) << command.program << command.arguments;
    m_watcher = std::make_unique<QProcess>();
    m_watcher->setProcessEnvironment(environment);
    m_watcher->setStandardErrorFile(QProcess::nullDevice());
    m_watcher->start(QStringLiteral("/bin/sh"), arguments);
    if (!m_watcher->waitForReadyRead(greetingLimitMs)) {
        *why = QLatin1String("cannot start /bin/sh: ") + m_watcher->errorString();
        return false;
    }
    m_pid = m_watcher->readLine().trimmed().toLongLong();
    return m_pid > 1 && waitForGreeting(why);
}

bool FtpDaemon::waitForGreeting(QString *why)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < greetingLimitMs && isRunning()) {
        QTcpSocket socket;
        socket.connectToHost(host(), m_options.port);
        // Under TLS it says nothing before the handshake.
        if (socket.waitForConnected(1000) && m_options.implicitTls)
            return isRunning();
        if (socket.state() == QAbstractSocket::ConnectedState && socket.waitForReadyRead(3000) &&
            socket.readAll().startsWith("220") && isRunning()) {
            socket.write("QUIT\r\n");
            socket.waitForDisconnected(1000);
            return true;
        }
        ::usleep(20'000);
    }
    *why = QStringLiteral("%1 does not greet on port %2: %3")
               .arg(QLatin1String(name(m_kind)))
               .arg(m_options.port)
               .arg(log());
    return false;
}

void FtpDaemon::stop()
{
    if (!m_watcher)
        return;
    m_watcher->closeWriteChannel();
    if (!m_watcher->waitForFinished(5000)) {
        if (m_pid > 1)
            ::kill(static_cast<pid_t>(-m_pid), SIGKILL);
        m_watcher->kill();
        m_watcher->waitForFinished(1000);
    }
    m_watcher.reset();
    m_pid = 0;
}

bool FtpDaemon::isRunning() const
{
    return m_pid > 1 && processRuns(m_pid);
}

int FtpDaemon::dropSessions()
{
    const std::vector<qint64> sessions = processesBelow(m_pid);
    for (const qint64 pid : sessions)
        ::kill(static_cast<pid_t>(pid), SIGKILL);
    return static_cast<int>(sessions.size());
}

QString FtpDaemon::host() const
{
    return m_options.ipv6 ? QStringLiteral("::1") : QStringLiteral("127.0.0.1");
}

QString FtpDaemon::server() const
{
    const QString pattern = m_options.ipv6 ? QStringLiteral("[%1]:%2") : QStringLiteral("%1:%2");
    return pattern.arg(host()).arg(m_options.port);
}

QString FtpDaemon::log() const
{
    QString text;
    for (const auto *name : {"output", "proftpd.log", "tls.log"}) {
        QFile file(m_work.filePath(QLatin1String(name)));
        if (file.open(QIODevice::ReadOnly))
            text += QString::fromUtf8(file.readAll());
    }
    return text;
}

} // namespace venlo::test
