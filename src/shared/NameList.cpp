#include "shared/NameList.h"

namespace venlo
{

QStringList splitNames(const QString &names)
{
    if (names.isEmpty())
        return {};
    return names.split(QLatin1Char('\r'));
}

QString joinNames(const QStringList &names)
{
    return names.join(QLatin1Char('\r'));
}

QString UploadLine::text() const
{
    return name + QLatin1Char('\t') + dateText + QLatin1Char('\t') + sizeText;
}

UploadLine UploadLine::parse(const QString &line)
{
    const QStringList fields = line.split(QLatin1Char('\t'));
    return {fields.value(0), fields.value(1), fields.value(2)};
}

} // namespace venlo
