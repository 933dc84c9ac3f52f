#pragma once

#include <Qt>

namespace venlo
{

/// What a tree node or a list row stands for.
enum class EntryTag {
    FD, ///< a folder
    FL, ///< a file (rows only)
    DM, ///< placeholder child "?" of a folder that was not read yet (nodes only)
    NW  ///< just made in the view, its name is being edited
};

/// The role under which both models give an entry's tag as a number.
inline constexpr int entryTagRole = Qt::UserRole;

} // namespace venlo
