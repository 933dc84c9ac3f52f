#pragma once

#include "shared/Result.h"

#include <QNetworkProxy>
#include <QString>

namespace venlo
{

/// What a server text says about TLS (RFC 4217).
enum class TlsUse {
    Offered, ///< AUTH TLS is asked for; a server that refuses it is used without
    Never,   ///< "ftp:"
    Must,    ///< "ftps:": AUTH TLS or nothing
    Implicit ///< "ftpsi:": TLS from the first byte on
};

/// Host and port of a server text: "host", "host:port", "[v6]:port", "v6", with "ftp:", "ftps:" or
/// "ftpsi:" in front when it says more about TLS. "ftp:2121" is port 2121 of the host "ftp".
struct ServerAddress {
    static constexpr quint16 ftpPort = 21;
    static constexpr quint16 implicitPort = 990;

    QString host;
    quint16 port = ftpPort;
    TlsUse tls = TlsUse::Offered;

    [[nodiscard]] static Result<ServerAddress> parse(const QString &text);
};

/// Proxy of a proxy text: "host:port" or "http://host:port" (CONNECT),
/// "socks5://[user:pass@]host:port". An empty text is no proxy.
[[nodiscard]] Result<QNetworkProxy> parseProxy(const QString &text);

} // namespace venlo
