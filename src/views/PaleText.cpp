#include "views/PaleText.h"

#include <QGuiApplication>
#include <QPalette>

namespace venlo
{

QBrush paleText()
{
    // Three fifths of the text's colour keep a contrast above 4.5:1 on black and white alike.
    constexpr int share = 3;
    constexpr int whole = 5;
    const QPalette palette = QGuiApplication::palette();
    const QColor text = palette.color(QPalette::Active, QPalette::Text);
    const QColor base = palette.color(QPalette::Active, QPalette::Base);
    const auto mixed = [](int front, int back) {
        return (front * share + back * (whole - share)) / whole;
    };
    return QColor(mixed(text.red(), base.red()), mixed(text.green(), base.green()),
                  mixed(text.blue(), base.blue()));
}

} // namespace venlo
