// A statement and values, one a line: no value ever brings a placeholder in.
#include "db/FillParams.h"

#include "FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    QStringList lines = QString::fromUtf8(fuzzInput(data, size)).split(QLatin1Char('\n'));
    QString sql = lines.takeFirst();
    const auto placeholders = sql.count(QLatin1Char('?'));
    QVariantList values;
    for (const QString &line : std::as_const(lines))
        values.append(line.isEmpty() ? QVariant() : QVariant(line));
    venlo::FillParams(sql, values);
    const auto left = sql.count(QLatin1Char('?'));
    promise(left == std::max<qsizetype>(0, placeholders - values.size()));
    return 0;
}
