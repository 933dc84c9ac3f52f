#include "platform/FileLook.h"

#include <QAbstractFileIconProvider>
#include <QFileInfo>
#include <QIconEngine>
#include <QMimeDatabase>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace venlo
{

namespace
{
// Numbers of the drawn icons; the keys of real icons are never negative.
constexpr qint64 drawnFolder = -1;
constexpr qint64 drawnFile = -2;
constexpr qreal grid = 16; ///< the drawings' units across and down

void drawFolder(QPainter &painter)
{
    painter.setPen(QPen(QColor(0x9a, 0x76, 0x1c), 1));
    painter.setBrush(QColor(0xe3, 0xb3, 0x41));
    QPainterPath back(QPointF(1.5, 13.5));
    back.lineTo(1.5, 3.5);
    back.lineTo(6, 3.5);
    back.lineTo(7.5, 5.5);
    back.lineTo(14.5, 5.5);
    back.lineTo(14.5, 13.5);
    back.closeSubpath();
    painter.drawPath(back);
    painter.setBrush(QColor(0xff, 0xd9, 0x66));
    painter.drawRect(QRectF(1.5, 7.5, 13, 6));
}

void drawFile(QPainter &painter)
{
    painter.setPen(QPen(QColor(0x6e, 0x6e, 0x6e), 1));
    painter.setBrush(Qt::white);
    QPainterPath sheet(QPointF(3.5, 1.5));
    sheet.lineTo(9.5, 1.5);
    sheet.lineTo(12.5, 4.5);
    sheet.lineTo(12.5, 14.5);
    sheet.lineTo(3.5, 14.5);
    sheet.closeSubpath();
    painter.drawPath(sheet);
    painter.setBrush(QColor(0xdc, 0xdc, 0xdc));
    painter.drawPolygon(QPolygonF({{9.5, 1.5}, {12.5, 4.5}, {9.5, 4.5}}));
}

/// A plain drawing for desktops without icons (bare X, no icon theme), sharp at every size.
class DrawnIcon final : public QIconEngine
{
public:
    explicit DrawnIcon(bool folder) : m_folder(folder) {}

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        if (mode == QIcon::Disabled)
            painter->setOpacity(painter->opacity() / 2);
        painter->translate(rect.topLeft());
        painter->scale(rect.width() / grid, rect.height() / grid);
        if (m_folder)
            drawFolder(*painter);
        else
            drawFile(*painter);
        painter->restore();
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap picture(size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return picture;
    }

    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override
    {
        return {{16, 16}, {24, 24}, {32, 32}};
    }

    [[nodiscard]] QIconEngine *clone() const override { return new DrawnIcon(m_folder); }

private:
    bool m_folder;
};

/// A theme may name an icon that it cannot draw (SVG without the plug-in for it).
bool canBeDrawn(const QIcon &icon)
{
    return !icon.isNull() && !icon.pixmap(QSize(16, 16)).isNull();
}
} // namespace

FileIcon fileIcon(const QString &path)
{
    static const QAbstractFileIconProvider provider;
    const QFileInfo info(path);
    const QIcon icon = provider.icon(info);
    if (canBeDrawn(icon))
        return {icon.cacheKey(), icon};
    const bool folder = info.isDir();
    return {folder ? drawnFolder : drawnFile, QIcon(new DrawnIcon(folder))};
}

QString fileTypeName(const QString &path)
{
    // By the name alone: a list of thousands of files must not be read to be named.
    return QMimeDatabase().mimeTypeForFile(path, QMimeDatabase::MatchExtension).comment();
}

QString attributeLetters(const EntryLook &info)
{
    // The bits count besides what the system grants: to root every file is writable.
    // One by one they come from what is known already; permissions() asks the system three times.
    const bool anyone = info.permission(QFile::WriteOwner) || info.permission(QFile::WriteGroup) ||
                        info.permission(QFile::WriteOther);
    QString letters;
    if (!anyone || !info.isWritable())
        letters += QLatin1Char('R');
    if (info.fileName().startsWith(QLatin1Char('.')))
        letters += QLatin1Char('H');
    return letters;
}

} // namespace venlo
