#pragma once

#include <QtGlobal>

namespace venlo
{

/// A status list is cleared before a line when it holds more than this many.
constexpr qsizetype mostStatusLines = 50;

/// What is left to see of lines that come to a status list one behind the other: those from first
/// on, behind what the list holds unless it was cleared meanwhile.
struct StatusTail {
    qsizetype first = 0;
    bool clears = false;
};

[[nodiscard]] constexpr StatusTail statusTail(qsizetype held, qsizetype added)
{
    constexpr qsizetype room = mostStatusLines + 1;
    if (held + added <= room)
        return {};
    const qsizetype beyond = added - (held < room ? room - held : 0);
    return {added - 1 - (beyond - 1) % room, true};
}

} // namespace venlo
