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
    const QLatin1Char tab('\t');
    const QStringList fields = line.split(tab);
    const qsizetype behindName = 2;
    if (fields.size() <= behindName + 1)
        return {fields.value(0), fields.value(1), fields.value(2)};
    // A name of Unix may hold tabs; date and size do not.
    return {line.section(tab, 0, -1 - behindName), fields.at(fields.size() - behindName),
            fields.last()};
}

} // namespace venlo
