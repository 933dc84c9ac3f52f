#include "support/DaemonProcess.h"

#include <QFile>
#include <QStandardPaths>

#include <unistd.h>

namespace venlo::test
{

namespace
{

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

/// The unpacked library folders, relative in the file "libraries", for the loader.
QString libraryPathOf(const QString &unpacked)
{
    QFile file(unpacked + QLatin1String("/libraries"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList folders;
    const QStringList lines =
        QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString &line : lines)
        folders << unpacked + QLatin1Char('/') + line;
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

DaemonPrograms unpackedDaemons()
{
    const QString folder = unpackedFolder();
    return {folder, libraryPathOf(folder)};
}

QStringList commandPrefix(DaemonKind kind)
{
    return namespacePrefix() + preloadPrefix(kind);
}

bool processRuns(qint64 pid)
{
    const char state = processState(pid);
    return state != 'X' && state != 'Z';
}

std::vector<qint64> processesBelow(qint64 pid)
{
    std::vector<qint64> all = childrenOf(pid);
    for (std::size_t i = 0; i < all.size(); ++i) {
        const std::vector<qint64> below = childrenOf(all[i]);
        all.insert(all.end(), below.begin(), below.end());
    }
    return all;
}

} // namespace venlo::test
