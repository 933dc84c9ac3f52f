#include "db/DisplayFormat.h"

#include <cmath>

namespace venlo
{

namespace
{
constexpr qint64 bytesPerKilo = 1000;
constexpr double millisPerDay = 86400000.0;
/// Day counts beyond the years a date text can show are no dates.
constexpr double largestDayCount = 3.0e6;

QDate dayZero()
{
    return {1899, 12, 30};
}

/// The number pattern "#,#": thousands separators, nothing at all for zero.
QString grouped(qint64 number)
{
    if (number == 0)
        return {};
    QString digits = QString::number(number);
    const qsizetype first = number < 0 ? 1 : 0;
    for (auto at = digits.size() - 3; at > first; at -= 3)
        digits.insert(at, QLatin1Char(','));
    return digits;
}

qint64 dividedHalfEven(qint64 size)
{
    const qint64 quotient = size / bytesPerKilo;
    const qint64 rest = size % bytesPerKilo;
    const bool up = rest * 2 > bytesPerKilo || (rest * 2 == bytesPerKilo && quotient % 2 != 0);
    return up ? quotient + 1 : quotient;
}
/// "yy/MM/dd HH:mm" with or without ":ss", written out: every row of a comparison has two of them.
QString formatted(const QDateTime &time, bool seconds)
{
    if (!time.isValid())
        return {};
    const QDate date = time.date();
    const QTime clock = time.time();
    if (date.year() < 0 || date.year() > 9999)
        return time.toString(seconds ? QStringLiteral("yy/MM/dd HH:mm:ss")
                                     : QStringLiteral("yy/MM/dd HH:mm"));
    QString text = seconds ? QStringLiteral("00/00/00 00:00:00") : QStringLiteral("00/00/00 00:00");
    QChar *at = text.data();
    const auto put = [&at](int number) {
        at[0] = QChar(u'0' + number / 10 % 10);
        at[1] = QChar(u'0' + number % 10);
        at += 3;
    };
    put(date.year());
    put(date.month());
    put(date.day());
    put(clock.hour());
    put(clock.minute());
    if (seconds)
        put(clock.second());
    return text;
}
} // namespace

QString FormatDateText(const QDateTime &time)
{
    return formatted(time, true);
}

QString FormatMinuteText(const QDateTime &time)
{
    return formatted(time, false);
}

QString FormatSizeText(qint64 size)
{
    if (size <= bytesPerKilo)
        return grouped(size) + QLatin1Char('B');
    return grouped(dividedHalfEven(size)) + QStringLiteral("KB");
}

double toDayCount(const QDateTime &wallClock)
{
    const auto days = static_cast<double>(dayZero().daysTo(wallClock.date()));
    return days + wallClock.time().msecsSinceStartOfDay() / millisPerDay;
}

QDateTime fromDayCount(double days)
{
    if (!std::isfinite(days) || std::abs(days) > largestDayCount)
        return {};
    const auto millis = std::llround(days * millisPerDay);
    return QDateTime(dayZero(), QTime(0, 0), Qt::UTC).addMSecs(millis);
}

} // namespace venlo
