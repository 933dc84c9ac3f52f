#include "ftp/protocol/ServerAddress.h"

#include "ftp/protocol/HostPort.h"

namespace venlo
{

Result<ServerAddress> ServerAddress::parse(const QString &text)
{
    const auto read = readHostPort(text);
    if (!read) { // "user:password@host" is what somebody may have pasted
        const bool mayHoldPassword = text.contains(QLatin1Char('@'));
        return Error{ErrorClass::Local,
                     QStringLiteral("not a server: ") +
                         (mayHoldPassword ? QStringLiteral("****") : printable(text)),
                     0};
    }
    ServerAddress address;
    address.host = read->host;
    address.port = read->port.value_or(address.port);
    return address;
}

} // namespace venlo
