#pragma once

#include <QString>

namespace venlo
{

class Database;

/// The two comparison options of a pattern, boxes 0 and 1 of chCmp.
struct ReviewOptions {
    bool bCfl = false; ///< overwrite every file that both sides have
    bool bCfd = false; ///< leave first-level folders alone that only one side has
};

/// Options of a registered pattern; both false when there is none.
[[nodiscard]] ReviewOptions optionsOfPattern(Database &database, const QString &sSync);

/// Options of the pattern registered for a pair, looked up with the remote folder as given, then
/// in normal form; both false when there is none.
[[nodiscard]] ReviewOptions optionsOfPair(Database &database, const QString &sLph,
                                          const QString &sFphGiven, const QString &sFphNormal);

} // namespace venlo
