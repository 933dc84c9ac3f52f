#pragma once

#include <QSslCertificate>
#include <QSslError>
#include <QString>

#include <functional>

namespace venlo
{

/// What a server showed of itself in the TLS handshake of the control connection.
struct ServerCertificate {
    QString server; ///< "host:port" as connected to, brackets around an IPv6 address
    QSslCertificate certificate;
    QList<QSslError> problems; ///< empty: the system's store and the host name vouch for it

    [[nodiscard]] bool verified() const { return problems.isEmpty(); }
    /// SHA-256 of the certificate as it was sent (DER), in lower-case hexadecimal digits.
    [[nodiscard]] QString fingerprint() const;
};

/// Whether to log in to the server that showed this.
using CertificateTest = std::function<bool(const ServerCertificate &)>;

} // namespace venlo
