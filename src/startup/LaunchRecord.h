#pragma once

#include <cstdint>

#include <QByteArray>
#include <QString>

namespace venlo
{

/// Window layout handed over by a launching program in a binary file without a header: four signed
/// 32-bit little-endian numbers, then two texts in the system code page, each behind its 16-bit
/// little-endian length in bytes. What a short file lacks stays empty; half a text is no path.
struct LaunchRecord {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    QString root;  ///< root folder of the local pane
    QString actPh; ///< folder that the local pane opens at

    /// True when the record may replace the saved layout.
    [[nodiscard]] bool usable() const { return height > 0 && width > 0; }

    [[nodiscard]] static LaunchRecord parse(const QByteArray &bytes);
    /// Reads no more of the file than a record can have. An empty record when it cannot be read.
    [[nodiscard]] static LaunchRecord read(const QString &path);
};

} // namespace venlo
