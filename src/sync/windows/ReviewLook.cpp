#include "sync/windows/ReviewLook.h"

#include <initializer_list>

#include <QApplication>
#include <QPainter>
#include <QPixmap>
#include <QPolygonF>
#include <QStyle>

namespace venlo
{

namespace
{
constexpr int canvas = 64; // pixels of a painted icon, scaled down when shown
constexpr double penWidth = 9;

QIcon painted(const QColor &colour, std::initializer_list<QPolygonF> lines)
{
    QPixmap pixmap(canvas, canvas);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colour, penWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    for (const QPolygonF &line : lines)
        painter.drawPolyline(line);
    painter.end();
    return QIcon(pixmap);
}

QColor mixed(const QColor &front, const QColor &back, double share)
{
    const auto mix = [share](int a, int b) {
        return static_cast<int>(a * share + b * (1 - share));
    };
    return {mix(front.red(), back.red()), mix(front.green(), back.green()),
            mix(front.blue(), back.blue())};
}
QPolygonF line(const QList<QPointF> &points)
{
    return QPolygonF(points);
}
} // namespace

ReviewLook::ReviewLook(const QPalette &palette)
    : m_dark(palette.color(QPalette::Base).lightness() < 128),
      m_text(palette.color(QPalette::Text)),
      m_pale(mixed(m_text, palette.color(QPalette::Base), 0.65))
{
    const QStyle *style = QApplication::style();
    folder = style->standardIcon(QStyle::SP_DirIcon);
    file = style->standardIcon(QStyle::SP_FileIcon);
    held = style->standardIcon(QStyle::SP_MessageBoxWarning);
    done = painted(colour(Action::Add), {line({{10, 34}, {26, 50}, {54, 14}})});
    givenUp =
        painted(colour(Action::Remove), {line({{14, 14}, {50, 50}}), line({{50, 14}, {14, 50}})});
    running = painted(colour(Action::Overwrite), {line({{20, 12}, {46, 32}, {20, 52}, {20, 12}})});
}

QColor ReviewLook::colour(Action action) const
{
    switch (action) {
    case Action::Add:
        return m_dark ? QColor(0x7d, 0xdc, 0x9b) : QColor(0x00, 0x6b, 0x2d);
    case Action::Remove:
        return m_dark ? QColor(0xff, 0x8a, 0x80) : QColor(0xb0, 0x00, 0x20);
    case Action::Overwrite:
        return m_dark ? QColor(0x8a, 0xb4, 0xff) : QColor(0x0b, 0x57, 0xb0);
    case Action::None:
        break;
    }
    return m_text;
}

} // namespace venlo
