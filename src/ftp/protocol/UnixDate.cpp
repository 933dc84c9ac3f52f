#include "ftp/protocol/UnixDate.h"

#include <algorithm>

namespace venlo
{

namespace
{
constexpr qsizetype yearDigits = 4;
constexpr int leapGap = 8; ///< years between two leap days at most

/// The signs of year, month and day in the encodings that servers list in.
struct Sign {
    QByteArrayView utf8, cp932, eucJp;
};
constexpr Sign yearSign{"\xe5\xb9\xb4", "\x94\x4e", "\xc7\xaf"};
constexpr Sign monthSign{"\xe6\x9c\x88", "\x8c\x8e", "\xb7\xee"};
constexpr Sign daySign{"\xe6\x97\xa5", "\x93\xfa", "\xc6\xfc"};

/// The number before a sign, and what follows the sign.
struct Signed {
    int number = -1;
    QByteArrayView rest;
};

Signed readSigned(QByteArrayView text, const Sign &sign)
{
    const auto *const end =
        std::find_if(text.begin(), text.end(), [](char c) { return c < '0' || c > '9'; });
    const QByteArrayView digits = text.first(end - text.begin());
    const QByteArrayView rest = text.sliced(digits.size());
    for (const QByteArrayView form : {sign.utf8, sign.cp932, sign.eucJp}) {
        if (rest.startsWith(form))
            return {parseSmallNumber(digits), rest.sliced(form.size())};
    }
    return {};
}

/// A number with or without its sign, -1 when it is none.
int readNumber(QByteArrayView text, const Sign &sign)
{
    if (isDigits(text))
        return parseSmallNumber(text);
    const Signed read = readSigned(text, sign);
    return read.rest.isEmpty() ? read.number : -1;
}

int readMonth(QByteArrayView text)
{
    static constexpr std::array<QByteArrayView, 12> names = {
        "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const auto same = [&](QByteArrayView name) {
        return text.size() == name.size() && qstrnicmp(text.data(), name.data(), 3) == 0;
    };
    const auto *const found = std::find_if(names.begin(), names.end(), same);
    if (found != names.end())
        return static_cast<int>(found - names.begin()) + 1;
    const Signed read = readSigned(text, monthSign);
    return read.rest.isEmpty() ? read.number : -1;
}

int readYear(QByteArrayView text)
{
    const bool fourDigits = text.size() >= yearDigits && isDigits(text.first(yearDigits));
    return fourDigits ? readNumber(text, yearSign) : -1;
}

QDateTime clockTime(QDate date, QTime time)
{
    return date.isValid() && time.isValid() ? QDateTime(date, time, Qt::UTC) : QDateTime();
}

QDate latestUpTo(QDate last, int month, int day)
{
    for (int year = last.year(); year >= last.year() - leapGap; --year) {
        const QDate date(year, month, day);
        if (date.isValid() && date <= last)
            return date;
    }
    return {};
}

std::optional<UnixDate> checked(UnixDate date)
{
    if (!date.time.isValid())
        return std::nullopt;
    return date;
}

/// Behind month and day: a time of day, a time of day and a year, or a year.
std::optional<UnixDate> readTail(const ListingFields &fields, std::size_t at, int month, int day,
                                 QDate serverToday)
{
    const QByteArrayView tail = fields.at(at);
    if (const int year = readYear(tail); year > 0)
        return checked({clockTime({year, month, day}, QTime(0, 0)), true, at});
    const QTime clock = parseClock(tail);
    if (!clock.isValid())
        return std::nullopt;
    constexpr qsizetype fullClock = 8; // "HH:MM:SS", which comes with a year
    const QByteArrayView next = fields.at(at + 1);
    if (tail.size() == fullClock && next.size() == yearDigits && readYear(next) > 0 &&
        fields.count() > at + 2)
        return checked({clockTime({readYear(next), month, day}, clock), false, at + 1});
    return checked({clockTime(latestUpTo(serverToday.addDays(1), month, day), clock), false, at});
}

bool isZone(QByteArrayView text)
{
    return text.size() == 5 && (text[0] == '+' || text[0] == '-') && isDigits(text.sliced(1));
}

/// "2024-11-21 05:10", "2024-11-21 05:10:33", "2024-11-21 05:10:33.000000000 +0900".
std::optional<UnixDate> readIso(const ListingFields &fields, std::size_t at)
{
    const QByteArrayView day = fields.at(at);
    if (day.size() != 10 || day[4] != '-' || day[7] != '-')
        return std::nullopt;
    const QDate date(parseSmallNumber(day.first(4)), parseSmallNumber(day.sliced(5, 2)),
                     parseSmallNumber(day.sliced(8)));
    QByteArrayView clock = fields.at(at + 1);
    std::size_t last = at + 1;
    if (const qsizetype point = clock.indexOf('.'); point >= 0) {
        if (!isDigits(clock.sliced(point + 1)) || !isZone(fields.at(at + 2)))
            return std::nullopt;
        clock = clock.first(point);
        last = at + 2;
    }
    return checked({clockTime(date, parseClock(clock)), false, last});
}
} // namespace

std::optional<UnixDate> readUnixDate(const ListingFields &fields, std::size_t at, QDate serverToday)
{
    if (auto iso = readIso(fields, at))
        return iso;
    const QByteArrayView first = fields.at(at);
    const QByteArrayView second = fields.at(at + 1);
    if (const Signed year = readSigned(first, yearSign); year.number > 0 && year.rest.isEmpty()) {
        const QDate date(year.number, readMonth(second), readNumber(fields.at(at + 2), daySign));
        return checked({clockTime(date, QTime(0, 0)), true, at + 2});
    }
    if (const int month = readMonth(first); month > 0)
        return readTail(fields, at + 2, month, readNumber(second, daySign), serverToday);
    if (const Signed month = readSigned(first, monthSign); month.number > 0)
        return readTail(fields, at + 1, month.number, readNumber(month.rest, daySign), serverToday);
    QByteArrayView day = first;
    if (day.endsWith('.'))
        day.chop(1);
    if (const int month = readMonth(second); month > 0)
        return readTail(fields, at + 2, month, readNumber(day, daySign), serverToday);
    return std::nullopt;
}

} // namespace venlo
