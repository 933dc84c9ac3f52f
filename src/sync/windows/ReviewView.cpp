#include "sync/windows/ReviewView.h"

#include <algorithm>

#include <QKeyEvent>

#include "sync/windows/GroupedHeader.h"
#include "sync/windows/ReviewDelegates.h"
#include "sync/windows/SyncReviewModel.h"

namespace venlo
{

ReviewView::ReviewView(QWidget *parent) : QTableView(parent)
{
    setHorizontalHeader(new GroupedHeader(SyncReviewModel::groupRole, this));
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(NoEditTriggers);
    setTabKeyNavigation(false);
    setAlternatingRowColors(true);
    setShowGrid(false);
    setWordWrap(false);
    setTextElideMode(Qt::ElideMiddle);
    setHorizontalScrollMode(ScrollPerPixel);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setMinimumSectionSize(1);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 4);
    setItemDelegateForColumn(TickColumn, new TickDelegate(this));
    setItemDelegateForColumn(StateColumn, new StateDelegate(this));
}

void ReviewView::showReview(SyncReviewModel &model)
{
    m_model = &model;
    setModel(&model);
    QHeaderView *headings = horizontalHeader();
    headings->setSortIndicatorClearable(true);
    headings->setSortIndicator(-1, Qt::AscendingOrder);
    setSortingEnabled(true);
    setColumnWidths();
    if (model.rowCount() > 0)
        setCurrentIndex(model.index(0, NameColumn));
}

void ReviewView::setColumnWidths()
{
    const QFontMetrics metrics = fontMetrics();
    const auto width = [&](const QString &text) { return metrics.horizontalAdvance(text) + 16; };
    const int time = width(QStringLiteral("88/88/88 88:88 "));
    const int size = width(QStringLiteral("8,888,888KB"));
    QHeaderView *headings = horizontalHeader();
    headings->setMinimumSectionSize(width(QStringLiteral("実")));
    headings->setSectionResizeMode(NameColumn, QHeaderView::Stretch);
    setColumnWidth(TickColumn, width(QStringLiteral("実行 ▲")));
    setColumnWidth(StateColumn, width(QStringLiteral("不可 ▲▲")));
    setColumnWidth(ActionColumn, width(QStringLiteral("(上書) ▲")));
    for (const int column : {MasterTimeColumn, OtherTimeColumn})
        setColumnWidth(column, time);
    for (const int column : {MasterSizeColumn, OtherSizeColumn})
        setColumnWidth(column, size);
}

void ReviewView::toggleSelected()
{
    QModelIndexList selected = selectionModel()->selectedRows();
    if (selected.isEmpty() && currentIndex().isValid())
        selected += currentIndex();
    std::vector<int> rows;
    for (const QModelIndex &index : selected) {
        if (m_model->tickable(index.row()))
            rows.push_back(index.row());
    }
    if (rows.empty())
        return;
    std::sort(rows.begin(), rows.end());
    const QModelIndex first = m_model->index(rows.front(), TickColumn);
    m_model->setTicked(rows, first.data(Qt::CheckStateRole).toInt() != Qt::Checked);
}

void ReviewView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space && event->modifiers() == Qt::NoModifier) {
        toggleSelected();
        event->accept();
        return;
    }
    QTableView::keyPressEvent(event);
}

} // namespace venlo
