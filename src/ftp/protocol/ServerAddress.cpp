#include "ftp/protocol/ServerAddress.h"

#include "ftp/protocol/HostPort.h"

namespace venlo
{

Result<ServerAddress> ServerAddress::parse(const QString &text)
{
    const auto read = readHostPort(text);
    if (!read)
        return Error{ErrorClass::Local, QStringLiteral("not a server: ") + printable(text), 0};
    ServerAddress address;
    address.host = read->host;
    address.port = read->port.value_or(address.port);
    return address;
}

} // namespace venlo
