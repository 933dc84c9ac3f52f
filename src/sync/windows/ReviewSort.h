#pragma once

#include <vector>

#include <Qt>

namespace venlo
{

class SyncReview;

/// Columns of the review's grid, the master's side before the other.
enum ReviewColumn {
    TickColumn,
    StateColumn,
    NameColumn,
    MasterTimeColumn,
    MasterSizeColumn,
    OtherTimeColumn,
    OtherSizeColumn,
    ActionColumn,
    ReviewColumns
};

/// Orders row indexes of a review by a column; equal ones keep the review's own order, which is
/// also the order for any other column number. Never touches the review.
void sortRows(const SyncReview &review, std::vector<int> &rows, int column, Qt::SortOrder order);

} // namespace venlo
