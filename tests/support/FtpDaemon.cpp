#include "support/FtpDaemon.h"

#include "support/Ports.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QStandardPaths>
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

QString unpackedFolder()
{
    if (qEnvironmentVariableIsSet("VENLO_FTPD"))
        return qEnvironmentVariable("VENLO_FTPD");
    const QString cache = qEnvironmentVariable("VENLO_CACHE");
    if (!cache.isEmpty())
        return cache + QLatin1String("/ftpd");
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
           QLatin1String("/venlo/ftpd");
}

QString programOf(DaemonKind kind)
{
    return unpackedFolder() + QLatin1String("/usr/sbin/") + QLatin1String(FtpDaemon::name(kind));
}

/// The unpacked library folders, relative in the file "libraries", for the loader.
QString libraryPath()
{
    QFile file(unpackedFolder() + QLatin1String("/libraries"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList folders;
    const QStringList lines =
        QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString &line : lines)
        folders << unpackedFolder() + QLatin1Char('/') + line;
    return folders.join(QLatin1Char(':'));
}

/// Without root the daemon gets a namespace in which it is root and its account is this user.
QStringList namespacePrefix()
{
    if (::geteuid() == 0)
        return {};
    const QString id = QString::number(daemonUid);
    return {QStringLiteral("unshare"),         QStringLiteral("--user"),
            QLatin1String("--map-user=") + id, QLatin1String("--map-group=") + id,
            QStringLiteral("--map-auto"),      QStringLiteral("--setuid=0"),
            QStringLiteral("--setgid=0")};
}

/// See chroot_access.cpp.
QStringList preloadPrefix(DaemonKind kind)
{
    if (kind != DaemonKind::Vsftpd)
        return {};
    return {QStringLiteral("env"), QStringLiteral("LD_PRELOAD=" VENLO_CHROOT_ACCESS)};
}

/// Lets the daemon's account pass through a temporary folder of ours (made 0700 by Qt).
void openParents(QString path)
{
    while (QDir::cleanPath(path) != QDir::cleanPath(QDir::tempPath()) && path.size() > 1) {
        QFile::setPermissions(path, QFile::permissions(path) | QFile::ExeOther | QFile::ExeGroup);
        path = QFileInfo(path).path();
    }
}

char processState(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return 'X';
    const QByteArray line = stat.readAll();
    const auto end = line.lastIndexOf(')');
    return end < 0 || end + 2 >= line.size() ? 'X' : line.at(end + 2);
}

std::vector<qint64> childrenOf(qint64 pid)
{
    QFile file(QStringLiteral("/proc/%1/task/%1/children").arg(pid));
    std::vector<qint64> children;
    if (file.open(QIODevice::ReadOnly)) {
        const QList<QByteArray> words = file.readAll().split(' ');
        for (const QByteArray &word : words) {
            if (word.toLongLong() > 1)
                children.push_back(word.toLongLong());
        }
    }
    return children;
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
    const DaemonCommand command =
        configureDaemon(m_kind, m_options, {unpackedFolder(), libraryPath()}, m_work.path(), why);
    if (command.program.isEmpty())
        return false;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TZ"), QString::fromLatin1(m_options.timeZone));
    environment.insert(QStringLiteral("LD_LIBRARY_PATH"), libraryPath());
    QStringList arguments{QStringLiteral("-c"), QLatin1String(watcherScript),
                          m_work.filePath(QStringLiteral("output"))};
    arguments << namespacePrefix() << preloadPrefix(m_kind) << command.program << command.arguments;
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
        if (socket.waitForConnected(1000) && socket.waitForReadyRead(3000) &&
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
    if (m_pid <= 1)
        return false;
    const char state = processState(m_pid);
    return state != 'X' && state != 'Z';
}

void FtpDaemon::dropSessions()
{
    std::vector<qint64> sessions = childrenOf(m_pid);
    for (std::size_t i = 0; i < sessions.size(); ++i) {
        const std::vector<qint64> below = childrenOf(sessions[i]);
        sessions.insert(sessions.end(), below.begin(), below.end());
    }
    for (const qint64 pid : sessions)
        ::kill(static_cast<pid_t>(pid), SIGKILL);
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
    for (const auto *name : {"output", "proftpd.log"}) {
        QFile file(m_work.filePath(QLatin1String(name)));
        if (file.open(QIODevice::ReadOnly))
            text += QString::fromUtf8(file.readAll());
    }
    return text;
}

} // namespace venlo::test
