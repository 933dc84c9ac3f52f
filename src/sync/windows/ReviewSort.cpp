#include "sync/windows/ReviewSort.h"

#include <algorithm>

#include <QString>

#include "sync/SyncReview.h"

namespace venlo
{

namespace
{
struct Key {
    int row = 0;
    qint64 number = 0;
    QString text;
};

qint64 sizeKey(const SyncRow &row, const FileCopy &copy)
{
    return row.folder || copy.time.isEmpty() ? -1 : copy.size;
}

qint64 tickKey(const SyncRow &row)
{
    if (!row.box)
        return 2;
    return row.ticked ? 0 : 1;
}

Key keyOf(const SyncReview &review, int index, int column)
{
    const SyncRow &row = review.row(index);
    switch (column) {
    case TickColumn:
        return {index, tickKey(row), {}};
    case StateColumn:
        return {index, 0, review.stateText(index)};
    case NameColumn:
        return {index, 0, review.listText(index).toCaseFolded()};
    case MasterTimeColumn:
        return {index, 0, row.master.time};
    case MasterSizeColumn:
        return {index, sizeKey(row, row.master), {}};
    case OtherTimeColumn:
        return {index, 0, row.other.time};
    case OtherSizeColumn:
        return {index, sizeKey(row, row.other), {}};
    case ActionColumn:
        return {index, 0, review.actionText(index)};
    default:
        return {index, 0, {}};
    }
}

bool before(const Key &a, const Key &b)
{
    return a.number != b.number ? a.number < b.number : a.text < b.text;
}
} // namespace

void sortRows(const SyncReview &review, std::vector<int> &rows, int column, Qt::SortOrder order)
{
    std::sort(rows.begin(), rows.end());
    if (column < 0 || column >= ReviewColumns)
        return;
    std::vector<Key> keys;
    keys.reserve(rows.size());
    for (const int row : rows)
        keys.push_back(keyOf(review, row, column));
    if (order == Qt::AscendingOrder)
        std::stable_sort(keys.begin(), keys.end(), before);
    else
        std::stable_sort(keys.begin(), keys.end(),
                         [](const Key &a, const Key &b) { return before(b, a); });
    std::transform(keys.cbegin(), keys.cend(), rows.begin(),
                   [](const Key &key) { return key.row; });
}

} // namespace venlo
