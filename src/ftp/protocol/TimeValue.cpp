#include "ftp/protocol/TimeValue.h"

#include "ftp/protocol/ListingFields.h"

#include <algorithm>

namespace venlo
{

namespace
{
constexpr qsizetype plainLength = 14;

int twoDigits(QByteArrayView text, qsizetype at)
{
    return (text[at] - '0') * 10 + (text[at + 1] - '0');
}

/// Milliseconds of the digits behind the point, -1 when they are no digits.
int milliseconds(QByteArrayView fraction)
{
    if (fraction.isEmpty() || !isDigits(fraction))
        return -1;
    int value = 0;
    for (qsizetype i = 0; i < 3; ++i)
        value = value * 10 + (i < fraction.size() ? fraction[i] - '0' : 0);
    return value;
}
} // namespace

QDateTime parseTimeValue(QByteArrayView text)
{
    const qsizetype point = text.indexOf('.');
    const int ms = point < 0 ? 0 : milliseconds(text.sliced(point + 1));
    QByteArrayView digits = point < 0 ? text : text.first(point);
    if (ms < 0 || !isDigits(digits))
        return {};
    int year = 0;
    if (digits.size() == plainLength) {
        year = twoDigits(digits, 0) * 100 + twoDigits(digits, 2);
        digits = digits.sliced(4);
    } else if (digits.size() == plainLength + 1 && digits.startsWith("191")) {
        year = 2000 + twoDigits(digits, 3);
        digits = digits.sliced(5);
    } else {
        return {};
    }
    const QDate date(year, twoDigits(digits, 0), twoDigits(digits, 2));
    const QTime time(twoDigits(digits, 4), twoDigits(digits, 6),
                     twoDigits(digits, 8) == 60 ? 59 : twoDigits(digits, 8), ms);
    if (!date.isValid() || !time.isValid())
        return {};
    return {date, time, Qt::UTC};
}

QByteArray timeValueOf(const QDateTime &time)
{
    const QDateTime utc = time.toUTC();
    const QTime clock = utc.time();
    int year = 0;
    int month = 0;
    int day = 0;
    utc.date().getDate(&year, &month, &day);
    QByteArray text = QByteArray::number(year).rightJustified(4, '0');
    for (const int pair : {month, day, clock.hour(), clock.minute(), clock.second()}) {
        text += static_cast<char>('0' + pair / 10);
        text += static_cast<char>('0' + pair % 10);
    }
    return text;
}

} // namespace venlo
