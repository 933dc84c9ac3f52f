#include "support/Ports.h"

#include <QHostAddress>
#include <QTcpServer>

namespace venlo::test
{

namespace
{

quint16 bindAny(QHostAddress::SpecialAddress address)
{
    QTcpServer server;
    return server.listen(QHostAddress(address)) ? server.serverPort() : quint16(0);
}

} // namespace

quint16 freePort(bool ipv6)
{
    return bindAny(ipv6 ? QHostAddress::LocalHostIPv6 : QHostAddress::LocalHost);
}

bool hasIpv6Loopback()
{
    return bindAny(QHostAddress::LocalHostIPv6) != 0;
}

} // namespace venlo::test
