#include "ftp/protocol/ServerCertificate.h"

#include <QCryptographicHash>

namespace venlo
{

QString ServerCertificate::fingerprint() const
{
    return QString::fromLatin1(certificate.digest(QCryptographicHash::Sha256).toHex());
}

} // namespace venlo
