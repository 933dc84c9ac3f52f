#include "sync/windows/GroupedHeader.h"

#include <QAbstractItemModel>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionHeader>

namespace venlo
{

GroupedHeader::GroupedHeader(int groupRole, QWidget *parent)
    : QHeaderView(Qt::Horizontal, parent), m_groupRole(groupRole)
{
    setSectionsClickable(true);
    setHighlightSections(false);
    connect(this, &QHeaderView::sectionResized, this, [this] { viewport()->update(); });
}

QString GroupedHeader::group(int section) const
{
    return section < 0 || section >= count()
               ? QString()
               : model()->headerData(section, Qt::Horizontal, m_groupRole).toString();
}

QSize GroupedHeader::sectionSizeFromContents(int section) const
{
    const QSize size = QHeaderView::sectionSizeFromContents(section);
    return {size.width(), 2 * size.height()};
}

QRect GroupedHeader::groupRect(int section) const
{
    const QString text = group(section);
    int first = section;
    while (group(first - 1) == text && first > 0)
        --first;
    int last = section;
    while (last + 1 < count() && group(last + 1) == text)
        ++last;
    const int left = sectionViewportPosition(first);
    const int right = sectionViewportPosition(last) + sectionSize(last);
    return {left, 0, right - left, height() / 2};
}

void GroupedHeader::paintSection(QPainter *painter, const QRect &rect, int section) const
{
    if (group(section).isEmpty()) {
        QHeaderView::paintSection(painter, rect, section);
        return;
    }
    const QRect above = groupRect(section);
    QHeaderView::paintSection(painter, rect.adjusted(0, above.height(), 0, 0), section);
    QStyleOptionHeader option;
    initStyleOption(&option);
    option.rect = above;
    option.section = section;
    option.position = QStyleOptionHeader::Middle;
    option.textAlignment = Qt::AlignCenter;
    option.text = option.fontMetrics.elidedText(group(section), Qt::ElideRight, above.width() - 8);
    painter->save();
    painter->setClipRect(rect & above);
    style()->drawControl(QStyle::CE_Header, &option, painter, this);
    painter->restore();
}

} // namespace venlo
