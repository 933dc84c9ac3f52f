#include "ftp/protocol/ListingDialects.h"
#include "ftp/protocol/ListingFields.h"

#include <algorithm>

namespace venlo
{

namespace
{
constexpr qsizetype folderBlanks = 10; ///< between "<DIR>" and the name, which may begin with more
constexpr int centuryPivot = 70;       ///< two-digit years from here on are of the 20th century

/// "11-21-26", "11-21-2026", "2026-11-21", "/" as well as "-"; invalid when it is none.
QDate readDate(QByteArrayView field)
{
    const char dash = field.contains('-') ? '-' : '/';
    const qsizetype one = field.indexOf(dash);
    const qsizetype two = one < 0 ? -1 : field.indexOf(dash, one + 1);
    if (two < 0)
        return {};
    const QByteArrayView first = field.first(one);
    const QByteArrayView last = field.sliced(two + 1);
    const int middle = parseSmallNumber(field.sliced(one + 1, two - one - 1));
    if (first.size() == 4 && last.size() <= 2)
        return {parseSmallNumber(first), middle, parseSmallNumber(last)};
    int year = parseSmallNumber(last);
    if (first.size() > 2 || year < 0 || (last.size() != 2 && last.size() != 4))
        return {};
    if (last.size() == 2)
        year += year < centuryPivot ? 2000 : 1900;
    return {year, parseSmallNumber(first), middle};
}

/// "05:10AM", "5:10PM", "17:10".
QTime readClock(QByteArrayView field)
{
    const bool morning = field.endsWith("AM") || field.endsWith("am");
    const bool evening = field.endsWith("PM") || field.endsWith("pm");
    if (!morning && !evening)
        return parseClock(field);
    const QTime clock = parseClock(field.chopped(2));
    if (!clock.isValid() || clock.hour() < 1 || clock.hour() > 12)
        return {};
    return {clock.hour() % 12 + (evening ? 12 : 0), clock.minute(), clock.second()};
}

/// A size with or without separators between its thousands.
std::optional<qint64> readSize(QByteArrayView field)
{
    const char separator = field.contains(',') ? ',' : '.';
    const qsizetype lead = field.indexOf(separator);
    if (lead < 0)
        return parseNumber(field);
    if (lead < 1 || lead > 3)
        return std::nullopt;
    QByteArray digits = field.first(lead).toByteArray();
    for (qsizetype at = lead; at < field.size(); at += 4) {
        if (field[at] != separator || field.size() - at < 4)
            return std::nullopt;
        digits += field.sliced(at + 1, 3).toByteArray();
    }
    return parseNumber(digits);
}

QByteArrayView folderName(QByteArrayView behind)
{
    const auto *const begin =
        std::find_if(behind.begin(), behind.end(), [](char c) { return c != ' '; });
    return behind.sliced(std::min<qsizetype>(begin - behind.begin(), folderBlanks));
}
} // namespace

ListedLine readDosLine(const QByteArray &line)
{
    const ListingFields fields(line);
    const QDate date = readDate(fields.at(0));
    const QTime clock = readClock(fields.at(1));
    if (line.startsWith(' ') || !date.isValid() || !clock.isValid())
        return std::nullopt;
    ListedEntry entry;
    entry.time = QDateTime(date, clock, Qt::UTC);
    if (fields.at(2) == "<DIR>") {
        entry.kind = ListedEntry::Kind::Folder;
        entry.rawName = folderName(fields.behind(2)).toByteArray();
    } else if (const auto size = readSize(fields.at(2))) {
        entry.size = *size;
        entry.rawName = fields.nameBehind(2).toByteArray();
    }
    if (entry.rawName.isEmpty())
        return std::nullopt;
    return entry;
}

} // namespace venlo
