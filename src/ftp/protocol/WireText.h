#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace venlo
{

/// UTF-8 as RFC 3629 has it: nothing for overlong forms, surrogates, cut sequences. A leading byte
/// order mark stays, so that different bytes never become the same text.
[[nodiscard]] std::optional<QString> decodeUtf8Strictly(const QByteArray &bytes);

/// Text to show or log, never to send back: UTF-8, otherwise CP932, otherwise each byte the
/// character of its number. NUL is dropped.
[[nodiscard]] QString decodeLeniently(const QByteArray &bytes);

} // namespace venlo
