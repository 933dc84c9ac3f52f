#include "sync/OverwriteRule.h"

namespace venlo
{

namespace
{
/// At least 1.2 times as large, without the rounding of a division.
bool largerByAFifth(qint64 larger, qint64 smaller)
{
    return larger * 5 >= smaller * 6;
}
} // namespace

bool overwriteStands(const FileCopy &master, const FileCopy &other, bool always)
{
    if (always || master.time > other.time)
        return true;
    if (master.size > other.size)
        return other.size == 0 || largerByAFifth(master.size, other.size);
    if (master.size < other.size)
        return master.size != 0 && largerByAFifth(other.size, master.size);
    return false;
}

} // namespace venlo
