#include "db/FillParams.h"

namespace venlo
{

namespace
{
constexpr QLatin1Char placeholder('?');

/// Yes/no values are written as numbers; 1 is understood by yes/no and number columns alike.
QString textOf(const QVariant &value)
{
    if (value.isNull())
        return {};
    if (value.typeId() == QMetaType::Bool)
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    return value.toString().remove(placeholder);
}
} // namespace

void FillParams(QString &sql, const QVariantList &values)
{
    QString result;
    result.reserve(sql.size() + 32 * values.size());
    qsizetype from = 0;
    for (const QVariant &value : values) {
        const auto at = sql.indexOf(placeholder, from);
        if (at < 0)
            break;
        result += QStringView(sql).mid(from, at - from);
        result += textOf(value);
        from = at + 1;
    }
    result += QStringView(sql).mid(from);
    sql = result;
}

QString filled(const QString &sql, const QVariantList &values)
{
    QString statement = sql;
    FillParams(statement, values);
    return statement;
}

} // namespace venlo
