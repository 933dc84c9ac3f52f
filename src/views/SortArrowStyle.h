#pragma once

#include <QProxyStyle>

namespace venlo
{

/// Draws the sort arrow of headings up for ascending and down for descending in every look; some
/// of the toolkit's own styles draw it the other way round.
class SortArrowStyle : public QProxyStyle
{
    Q_OBJECT

public:
    explicit SortArrowStyle(QObject *parent);
    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override;
};

} // namespace venlo
