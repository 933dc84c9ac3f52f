#include "sync/windows/SyncReviewModel.h"

#include "sync/SyncReview.h"

namespace venlo
{

SyncReviewModel::SyncReviewModel(SyncReview &review, const QPalette &palette, QObject *parent)
    : QAbstractTableModel(parent), m_review(review), m_look(palette)
{
    arrange();
}

int SyncReviewModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_shown.size());
}

int SyncReviewModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(ReviewColumns);
}

int SyncReviewModel::tableRow(int reviewRow) const
{
    return m_place.at(static_cast<size_t>(reviewRow));
}

void SyncReviewModel::arrange()
{
    m_shown = m_review.visibleRows();
    sortRows(m_review, m_shown, m_sortColumn, m_sortOrder);
    m_place.assign(static_cast<size_t>(m_review.count()), -1);
    for (size_t i = 0; i < m_shown.size(); ++i)
        m_place[static_cast<size_t>(m_shown[i])] = static_cast<int>(i);
}

bool SyncReviewModel::tickable(int row) const
{
    const SyncRow &here = m_review.row(reviewRow(row));
    return here.box && here.state == RowState::Pending && !m_locked;
}

Qt::ItemFlags SyncReviewModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    if (index.column() == TickColumn && tickable(index.row()))
        flags |= Qt::ItemIsUserCheckable;
    return flags;
}

bool SyncReviewModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid() || role != Qt::CheckStateRole || index.column() != TickColumn ||
        !tickable(index.row()))
        return false;
    setTicked({index.row()}, value.toInt() == Qt::Checked);
    return true;
}

void SyncReviewModel::setTicked(const std::vector<int> &rows, bool ticked)
{
    if (m_locked)
        return;
    for (const int row : rows)
        m_review.setTicked(reviewRow(row), ticked);
    refresh();
    Q_EMIT planChanged();
}

void SyncReviewModel::tickAll(Action action, bool ticked)
{
    m_review.tickAll(action, ticked);
    refresh();
    Q_EMIT planChanged();
}

void SyncReviewModel::setChCmp(int box, bool checked)
{
    m_review.setChCmp(box, checked);
    refresh();
    Q_EMIT planChanged();
}

void SyncReviewModel::setChDsp(int box, bool checked)
{
    beginResetModel();
    m_review.setChDsp(box, checked);
    arrange();
    endResetModel();
}

void SyncReviewModel::sort(int column, Qt::SortOrder order)
{
    Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    std::vector<int> rows;
    rows.reserve(static_cast<size_t>(before.size()));
    for (const QModelIndex &index : before)
        rows.push_back(reviewRow(index.row()));
    m_sortColumn = column;
    m_sortOrder = order;
    arrange();
    QModelIndexList after;
    after.reserve(before.size());
    for (qsizetype i = 0; i < before.size(); ++i)
        after += index(tableRow(rows[static_cast<size_t>(i)]), before[i].column());
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged({}, VerticalSortHint);
}

void SyncReviewModel::setLocked(bool locked)
{
    m_locked = locked;
    refresh();
}

void SyncReviewModel::refresh()
{
    if (!m_shown.empty())
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, ReviewColumns - 1));
}

void SyncReviewModel::setPalette(const QPalette &palette)
{
    m_look = ReviewLook(palette);
    refresh();
}

} // namespace venlo
