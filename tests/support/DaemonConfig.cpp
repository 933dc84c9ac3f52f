#include "support/DaemonConfig.h"

#include <QDir>
#include <QFile>
#include <QProcess>

namespace venlo::test
{

namespace
{

// Passive ports lie below the system's own range, so that a client's ports do not hold them in
// TIME_WAIT; the range is wide because vsftpd gives up after ten busy ones.
constexpr int firstPassivePort = 12'000;
constexpr int lastPassivePort = 31'999;

// "pass" as MD5 crypt: pure-ftpd's own default costs seconds a login.
constexpr auto passwordHash = "$1$venlo$UBtOJa5zDyS.x7Xh8nRt80";

bool write(const QString &path, const QByteArray &text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.setPermissions(QFile::ReadOwner | QFile::WriteOwner) &&
           file.write(text) == text.size();
}

QByteArray yesNo(bool value)
{
    return value ? "YES" : "NO";
}

QByteArray address(const DaemonOptions &options)
{
    return options.ipv6 ? "::1" : "127.0.0.1";
}

QByteArray vsftpdText(const DaemonOptions &o, const QString &work)
{
    QByteArray text = "background=NO\nanonymous_enable=YES\nlocal_enable=NO\n"
                      "ftp_username=daemon\nno_anon_password=NO\nsecure_email_list_enable=YES\n"
                      "anon_other_write_enable=YES\nanon_mkdir_write_enable=YES\n"
                      "anon_upload_enable=YES\nanon_world_readable_only=NO\nmdtm_write=YES\n"
                      "allow_writeable_chroot=YES\nconnect_from_port_20=NO\n"
                      "dirmessage_enable=NO\nxferlog_enable=NO\ntcp_wrappers=NO\n"
                      "seccomp_sandbox=NO\nisolate=NO\nisolate_network=NO\n";
    text += o.ipv6 ? "listen=NO\nlisten_ipv6=YES\nlisten_address6=" : "listen=YES\nlisten_address=";
    text += address(o) + "\nlisten_port=" + QByteArray::number(o.port);
    text += "\nemail_password_file=" + QFile::encodeName(work) + "/passwords";
    text += "\nanon_root=" + QFile::encodeName(o.root);
    text += "\nsecure_chroot_dir=" + QFile::encodeName(work) + "/empty";
    text += "\nanon_umask=" + o.umask + "\nwrite_enable=" + yesNo(o.writable);
    text += "\nuse_localtime=" + yesNo(o.localListTimes);
    text += "\nmax_clients=" + QByteArray::number(o.maxClients);
    text += "\npasv_min_port=" + QByteArray::number(firstPassivePort);
    text += "\npasv_max_port=" + QByteArray::number(lastPassivePort) + "\n";
    if (o.tls != DaemonTls::None) {
        text += "ssl_enable=YES\nallow_anon_ssl=YES\nrequire_ssl_reuse=YES\n"
                "strict_ssl_read_eof=YES\nssl_ciphers=HIGH\nimplicit_ssl=" +
                yesNo(o.implicitTls);
        text += "\nrsa_cert_file=" + QFile::encodeName(o.certificate);
        text += "\nrsa_private_key_file=" + QFile::encodeName(o.certificate) + "\n";
    }
    return text;
}

QByteArray proftpdText(const DaemonOptions &o, const QString &unpacked, const QString &work)
{
    const QByteArray dir = QFile::encodeName(work);
    QByteArray text = "ServerName \"test\"\nServerType standalone\nUseReverseDNS off\n"
                      "User daemon\nGroup daemon\nMaxInstances none\n"
                      "AuthOrder mod_auth_file.c\nRequireValidShell off\nDefaultRoot ~\n"
                      "AllowOverwrite on\nAllowStoreRestart on\nDelayEngine off\n"
                      "TransferLog none\nWtmpLog off\nUseEncoding off\n";
    text += "ModulePath " + QFile::encodeName(unpacked) + "/usr/lib/proftpd\n";
    text += "UseIPv6 " + QByteArray(o.ipv6 ? "on" : "off") + "\n";
    text += "DefaultAddress " + address(o) + "\nPort " + QByteArray::number(o.port);
    text += "\nUmask " + o.umask + " " + o.umask;
    text += "\nTimesGMT " + QByteArray(o.localListTimes ? "off" : "on");
    text += "\nMaxClients " + QByteArray::number(o.maxClients);
    text += "\nPassivePorts " + QByteArray::number(firstPassivePort) + " " +
            QByteArray::number(lastPassivePort);
    text += "\nAuthUserFile " + dir + "/accounts\nSystemLog " + dir + "/proftpd.log";
    text += "\nScoreboardFile " + dir + "/scores\nPidFile " + dir + "/proftpd.pid\n";
    if (!o.writable)
        text += "<Limit WRITE>\nDenyAll\n</Limit>\n";
    if (o.tls != DaemonTls::None) {
        text += "LoadModule mod_tls.c\nTLSEngine on\nTLSRequired off\nTLSLog " + dir +
                "/tls.log\nTLSProtocol " + (o.tls == DaemonTls::V12 ? "TLSv1.2" : "TLSv1.3");
        text += "\nTLSRSACertificateFile " + QFile::encodeName(o.certificate);
        text += "\nTLSRSACertificateKeyFile " + QFile::encodeName(o.certificate) + "\n";
        if (o.implicitTls)
            text += "TLSOptions UseImplicitSSL\n";
    }
    return text;
}

DaemonCommand vsftpd(const DaemonOptions &o, const QString &unpacked, const QString &work)
{
    const QString conf = work + QLatin1String("/vsftpd.conf");
    if (!QDir().mkpath(work + QLatin1String("/empty")) || !write(conf, vsftpdText(o, work)) ||
        !write(work + QLatin1String("/passwords"), daemonPassword().toUtf8() + '\n'))
        return {};
    // It insists on a configuration of root's: without root, of the root of its namespace, who is
    // the one that copies here.
    return {QStringLiteral("/bin/sh"),
            {QStringLiteral("-c"), QStringLiteral("cp \"$1\" \"$1.own\" && exec \"$0\" \"$1.own\""),
             unpacked + QLatin1String("/usr/sbin/vsftpd"), conf}};
}

DaemonCommand proftpd(const DaemonOptions &o, const QString &unpacked, const QString &work)
{
    const QByteArray id = QByteArray::number(daemonUid);
    const QByteArray account = "user:" + QByteArray(passwordHash) + ':' + id + ':' + id +
                               "::" + QFile::encodeName(o.root) + ":/bin/false\n";
    const QString conf = work + QLatin1String("/proftpd.conf");
    if (!write(conf, proftpdText(o, unpacked, work)) ||
        !write(work + QLatin1String("/accounts"), account))
        return {};
    return {unpacked + QLatin1String("/usr/sbin/proftpd"),
            {QStringLiteral("-n"), QStringLiteral("-q"), QStringLiteral("-c"), conf}};
}

QStringList pureftpdArguments(const DaemonOptions &o, const QString &work)
{
    QStringList arguments{
        QStringLiteral("-S"),
        QString::fromLatin1(address(o)) + QLatin1Char(',') + QString::number(o.port),
        QStringLiteral("-E"), // no anonymous
        QStringLiteral("-l"),
        QLatin1String("puredb:") + work + QLatin1String("/accounts.pdb"),
        QStringLiteral("-H"), // no names for addresses
        QStringLiteral("-u"),
        QString::number(daemonUid),
        QStringLiteral("-p"),
        QStringLiteral("%1:%2").arg(firstPassivePort).arg(lastPassivePort),
        QStringLiteral("-L"),
        QStringLiteral("200000:64"),
        QStringLiteral("-C"),
        QString::number(o.maxClients),
        QStringLiteral("-c"),
        QString::number(o.maxClients),
        QStringLiteral("-f"),
        QStringLiteral("none"),
        QStringLiteral("-g"),
        work + QLatin1String("/pure-ftpd.pid"),
        QStringLiteral("-U"),
        QString::fromLatin1(o.umask + ':' + o.umask),
    };
    if (!o.writable)
        arguments << QStringLiteral("-R");
    if (o.tls != DaemonTls::None)
        arguments << QStringLiteral("--tls=1")
                  << QLatin1String("--certfile=") + o.certificate + QLatin1Char(',') +
                         o.certificate;
    return arguments;
}

bool makeAccountIndex(const QString &accounts, const DaemonPrograms &programs)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LD_LIBRARY_PATH"), programs.libraryPath);
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(
        programs.folder + QLatin1String("/usr/bin/pure-pw"),
        {QStringLiteral("mkdb"), accounts + QLatin1String(".pdb"), QStringLiteral("-f"), accounts});
    return process.waitForFinished(10'000) && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0;
}

DaemonCommand pureftpd(const DaemonOptions &o, const DaemonPrograms &programs, const QString &work)
{
    const QByteArray id = QByteArray::number(daemonUid);
    const QByteArray account = "user:" + QByteArray(passwordHash) + ':' + id + ':' + id +
                               "::" + QFile::encodeName(o.root) + "/./::::::::::::\n";
    const QString accounts = work + QLatin1String("/accounts");
    if (!write(accounts, account))
        return {};
    if (!makeAccountIndex(accounts, programs))
        return {};
    return {programs.folder + QLatin1String("/usr/sbin/pure-ftpd"), pureftpdArguments(o, work)};
}

} // namespace

QString opensslConfiguration(const DaemonOptions &options, const QString &work)
{
    if (options.tls == DaemonTls::None)
        return {};
    const QByteArray version = options.tls == DaemonTls::V12 ? "TLSv1.2" : "TLSv1.3";
    const QString path = work + QLatin1String("/openssl.cnf");
    const bool written = write(path, "openssl_conf = all\n[all]\nssl_conf = ssl\n[ssl]\n"
                                     "system_default = versions\n[versions]\nMinProtocol = " +
                                         version + "\nMaxProtocol = " + version + "\n");
    return written ? path : QString();
}

QString daemonUser(DaemonKind kind)
{
    return kind == DaemonKind::Vsftpd ? QStringLiteral("anonymous") : QStringLiteral("user");
}

QString daemonPassword()
{
    return QStringLiteral("pass");
}

DaemonCommand configureDaemon(DaemonKind kind, const DaemonOptions &options,
                              const DaemonPrograms &programs, const QString &work, QString *why)
{
    DaemonCommand command;
    switch (kind) {
    case DaemonKind::Vsftpd:
        command = vsftpd(options, programs.folder, work);
        break;
    case DaemonKind::Proftpd:
        command = proftpd(options, programs.folder, work);
        break;
    case DaemonKind::Pureftpd:
        command = pureftpd(options, programs, work);
        break;
    }
    if (command.program.isEmpty())
        *why = QLatin1String("cannot write the daemon's configuration into ") + work;
    return command;
}

} // namespace venlo::test
