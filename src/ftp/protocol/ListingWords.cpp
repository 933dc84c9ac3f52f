#include "ftp/protocol/ListingWords.h"

#include "ftp/protocol/ListingFields.h"

#include <algorithm>
#include <array>

namespace venlo
{

bool saysListingIsNotWhole(const QString &words)
{
    static constexpr std::array<QLatin1String, 14> signs = {
        QLatin1String("truncated"),      QLatin1String("limited to"),
        QLatin1String("limit reached"),  QLatin1String("limit exceeded"),
        QLatin1String("failed to open"), QLatin1String("cannot open"),
        QLatin1String("can't open"),     QLatin1String("could not open"),
        QLatin1String("unable to open"), QLatin1String("permission denied"),
        QLatin1String("access denied"),  QLatin1String("cannot access"),
        QLatin1String("too many"),       QLatin1String("incomplete")};
    return std::any_of(signs.begin(), signs.end(), [&](QLatin1String sign) {
        return words.contains(sign, Qt::CaseInsensitive);
    });
}

bool isListingNoise(const QByteArray &line)
{
    const ListingFields fields(line);
    if (fields.count() == 0)
        return true;
    // The Japanese word in UTF-8, CP932 and EUC-JP.
    static constexpr std::array<QByteArrayView, 4> totals = {
        "total", "\xe5\x90\x88\xe8\xa8\x88", "\x8d\x87\x8c\x76", "\xb9\xe7\xb7\xd7"};
    if (fields.count() != 2 ||
        std::find(totals.begin(), totals.end(), fields.at(0)) == totals.end())
        return false;
    // "12", or "1.5M" where the server counts for people
    return std::all_of(fields.at(1).begin(), fields.at(1).end(),
                       [](char c) { return QByteArrayView("0123456789.KMGT").contains(c); });
}

} // namespace venlo
