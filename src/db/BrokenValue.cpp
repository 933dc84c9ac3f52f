#include "db/BrokenValue.h"

#include <algorithm>

namespace venlo
{

namespace
{
constexpr QLatin1Char quote('\'');

bool endsBareWord(QChar c)
{
    return QStringView(u" \t\r\n()").contains(c);
}

bool breaks(const QString &text, bool bare)
{
    return text.contains(quote) || (bare && std::any_of(text.begin(), text.end(), endsBareWord));
}
} // namespace

std::optional<QString> brokenValue(const QString &sql, const QVariantList &values)
{
    QChar open;
    auto value = values.begin();
    for (const QChar c : sql) {
        if (value == values.end())
            break;
        if (c == QLatin1Char('?')) {
            const bool text = value->typeId() == QMetaType::QString;
            if (text && breaks(value->toString(), open.isNull()))
                return value->toString();
            ++value;
        } else if (c == open) {
            open = {};
        } else if (open.isNull() && (c == quote || c == QLatin1Char('#'))) {
            open = c;
        }
    }
    return std::nullopt;
}

} // namespace venlo
