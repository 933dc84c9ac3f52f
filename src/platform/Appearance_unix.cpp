#include "platform/Appearance.h"

#include <QGuiApplication>
#include <QPalette>

namespace venlo
{

/// The platform theme has put the desktop's colours into the palette.
bool darkDesktop()
{
    const QPalette palette = QGuiApplication::palette();
    return palette.color(QPalette::Window).lightness() <
           palette.color(QPalette::WindowText).lightness();
}

bool styleFollowsDarkDesktop()
{
    return true;
}

} // namespace venlo
