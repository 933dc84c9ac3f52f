#include "ftp/protocol/HostPort.h"

#include <QHostAddress>

#include <algorithm>

namespace venlo
{

namespace
{
constexpr qsizetype longestHost = 253; ///< RFC 1035, 2.3.4, less the length bytes

bool isHostName(const QString &text)
{
    static const QString never = QStringLiteral("/\\@:[]\"'<>?#%*,;|");
    const auto bad = [](QChar c) { return c.isSpace() || !c.isPrint() || never.contains(c); };
    return !text.isEmpty() && text.size() <= longestHost &&
           std::none_of(text.begin(), text.end(), bad);
}

bool isIpV6(const QString &text)
{
    return text.contains(QLatin1Char(':')) &&
           QHostAddress(text).protocol() == QAbstractSocket::IPv6Protocol;
}

std::optional<quint16> readPort(const QString &text)
{
    const auto digit = [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); };
    const quint16 port = text.toUShort();
    if (port == 0 || !std::all_of(text.begin(), text.end(), digit))
        return std::nullopt;
    return port;
}

/// host and ":port", nothing when the port is no port.
std::optional<HostPort> withPort(const QString &host, const QString &port)
{
    const auto number = readPort(port);
    if (!number)
        return std::nullopt;
    return HostPort{host, number};
}
} // namespace

std::optional<HostPort> readHostPort(const QString &text)
{
    const auto control = [](QChar c) { return c < QLatin1Char(' ') && c != QLatin1Char('\t'); };
    if (std::any_of(text.begin(), text.end(), control))
        return std::nullopt; // not even at the ends, where trimming would hide it
    const QString address = text.trimmed();
    if (address.startsWith(QLatin1Char('['))) {
        const qsizetype close = address.indexOf(QLatin1Char(']'));
        const QString host = close < 0 ? QString() : address.mid(1, close - 1);
        const QString rest = address.mid(close + 1);
        if (!isIpV6(host) || (!rest.isEmpty() && !rest.startsWith(QLatin1Char(':'))))
            return std::nullopt;
        return rest.isEmpty() ? HostPort{host, {}} : withPort(host, rest.mid(1));
    }
    if (isIpV6(address))
        return HostPort{address, {}};
    const qsizetype colon = address.indexOf(QLatin1Char(':'));
    const QString host = colon < 0 ? address : address.left(colon);
    if (!isHostName(host))
        return std::nullopt;
    return colon < 0 ? HostPort{host, {}} : withPort(host, address.mid(colon + 1));
}

QString printable(QString text)
{
    constexpr qsizetype shown = 100;
    text.truncate(shown);
    std::replace_if(
        text.begin(), text.end(), [](QChar c) { return !c.isPrint(); }, QLatin1Char('?'));
    return text;
}

} // namespace venlo
