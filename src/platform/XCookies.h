#pragma once

#include <QByteArray>
#include <QList>

namespace venlo
{

/// The MIT-MAGIC-COOKIE-1 entries for a display number in the user's X authority file (XAUTHORITY,
/// otherwise ~/.Xauthority), few of them. A broken file yields what stands before the break.
[[nodiscard]] QList<QByteArray> xCookies(const QByteArray &displayNumber);

/// The first bytes a client sends to an X server: protocol 11.0, little-endian, with a cookie or
/// without (X11 protocol, section 8).
[[nodiscard]] QByteArray xSetupRequest(const QByteArray &cookie);

} // namespace venlo
