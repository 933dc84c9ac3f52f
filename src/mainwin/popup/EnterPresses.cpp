#include "mainwin/popup/EnterPresses.h"

#include <QPushButton>
#include <QShortcut>

namespace venlo
{

void enterPresses(QPushButton &button)
{
    button.setAutoDefault(false);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto *pressed = new QShortcut(key, &button);
        pressed->setContext(Qt::WidgetShortcut);
        pressed->setAutoRepeat(false);
        QObject::connect(pressed, &QShortcut::activated, &button, &QPushButton::click);
    }
}

} // namespace venlo
