#pragma once

#include <QByteArray>
#include <QString>

namespace venlo
{

/// Wording of servers that cut a listing short or could not open its directory and say so only in
/// words: in a line of the data or in the text of a completion reply ("226 Transfer done (but
/// failed to open directory)."). Never ask it about a name.
[[nodiscard]] bool saysListingIsNotWhole(const QString &words);

/// A line that a whole listing may hold and that is no entry: blank, "total 12", "合計 12".
[[nodiscard]] bool isListingNoise(const QByteArray &line);

} // namespace venlo
