#pragma once

#include <QString>

namespace venlo
{

class Database;

/// The two comparison options of a pattern, boxes 0 and 1 of chCmp.
struct ReviewOptions {
    bool bCfl = false;   ///< overwrite every file that both sides have
    bool bCfd = false;   ///< leave first-level folders alone that only one side has
    bool unread = false; ///< the registry could not be asked; the careful values stand
};

/// Options of a registered pattern; both false when there is none. A name
/// that cannot be asked for sets bCfd, for then it may be set.
[[nodiscard]] ReviewOptions optionsOfPattern(Database &database, const QString &sSync);

/// Options of the pattern registered for a pair, looked up with the remote folder as given, then
/// in normal form; both false when there is none, bCfd set when it cannot be asked for.
[[nodiscard]] ReviewOptions optionsOfPair(Database &database, const QString &sLph,
                                          const QString &sFphGiven, const QString &sFphNormal);

} // namespace venlo
