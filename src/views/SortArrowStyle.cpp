#include "views/SortArrowStyle.h"

#include <QStyleOptionHeader>

namespace venlo
{

SortArrowStyle::SortArrowStyle(QObject *parent)
{
    setParent(parent);
}

void SortArrowStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option,
                                   QPainter *painter, const QWidget *widget) const
{
    const auto *const heading = qstyleoption_cast<const QStyleOptionHeader *>(option);
    if (element != PE_IndicatorHeaderArrow || !heading) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        return;
    }
    // The header view says SortDown for ascending order.
    const bool ascending = heading->sortIndicator == QStyleOptionHeader::SortDown;
    const bool shown = heading->sortIndicator != QStyleOptionHeader::None;
    if (shown)
        QProxyStyle::drawPrimitive(ascending ? PE_IndicatorArrowUp : PE_IndicatorArrowDown, option,
                                   painter, widget);
}

} // namespace venlo
