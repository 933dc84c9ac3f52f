#include "shared/ShownAddress.h"

#include <algorithm>

namespace venlo
{

QString shownAddress(const QString &address)
{
    const qsizetype at = address.lastIndexOf(QLatin1Char('@'));
    if (at < 0)
        return address;
    const QLatin1String behindScheme("://");
    const qsizetype end = address.indexOf(behindScheme);
    const bool scheme = end > 0 && std::all_of(address.begin(), address.begin() + end,
                                               [](QChar c) { return c.isLetterOrNumber(); });
    const qsizetype begin = scheme ? end + behindScheme.size() : 0;
    return address.left(begin) + QStringLiteral("****") + address.mid(at);
}

} // namespace venlo
