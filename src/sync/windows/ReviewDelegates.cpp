#include "sync/windows/ReviewDelegates.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>

namespace venlo
{

void TickDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                         const QModelIndex &index) const
{
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    const Qt::CheckState state = cell.checkState;
    const bool hasBox = cell.features.testFlag(QStyleOptionViewItem::HasCheckIndicator);
    cell.features.setFlag(QStyleOptionViewItem::HasCheckIndicator, false);
    const QStyle *style = cell.widget != nullptr ? cell.widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &cell, painter, cell.widget);
    if (!hasBox)
        return;
    const QSize size(style->pixelMetric(QStyle::PM_IndicatorWidth, &cell, cell.widget),
                     style->pixelMetric(QStyle::PM_IndicatorHeight, &cell, cell.widget));
    QStyleOptionViewItem box = cell;
    box.rect = QStyle::alignedRect(cell.direction, Qt::AlignCenter, size, cell.rect);
    box.state.setFlag(QStyle::State_HasFocus, false);
    box.state.setFlag(QStyle::State_On, state == Qt::Checked);
    box.state.setFlag(QStyle::State_Off, state == Qt::Unchecked);
    box.state.setFlag(QStyle::State_Enabled, index.flags().testFlag(Qt::ItemIsUserCheckable));
    style->drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &box, painter, cell.widget);
    // Styles draw the frame darker than the ground, which a dark ground swallows.
    if (cell.palette.color(QPalette::Base).lightness() < 128) {
        painter->save();
        painter->setPen(cell.palette.color(QPalette::Disabled, QPalette::Text));
        painter->drawRect(box.rect.adjusted(0, 0, -1, -1));
        painter->restore();
    }
}

bool TickDelegate::editorEvent(QEvent *event, QAbstractItemModel *model,
                               const QStyleOptionViewItem &option, const QModelIndex &index)
{
    if (event->type() != QEvent::MouseButtonRelease)
        return false;
    const auto *mouse = static_cast<QMouseEvent *>(event);
    if (mouse->button() != Qt::LeftButton || !option.rect.contains(mouse->position().toPoint()) ||
        !index.flags().testFlag(Qt::ItemIsUserCheckable))
        return false;
    const bool ticked = index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
    return model->setData(index, ticked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
}

QString StateDelegate::displayText(const QVariant &value, const QLocale &) const
{
    const QString state = value.toString();
    if (state == QLatin1String("a"))
        return QStringLiteral("済");
    return state == QLatin1String("r") ? QStringLiteral("不可") : state;
}

} // namespace venlo
