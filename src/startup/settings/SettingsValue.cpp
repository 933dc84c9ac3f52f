#include "startup/settings/SettingsValue.h"

#include <cmath>

#include <QLocale>
#include <QRegularExpression>

namespace venlo
{

namespace
{
constexpr int yearsPerCentury = 100;

int fullYear(int year)
{
    const int today = QDate::currentDate().year();
    int full = today - today % yearsPerCentury + year;
    if (full > today + yearsPerCentury / 2)
        full -= yearsPerCentury;
    else if (full <= today - yearsPerCentury / 2)
        full += yearsPerCentury;
    return full;
}
} // namespace

QString settingText(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("True") : QStringLiteral("False");
    case QMetaType::Double:
    case QMetaType::Float:
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    case QMetaType::QDate:
    case QMetaType::QDateTime:
        return value.toDateTime().toString(QStringLiteral("yyyy/MM/dd hh:mm:ss"));
    default:
        return value.toString();
    }
}

std::optional<bool> settingBoolean(const QString &text)
{
    const QString word = text.trimmed();
    if (word.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0)
        return true;
    if (word.compare(QLatin1String("False"), Qt::CaseInsensitive) == 0)
        return false;
    bool isNumber = false;
    const double number = QLocale::c().toDouble(word, &isNumber);
    if (!isNumber || !std::isfinite(number))
        return std::nullopt;
    return number != 0.0;
}

std::optional<QDateTime> settingDate(const QString &text)
{
    const QRegularExpression form(
        QStringLiteral("^\\s*(\\d{4}|\\d{2})([/-])(\\d{1,2})\\2(\\d{1,2})"
                       "(?:[ T]+(\\d{1,2}):(\\d{2})(?::(\\d{2}))?)?\\s*$"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const QString yearText = match.captured(1);
    const int year = yearText.size() == 2 ? fullYear(yearText.toInt()) : yearText.toInt();
    const QDate date(year, match.captured(3).toInt(), match.captured(4).toInt());
    const QTime time(match.captured(5).toInt(), match.captured(6).toInt(),
                     match.captured(7).toInt());
    if (!date.isValid() || !time.isValid())
        return std::nullopt;
    return QDateTime(date, time);
}

double settingNumber(const QString &text)
{
    QString dense = text;
    dense.remove(QLatin1Char(' ')).remove(QLatin1Char('\t')).remove(QLatin1Char('\n'));
    const QRegularExpression form(
        QStringLiteral("^[+-]?(?:[0-9]+(?:\\.[0-9]*)?|\\.[0-9]+)(?:[eE][+-]?[0-9]+)?"));
    const double number = form.match(dense).captured().toDouble();
    return std::isfinite(number) ? number : 0.0;
}

} // namespace venlo
