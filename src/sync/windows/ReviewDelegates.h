#pragma once

#include <QStyledItemDelegate>

namespace venlo
{

/// Paints a tick box in the middle of its cell; a click anywhere in the cell turns it over.
class TickDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;
};

/// Shows the done marks "a" and "r" as words.
class StateDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;
    [[nodiscard]] QString displayText(const QVariant &value, const QLocale &locale) const override;
};

} // namespace venlo
