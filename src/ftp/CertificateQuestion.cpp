// How a certificate is put to a person.
#include "ftp/CertificatePins.h"
#include "ftp/protocol/HostPort.h"

#include <QStringList>

namespace venlo
{

namespace
{
QString reason(const QSslError &error)
{
    switch (error.error()) {
    case QSslError::SelfSignedCertificate:
    case QSslError::SelfSignedCertificateInChain:
        return QStringLiteral("自己署名の証明書です");
    case QSslError::CertificateExpired:
        return QStringLiteral("有効期限が切れています");
    case QSslError::CertificateNotYetValid:
        return QStringLiteral("有効期間がまだ始まっていません");
    case QSslError::HostNameMismatch:
        return QStringLiteral("別のｻｰﾊﾞｰの証明書です");
    case QSslError::UnableToGetIssuerCertificate:
    case QSslError::UnableToGetLocalIssuerCertificate:
    case QSslError::UnableToVerifyFirstCertificate:
    case QSslError::CertificateUntrusted:
        return QStringLiteral("発行者を信頼できません");
    case QSslError::CertificateRevoked:
    case QSslError::CertificateBlacklisted:
        return QStringLiteral("失効した証明書です");
    default:
        return printable(error.errorString());
    }
}

/// "CN=name, O=organisation": the server chose the texts, so that they are made one line each.
QString person(const QStringList &names, const QStringList &organisations)
{
    QStringList parts;
    for (const QString &name : names)
        parts.append(QStringLiteral("CN=") + printable(name));
    for (const QString &organisation : organisations)
        parts.append(QStringLiteral("O=") + printable(organisation));
    constexpr qsizetype mostParts = 4;
    return parts.mid(0, mostParts).join(QStringLiteral(", "));
}

/// "AB:CD:..." as other programs show it.
QString spaced(const QString &fingerprint)
{
    QStringList bytes;
    for (qsizetype at = 0; at < fingerprint.size(); at += 2)
        bytes.append(fingerprint.mid(at, 2).toUpper());
    return bytes.join(QLatin1Char(':'));
}

QStringList reasons(const ServerCertificate &shown)
{
    QStringList lines;
    for (const QSslError &error : shown.problems) {
        const QString line = QStringLiteral("・") + reason(error);
        if (!lines.contains(line))
            lines.append(line);
    }
    return lines;
}

QStringList details(const QSslCertificate &certificate)
{
    return {
        QStringLiteral("所有者: ") + person(certificate.subjectInfo(QSslCertificate::CommonName),
                                            certificate.subjectInfo(QSslCertificate::Organization)),
        QStringLiteral("発行者: ") + person(certificate.issuerInfo(QSslCertificate::CommonName),
                                            certificate.issuerInfo(QSslCertificate::Organization)),
        QStringLiteral("有効期限: ") +
            certificate.expiryDate().toLocalTime().toString(QStringLiteral("yyyy/MM/dd hh:mm"))};
}
} // namespace

QString certificateQuestion(const ServerCertificate &shown, const QString &pinned)
{
    const bool changed = !pinned.isEmpty();
    const QString blank;
    QStringList lines;
    if (changed)
        lines << shown.server + QStringLiteral(" の証明書が以前に確認したものと違います")
              << QStringLiteral("別のｻｰﾊﾞｰに接続している恐れがあります")
              << QStringLiteral("ｻｰﾊﾞｰの管理者に確認してから接続して下さい");
    else
        lines << shown.server + QStringLiteral(" の証明書を確認できません");
    lines << blank << reasons(shown) << blank << details(shown.certificate)
          << QStringLiteral("SHA-256: ") + spaced(shown.fingerprint());
    if (changed)
        lines << QStringLiteral("以前のSHA-256: ") + spaced(pinned) << blank
              << QStringLiteral("新しい証明書を信頼して接続しますか?");
    else
        lines << blank << QStringLiteral("この証明書を信頼して接続しますか?");
    return lines.join(QLatin1Char('\r'));
}

} // namespace venlo
