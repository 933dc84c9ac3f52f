#pragma once

#include <QSslCertificate>
#include <QString>
#include <QTemporaryDir>

namespace venlo::test
{

/// Server certificates for TLS tests, made anew by the openssl program: all for 127.0.0.1, ::1 and
/// "localhost" unless the name says otherwise, all with one key. Nothing on this machine trusts
/// the authority before trustAuthority().
class Certificates
{
public:
    enum class Kind {
        Signed, ///< by the authority
        SelfSigned,
        OtherSelfSigned,
        Expired,  ///< signed, until yesterday
        WrongHost ///< signed, for "elsewhere.example"
    };

    /// False with a reason when openssl is missing or failed.
    [[nodiscard]] bool make(QString *why);
    /// Key and certificate of a kind in one PEM file.
    [[nodiscard]] QString file(Kind kind) const;
    [[nodiscard]] QSslCertificate certificate(Kind kind) const;
    [[nodiscard]] QString authorityFile() const
    {
        return m_folder.filePath(QStringLiteral("authority.pem"));
    }
    /// What every TLS client of this process believes from now on, or no longer.
    void trustAuthority(bool trust = true) const;

private:
    [[nodiscard]] bool run(const QStringList &arguments, QString *why) const;
    [[nodiscard]] bool sign(Kind kind, const QString &names, int days, QString *why) const;
    [[nodiscard]] bool selfSign(Kind kind, const QString &subject, QString *why) const;
    [[nodiscard]] bool withKey(Kind kind) const;
    [[nodiscard]] QString path(Kind kind, const char *ending) const;

    QTemporaryDir m_folder;
};

} // namespace venlo::test
