#pragma once

#include <optional>

#include <QByteArray>
#include <QString>

namespace venlo
{

/// Text of a file in the system code page, which is CP932 on every platform so that files move
/// between machines. A character that CP932 lacks is written "&#xHHHH;" (hexadecimal code point).
[[nodiscard]] QByteArray toSystemText(const QString &text);
/// Reads it back; decodes "&#xHHHH;" only where the character is one that CP932 lacks. Bytes that
/// are no CP932 become U+FFFD.
[[nodiscard]] QString fromSystemText(const QByteArray &bytes);

/// Strict conversions: nothing when a byte sequence or a character has no counterpart.
[[nodiscard]] std::optional<QString> decodeCp932(const QByteArray &bytes);
[[nodiscard]] std::optional<QByteArray> encodeCp932(const QString &text);
[[nodiscard]] std::optional<QString> decodeEucJp(const QByteArray &bytes);
[[nodiscard]] std::optional<QByteArray> encodeEucJp(const QString &text);

} // namespace venlo
