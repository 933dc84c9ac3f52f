#include "ftp/protocol/ServerAddress.h"

#include "ftp/protocol/HostPort.h"
#include "shared/ShownAddress.h"

#include <algorithm>
#include <array>

namespace venlo
{

namespace
{
struct Prefix {
    QLatin1String text;
    TlsUse tls;
};

/// A text that its prefix was taken from. What has nothing but digits behind it is no prefix but a
/// host of that name and its port.
struct Said {
    QString rest;
    TlsUse tls = TlsUse::Offered;
};

Said withoutPrefix(const QString &text)
{
    static constexpr std::array<Prefix, 3> prefixes{{{QLatin1String("ftp:"), TlsUse::Never},
                                                     {QLatin1String("ftps:"), TlsUse::Must},
                                                     {QLatin1String("ftpsi:"), TlsUse::Implicit}}};
    const auto digit = [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); };
    const QString trimmed = text.trimmed();
    for (const Prefix &prefix : prefixes) {
        if (!trimmed.startsWith(prefix.text, Qt::CaseInsensitive))
            continue;
        const QString rest = trimmed.mid(prefix.text.size()).trimmed();
        if (std::all_of(rest.begin(), rest.end(), digit))
            break;
        QString left = text; // with what was trimmed, which may be no blank
        left.remove(left.indexOf(prefix.text, 0, Qt::CaseInsensitive), prefix.text.size());
        return {left, prefix.tls};
    }
    return {text, TlsUse::Offered};
}
} // namespace

Result<ServerAddress> ServerAddress::parse(const QString &text)
{
    const Said said = withoutPrefix(text);
    const auto read = readHostPort(said.rest);
    if (!read)
        return Error{ErrorClass::Local,
                     QStringLiteral("not a server: ") + printable(shownAddress(text)), 0};
    ServerAddress address;
    address.host = read->host;
    address.tls = said.tls;
    address.port = read->port.value_or(said.tls == TlsUse::Implicit ? implicitPort : ftpPort);
    return address;
}

} // namespace venlo
