// How rows come into a RowList, leave it and are sorted.
#include "views/RowItem.h"
#include "views/RowList.h"

#include <algorithm>
#include <iterator>

namespace venlo
{

namespace
{

/// Up to so many separate places rows come and go one by one; beyond, the list is rearranged in
/// one step, because every single step costs the views a pass over what they show.
constexpr size_t fewPlaces = 64;

} // namespace

void RowList::clear()
{
    beginResetModel();
    m_items.clear();
    m_byKey.clear();
    m_byName.clear();
    m_arrived = 0;
    endResetModel();
}

bool RowList::before(Item &left, Item &right) const
{
    if (m_sortColumn >= 0) {
        const int order =
            textOf(left, m_sortColumn).compare(textOf(right, m_sortColumn), Qt::CaseInsensitive);
        if (order != 0)
            return m_sortOrder == Qt::AscendingOrder ? order < 0 : order > 0;
        // Equal ones keep the same order whichever way the column is turned.
        if (const int tie = m_layout.tieColumn < 0 ? 0
                                                   : textOf(left, m_layout.tieColumn)
                                                         .compare(textOf(right, m_layout.tieColumn),
                                                                  Qt::CaseInsensitive);
            tie != 0)
            return tie < 0;
    }
    return left.arrival < right.arrival;
}

void RowList::renumber(size_t from)
{
    for (size_t i = from; i < m_items.size(); ++i)
        m_items[i]->place = static_cast<int>(i);
}

RowList::Items RowList::makeItems(std::vector<Row> rows)
{
    Items made;
    made.reserve(rows.size());
    for (Row &row : rows) {
        const std::optional<QString> key = m_keys.next();
        if (!key)
            break;
        auto item = std::make_unique<Item>();
        item->row = std::move(row);
        item->row.key = *key;
        item->arrival = m_arrived++;
        m_byKey.insert(*key, item.get());
        m_byName.insert(item->row.texts.value(0), item.get());
        made.push_back(std::move(item));
    }
    return made;
}

bool RowList::append(std::vector<Row> rows)
{
    const size_t wanted = rows.size();
    Items items = makeItems(std::move(rows));
    const bool all = items.size() == wanted;
    if (items.empty())
        return all;
    const auto less = [this](const auto &left, const auto &right) { return before(*left, *right); };
    std::sort(items.begin(), items.end(), less);
    // Where each one belongs among those that are there; how many separate places that makes.
    std::vector<size_t> places;
    places.reserve(items.size());
    size_t separate = 0;
    for (const auto &item : items) {
        const auto from =
            m_items.begin() + (places.empty() ? 0 : static_cast<std::ptrdiff_t>(places.back()));
        const auto place = std::upper_bound(from, m_items.end(), item, less);
        const auto number = static_cast<size_t>(std::distance(m_items.begin(), place));
        if (places.empty() || places.back() != number)
            ++separate;
        places.push_back(number);
    }
    if (separate == 1 && places.front() == m_items.size())
        insertAtEnd(std::move(items));
    else if (separate <= fewPlaces)
        insertRuns(std::move(items), places);
    else
        insertAndMerge(std::move(items));
    return all;
}

void RowList::insertAtEnd(Items items)
{
    const size_t first = m_items.size();
    beginInsertRows({}, count(), count() + static_cast<int>(items.size()) - 1);
    std::move(items.begin(), items.end(), std::back_inserter(m_items));
    renumber(first);
    endInsertRows();
}

void RowList::insertRuns(Items items, const std::vector<size_t> &places)
{
    // From the back, so that the places in front stay true.
    for (size_t end = items.size(); end > 0;) {
        size_t first = end - 1;
        while (first > 0 && places[first - 1] == places[end - 1])
            --first;
        const size_t place = places[first];
        const int row = static_cast<int>(place);
        beginInsertRows({}, row, row + static_cast<int>(end - first) - 1);
        const auto from = items.begin() + static_cast<std::ptrdiff_t>(first);
        const auto to = items.begin() + static_cast<std::ptrdiff_t>(end);
        m_items.insert(m_items.begin() + row, std::make_move_iterator(from),
                       std::make_move_iterator(to));
        renumber(place);
        endInsertRows();
        end = first;
    }
}

void RowList::insertAndMerge(Items items)
{
    const auto old = static_cast<std::ptrdiff_t>(m_items.size());
    insertAtEnd(std::move(items));
    reorder([this, old](Items &all) {
        std::inplace_merge(
            all.begin(), all.begin() + old, all.end(),
            [this](const auto &left, const auto &right) { return before(*left, *right); });
    });
}

void RowList::remove(std::vector<int> rows)
{
    std::erase_if(rows, [this](int row) { return row < 0 || row >= count(); });
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    size_t ranges = 0;
    for (size_t i = 0; i < rows.size(); ++i) {
        if (i == 0 || rows[i] != rows[i - 1] + 1)
            ++ranges;
    }
    if (ranges > fewPlaces) {
        std::vector<bool> doomed(m_items.size());
        for (const int row : rows)
            doomed[static_cast<size_t>(row)] = true;
        reorder([&doomed](Items &all) {
            std::stable_partition(all.begin(), all.end(), [&doomed](const auto &item) {
                return !doomed[static_cast<size_t>(item->place)];
            });
        });
        removeRange(count() - static_cast<int>(rows.size()), count() - 1);
        return;
    }
    for (size_t end = rows.size(); end > 0;) {
        size_t first = end - 1;
        while (first > 0 && rows[first - 1] == rows[first] - 1)
            --first;
        removeRange(rows[first], rows[end - 1]);
        end = first;
    }
}

void RowList::removeRange(int first, int last)
{
    beginRemoveRows({}, first, last);
    const auto from = m_items.begin() + first;
    const auto to = m_items.begin() + last + 1;
    for (auto it = from; it != to; ++it) {
        m_byKey.remove((*it)->row.key);
        m_byName.remove((*it)->row.texts.value(0), it->get());
    }
    m_items.erase(from, to);
    renumber(static_cast<size_t>(first));
    endRemoveRows();
}

void RowList::reorder(const std::function<void(Items &)> &arrange)
{
    Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList oldIndexes = persistentIndexList();
    std::vector<const Item *> held;
    held.reserve(static_cast<size_t>(oldIndexes.size()));
    for (const QModelIndex &index : oldIndexes)
        held.push_back(&at(index.row()));
    arrange(m_items);
    renumber();
    QModelIndexList newIndexes;
    newIndexes.reserve(oldIndexes.size());
    for (size_t i = 0; i < held.size(); ++i)
        newIndexes.append(index(held[i]->place, oldIndexes[static_cast<int>(i)].column()));
    changePersistentIndexList(oldIndexes, newIndexes);
    Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

void RowList::sort(int column, Qt::SortOrder order)
{
    m_sortColumn = column >= 0 && column < columnCount() ? column : -1;
    m_sortOrder = order;
    resort();
}

void RowList::resort()
{
    if (m_items.empty())
        return;
    reorder([this](Items &all) {
        std::sort(all.begin(), all.end(),
                  [this](const auto &left, const auto &right) { return before(*left, *right); });
    });
}

} // namespace venlo
