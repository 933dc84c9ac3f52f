#include "db/JetDate.h"

#include "db/DisplayFormat.h"

#include <QDateTime>

#include <array>
#include <cstdlib>

namespace venlo
{

namespace
{
/// A number of one to four ASCII digits.
std::optional<int> numberOf(QStringView text)
{
    if (text.isEmpty() || text.size() > 4)
        return std::nullopt;
    int number = 0;
    for (const QChar c : text) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return std::nullopt;
        number = number * 10 + (c.unicode() - u'0');
    }
    return number;
}

QDate nearest(int yearOfCentury, int month, int day, const QDate &today)
{
    QDate best;
    const int century = today.year() - today.year() % 100;
    for (const int base : {century - 100, century, century + 100}) {
        const QDate candidate(base + yearOfCentury, month, day);
        if (!candidate.isValid())
            continue;
        if (!best.isValid() || std::abs(today.daysTo(candidate)) < std::abs(today.daysTo(best)))
            best = candidate;
    }
    return best;
}

QDate dateOf(QStringView text, const QDate &today)
{
    const auto parts = text.split(u'/');
    if (parts.size() != 3 || parts[1].size() > 2 || parts[2].size() > 2)
        return {};
    const auto year = numberOf(parts[0]);
    const auto month = numberOf(parts[1]);
    const auto day = numberOf(parts[2]);
    if (!year || !month || !day)
        return {};
    if (parts[0].size() == 2)
        return nearest(*year, *month, *day, today);
    return parts[0].size() == 4 ? QDate(*year, *month, *day) : QDate();
}

QTime timeOf(QStringView text)
{
    const auto parts = text.split(u':');
    if (parts.size() < 2 || parts.size() > 3)
        return {};
    std::array<int, 3> values{};
    for (size_t i = 0; i < static_cast<size_t>(parts.size()); ++i) {
        const QStringView part = parts[static_cast<qsizetype>(i)];
        const auto number = numberOf(part);
        if (!number || part.size() > 2)
            return {};
        values[i] = *number;
    }
    return {values[0], values[1], values[2]};
}
} // namespace

std::optional<double> dayCountOfLiteral(const QString &literal, const QDate &today)
{
    const QString text = literal.trimmed();
    const auto blank = text.indexOf(QLatin1Char(' '));
    const QStringView view(text);
    const QDate date = dateOf(blank < 0 ? view : view.left(blank), today);
    const QTime time = blank < 0 ? QTime(0, 0) : timeOf(view.mid(blank + 1).trimmed());
    if (!date.isValid() || !time.isValid())
        return std::nullopt;
    return toDayCount(QDateTime(date, time, Qt::UTC));
}

} // namespace venlo
