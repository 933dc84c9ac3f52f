#pragma once

#include "views/RowList.h"

namespace venlo
{

struct RowList::Item {
    Row row;
    int place = -1;  ///< its row number, -1 before it is in the list
    int arrival = 0; ///< counts the rows as they came
};

} // namespace venlo
