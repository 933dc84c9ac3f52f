#pragma once

#include <QString>

#include <optional>

namespace venlo
{

/// "host", "host:port", "[v6]", "[v6]:port" or "v6" taken apart.
struct HostPort {
    QString host; ///< without brackets
    std::optional<quint16> port;
};

/// Blanks around the text are passed over. Nothing when the text is empty, holds a blank, a
/// control character or a character that no host name has, or when its port is not 1..65535.
[[nodiscard]] std::optional<HostPort> readHostPort(const QString &text);

/// A text for a message: one line of bounded length.
[[nodiscard]] QString printable(QString text);

} // namespace venlo
