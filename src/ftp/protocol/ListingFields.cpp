#include "ftp/protocol/ListingFields.h"

#include <algorithm>
#include <charconv>

namespace venlo
{

ListingFields::ListingFields(QByteArrayView line) : m_line(line)
{
    qsizetype at = 0;
    while (m_count < most) {
        while (at < line.size() && line[at] == ' ')
            ++at;
        if (at == line.size())
            break;
        const qsizetype blank = line.indexOf(' ', at);
        const qsizetype end = blank < 0 ? line.size() : blank;
        m_fields.at(m_count++) = line.sliced(at, end - at);
        at = end;
    }
}

QByteArrayView ListingFields::at(std::size_t index) const
{
    return index < m_count ? m_fields.at(index) : QByteArrayView();
}

QByteArrayView ListingFields::behind(std::size_t index) const
{
    if (index >= m_count)
        return {};
    const QByteArrayView field = m_fields.at(index);
    return m_line.sliced(field.data() + field.size() - m_line.data());
}

QByteArrayView ListingFields::nameBehind(std::size_t index) const
{
    const QByteArrayView rest = behind(index);
    return rest.isEmpty() ? rest : rest.sliced(1);
}

bool isDigits(QByteArrayView text)
{
    return !text.isEmpty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::optional<qint64> parseNumber(QByteArrayView text)
{
    qint64 value = 0;
    if (!isDigits(text))
        return std::nullopt;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    if (read.ec != std::errc())
        return std::nullopt;
    return value;
}

int parseSmallNumber(QByteArrayView text)
{
    constexpr qsizetype mostDigits = 4;
    if (text.size() > mostDigits)
        return -1;
    return static_cast<int>(parseNumber(text).value_or(-1));
}

QTime parseClock(QByteArrayView text)
{
    const qsizetype colon = text.indexOf(':');
    if (colon < 1 || colon > 2)
        return {};
    QByteArrayView minute = text.sliced(colon + 1);
    int second = 0;
    if (const qsizetype next = minute.indexOf(':'); next >= 0) {
        const QByteArrayView seconds = minute.sliced(next + 1);
        second = seconds.size() == 2 ? parseSmallNumber(seconds) : -1;
        second = second == 60 ? 59 : second; // a leap second
        minute = minute.first(next);
    }
    if (minute.size() != 2)
        return {};
    return {parseSmallNumber(text.first(colon)), parseSmallNumber(minute), second};
}

} // namespace venlo
