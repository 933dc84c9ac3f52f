// What a person does with hands: pointing, clicking, pulling, typing.
#include <algorithm>

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QMenu>
#include <QThread>
#include <QWidget>

#include "e2e/DesktopPerson.h"
#include "e2e/WidgetPlaces.h"

namespace venlo::test
{

namespace
{
constexpr int mostPresses = 40;
constexpr int settleTime = 40; // ms until a key has had its effect
constexpr int dragSteps = 12;
constexpr int dragStart = 14; // pixels, beyond what still counts as a click

QString number(int value)
{
    return QString::number(value);
}

QStringList moveTo(const QPoint &at)
{
    return {QStringLiteral("mousemove"), number(at.x()), number(at.y()), QStringLiteral("sleep"),
            QStringLiteral("0.03")};
}
} // namespace

void DesktopPerson::press(const QPoint &at, int button, int times) const
{
    xdotool(moveTo(at) + QStringList{QStringLiteral("click"), QStringLiteral("--repeat"),
                                     number(times), QStringLiteral("--delay"), QStringLiteral("60"),
                                     number(button)});
}

void DesktopPerson::click(const QString &widget)
{
    press(widgetPoint(widget), 1);
}

void DesktopPerson::doubleClick(const QString &widget)
{
    press(widgetPoint(widget), 1, 2);
}

void DesktopPerson::clickRow(const QString &view, const QString &text)
{
    press(rowPoint(view, text), 1);
}

void DesktopPerson::rightClickRow(const QString &view, const QString &text)
{
    press(rowPoint(view, text), 3);
}

void DesktopPerson::doubleClickRow(const QString &view, const QString &text)
{
    press(rowPoint(view, text), 1, 2);
}

void DesktopPerson::rightClickSpace(const QString &view)
{
    press(spacePoint(view), 3);
}

void DesktopPerson::clickArrow(const QString &tree, const QString &text)
{
    press(steady(text, [&] { return placeOfArrow(tree, text); }), 1);
}

void DesktopPerson::chooseInBox(const QString &comboBox, const QString &text)
{
    click(comboBox);
    press(steady(text,
                 [&] {
                     auto *view = shown<QComboBox>(comboBox).view();
                     if (!view->isVisible())
                         throw StepFailed{comboBox + QStringLiteral(" is not open")};
                     const QModelIndex index = rowOf(*view, text);
                     if (!index.isValid())
                         throw StepFailed{comboBox + QStringLiteral(" does not offer ") + text};
                     return view->viewport()->mapToGlobal(view->visualRect(index).center());
                 }),
          1);
    waitFor(comboBox + QStringLiteral(" shows ") + text,
            [&] { return shown<QComboBox>(comboBox).currentText() == text; });
}

void DesktopPerson::pickPopup(const QStringList &captions)
{
    for (const QString &caption : captions)
        press(steady(caption, [&] { return placeOfEntry(caption); }), 1);
}

void DesktopPerson::pickMenuBar(const QString &menu, const QString &entry)
{
    press(steady(menu, [&] { return placeOfMenu(menu); }), 1);
    pickPopup({entry});
}

void DesktopPerson::answer(const QString &part, const QString &button)
{
    press(steady(part, [&] { return placeOfAnswer(part, button); }), 1);
    waitFor(QStringLiteral("the box to go: ") + part, [&] { return !boxText().contains(part); });
}

void DesktopPerson::answerByKey(const QString &part, const QString &name)
{
    waitFor(QStringLiteral("a box: ") + part, [&] {
        const QWidget *front = QApplication::activeWindow();
        return boxText().contains(part) && front != nullptr &&
               front->objectName() == QLatin1String("messageBox");
    });
    key(name);
    waitFor(QStringLiteral("the box to go: ") + part, [&] { return !boxText().contains(part); });
}

void DesktopPerson::type(const QString &text)
{
    xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("8"),
             QStringLiteral("--"), text});
}

void DesktopPerson::key(const QString &name, int times)
{
    xdotool({QStringLiteral("key"), QStringLiteral("--delay"), QStringLiteral("25"),
             QStringLiteral("--repeat"), number(times), name});
}

void DesktopPerson::tabTo(const QString &widget)
{
    const auto reached = [&] {
        const QWidget &wanted = shownWidget(widget);
        const QWidget *focus = QApplication::focusWidget();
        return focus != nullptr && (focus == &wanted || wanted.isAncestorOf(focus));
    };
    for (int presses = 0; presses < mostPresses; ++presses) {
        if (look(reached))
            return;
        key(QStringLiteral("Tab"));
        QThread::msleep(settleTime);
    }
    throw StepFailed{QStringLiteral("Tab never reaches ") + widget};
}

void DesktopPerson::pickByKeys(const QStringList &captions)
{
    for (const QString &caption : captions) {
        const QPoint shows = steady(caption, [&] { return placeOfEntry(caption); });
        Q_UNUSED(shows)
        const auto active = [&] {
            const auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            const QAction *entry = menu != nullptr ? menu->activeAction() : nullptr;
            return entry != nullptr && plainCaption(entry->text()) == caption;
        };
        for (int presses = 0; !look(active); ++presses) {
            if (presses == mostPresses)
                throw StepFailed{QStringLiteral("the arrow keys never reach ") + caption};
            key(QStringLiteral("Down"));
            QThread::msleep(settleTime);
        }
        key(QStringLiteral("Return"));
    }
}

void DesktopPerson::resizeWindow(int width, int height)
{
    xdotool({QStringLiteral("getactivewindow"), QStringLiteral("windowsize"),
             QStringLiteral("--sync"), number(width), number(height)});
}

/// Small steps, for programs look where the pointer is on its way.
void DesktopPerson::dragTo(const QPoint &from, const QPoint &to) const
{
    QStringList way = moveTo(from) + QStringList{QStringLiteral("mousedown"), QStringLiteral("1"),
                                                 QStringLiteral("sleep"), QStringLiteral("0.05")};
    const int side = to.x() >= from.x() ? dragStart : -dragStart;
    for (const int part : {1, 2})
        way += moveTo(from + QPoint(side * part / 2, 2));
    way += moveTo(from + QPoint(side + 2, 4));
    way << QStringLiteral("sleep") << QStringLiteral("0.2");
    for (int step = 1; step <= dragSteps; ++step)
        way += moveTo(from + (to - from) * step / dragSteps);
    way += moveTo(to + QPoint(1, 1));
    way += moveTo(to);
    way << QStringLiteral("sleep") << QStringLiteral("0.25");
    xdotool(way);
}

void DesktopPerson::drag(const QPoint &from, const QPoint &to, const std::function<void()> &above)
{
    dragTo(from, to);
    if (above)
        above();
    xdotool({QStringLiteral("mouseup"), QStringLiteral("1")});
}

void DesktopPerson::drag(const QPoint &from, const QPoint &to, const QString &heldKey)
{
    dragTo(from, to);
    if (heldKey.isEmpty()) {
        xdotool({QStringLiteral("mouseup"), QStringLiteral("1")});
        return;
    }
    // The key is noticed with the next move of the pointer.
    xdotool(QStringList{QStringLiteral("keydown"), heldKey} + moveTo(to + QPoint(2, 0)) +
            moveTo(to) +
            QStringList{QStringLiteral("sleep"), QStringLiteral("0.2"), QStringLiteral("mouseup"),
                        QStringLiteral("1"), QStringLiteral("sleep"), QStringLiteral("0.3"),
                        QStringLiteral("keyup"), heldKey});
}

QPoint DesktopPerson::rowPoint(const QString &view, const QString &text)
{
    return steady(text + QStringLiteral(" in ") + view, [&] { return placeOfRow(view, text); });
}

QPoint DesktopPerson::spacePoint(const QString &view)
{
    return steady(QStringLiteral("empty space in ") + view, [&] { return placeOfSpace(view); });
}

QPoint DesktopPerson::widgetPoint(const QString &widget)
{
    return steady(widget, [&] { return placeOfWidget(widget); });
}

void DesktopPerson::waitForWindow(const QString &objectName)
{
    waitFor(QStringLiteral("the window ") + objectName,
            [&] { return shownWidget(objectName).window()->isVisible(); });
}

void DesktopPerson::waitForRow(const QString &view, const QString &text)
{
    waitFor(text + QStringLiteral(" in ") + view,
            [&] { return rowOf(shown<QAbstractItemView>(view), text).isValid(); });
}

void DesktopPerson::waitForNoRow(const QString &view, const QString &text)
{
    waitFor(text + QStringLiteral(" to leave ") + view,
            [&] { return !rowOf(shown<QAbstractItemView>(view), text).isValid(); });
}

void DesktopPerson::waitForFocus(const QString &widget)
{
    waitFor(QStringLiteral("the focus in ") + widget, [&] {
        const QWidget &wanted = shownWidget(widget);
        const QWidget *focus = QApplication::focusWidget();
        return focus != nullptr && (focus == &wanted || wanted.isAncestorOf(focus));
    });
}

} // namespace venlo::test
