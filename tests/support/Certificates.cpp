#include "support/Certificates.h"

#include <QFile>
#include <QProcess>
#include <QSslConfiguration>

namespace venlo::test
{

namespace
{

constexpr int goodDays = 30;
constexpr int processLimitMs = 30'000;

bool write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(bytes) == bytes.size();
}

QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString loopbackNames()
{
    return QStringLiteral("subjectAltName=DNS:localhost,IP:127.0.0.1,IP:::1");
}

} // namespace

bool Certificates::make(QString *why)
{
    const QString key = m_folder.filePath(QStringLiteral("key"));
    if (!run({QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"),
              QStringLiteral("rsa:2048"), QStringLiteral("-nodes"), QStringLiteral("-days"),
              QString::number(goodDays), QStringLiteral("-subj"),
              QStringLiteral("/O=Test/CN=Test Authority"), QStringLiteral("-keyout"), key,
              QStringLiteral("-out"), authorityFile()},
             why))
        return false;
    return sign(Kind::Signed, loopbackNames(), goodDays, why) &&
           sign(Kind::Expired, loopbackNames(), -1, why) &&
           sign(Kind::WrongHost, QStringLiteral("subjectAltName=DNS:elsewhere.example"), goodDays,
                why) &&
           selfSign(Kind::SelfSigned, QStringLiteral("/O=Test/CN=self"), why) &&
           selfSign(Kind::OtherSelfSigned, QStringLiteral("/O=Test/CN=other"), why);
}

bool Certificates::run(const QStringList &arguments, QString *why) const
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("openssl"), arguments);
    if (process.waitForFinished(processLimitMs) && process.exitStatus() == QProcess::NormalExit &&
        process.exitCode() == 0)
        return true;
    *why =
        QLatin1String("openssl: ") + process.errorString() + QString::fromUtf8(process.readAll());
    return false;
}

bool Certificates::sign(Kind kind, const QString &names, int days, QString *why) const
{
    const QString request = path(kind, ".request");
    const QString extensions = path(kind, ".names");
    const QString key = m_folder.filePath(QStringLiteral("key"));
    return write(extensions, names.toLatin1()) &&
           run({QStringLiteral("req"), QStringLiteral("-new"), QStringLiteral("-key"), key,
                QStringLiteral("-subj"), QStringLiteral("/O=Test/CN=server"),
                QStringLiteral("-out"), request},
               why) &&
           run({QStringLiteral("x509"), QStringLiteral("-req"), QStringLiteral("-in"), request,
                QStringLiteral("-CA"), authorityFile(), QStringLiteral("-CAkey"), key,
                QStringLiteral("-CAcreateserial"), QStringLiteral("-days"), QString::number(days),
                QStringLiteral("-extfile"), extensions, QStringLiteral("-out"), path(kind, ".crt")},
               why) &&
           withKey(kind);
}

bool Certificates::selfSign(Kind kind, const QString &subject, QString *why) const
{
    return run({QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-new"),
                QStringLiteral("-key"), m_folder.filePath(QStringLiteral("key")),
                QStringLiteral("-days"), QString::number(goodDays), QStringLiteral("-subj"),
                subject, QStringLiteral("-addext"), loopbackNames(), QStringLiteral("-out"),
                path(kind, ".crt")},
               why) &&
           withKey(kind);
}

bool Certificates::withKey(Kind kind) const
{
    return write(file(kind),
                 bytesOf(m_folder.filePath(QStringLiteral("key"))) + bytesOf(path(kind, ".crt"))) &&
           QFile::setPermissions(file(kind), QFile::ReadOwner | QFile::WriteOwner);
}

QString Certificates::path(Kind kind, const char *ending) const
{
    return m_folder.filePath(QString::number(static_cast<int>(kind)) + QLatin1String(ending));
}

QString Certificates::file(Kind kind) const
{
    return path(kind, ".pem");
}

QSslCertificate Certificates::certificate(Kind kind) const
{
    return QSslCertificate::fromPath(path(kind, ".crt")).value(0);
}

void Certificates::trustAuthority(bool trust) const
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    QList<QSslCertificate> authorities = QSslConfiguration::systemCaCertificates();
    if (trust)
        authorities += QSslCertificate::fromPath(authorityFile());
    configuration.setCaCertificates(authorities);
    QSslConfiguration::setDefaultConfiguration(configuration);
}

} // namespace venlo::test
