#pragma once

#include "shared/Result.h"

#include <QNetworkProxy>
#include <QString>

namespace venlo
{

/// Host and port of a server text: "host", "host:port", "[v6]:port", "v6".
struct ServerAddress {
    QString host;
    quint16 port = 21;

    [[nodiscard]] static Result<ServerAddress> parse(const QString &text);
};

/// Proxy of a proxy text: "host:port" or "http://host:port" (CONNECT),
/// "socks5://[user:pass@]host:port". An empty text is no proxy.
[[nodiscard]] Result<QNetworkProxy> parseProxy(const QString &text);

} // namespace venlo
