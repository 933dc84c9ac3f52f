#pragma once

#include <QByteArrayView>
#include <QDateTime>

#include <array>
#include <cstddef>
#include <optional>

namespace venlo
{

/// The leading blank-separated fields of a listing line, as many as may stand before its name.
/// Views into the line, which must outlive it.
class ListingFields
{
public:
    static constexpr std::size_t most = 16;

    explicit ListingFields(QByteArrayView line);

    [[nodiscard]] std::size_t count() const { return m_count; }
    /// Empty beyond the last field.
    [[nodiscard]] QByteArrayView at(std::size_t index) const;
    /// What follows the field, blanks included; empty beyond the last field.
    [[nodiscard]] QByteArrayView behind(std::size_t index) const;
    /// The name behind the field: exactly one blank parts them, further ones belong to the name.
    [[nodiscard]] QByteArrayView nameBehind(std::size_t index) const;

private:
    QByteArrayView m_line;
    std::array<QByteArrayView, most> m_fields;
    std::size_t m_count = 0;
};

/// At least one character, all of them "0" to "9".
[[nodiscard]] bool isDigits(QByteArrayView text);
/// A decimal number without sign; nothing when it is none or above 2^63 - 1.
[[nodiscard]] std::optional<qint64> parseNumber(QByteArrayView text);
/// A decimal number of at most four digits, -1 when it is none.
[[nodiscard]] int parseSmallNumber(QByteArrayView text);
/// "H:MM", "HH:MM" or "HH:MM:SS", on the 24 h clock; invalid when it is none.
[[nodiscard]] QTime parseClock(QByteArrayView text);

} // namespace venlo
