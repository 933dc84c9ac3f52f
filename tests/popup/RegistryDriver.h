#pragma once

#include <algorithm>

#include <QInputMethodEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include "popup/RegistryFixture.h"

namespace venlo::test
{

// What a person does in the registry dialogs.

[[nodiscard]] inline QLineEdit &box(QWidget &window, int index)
{
    return part<QLineEdit>(window, qPrintable(QStringLiteral("txSite%1").arg(index)));
}

/// Replaces a box's text as a keyboard does, or an input method where no key has the letters.
inline void type(QWidget &window, int index, const QString &text)
{
    QLineEdit &line = box(window, index);
    line.setFocus();
    line.selectAll();
    QTest::keyClick(&line, Qt::Key_Delete);
    const bool keys = std::all_of(text.begin(), text.end(), [](QChar c) { return c < u'\x7f'; });
    if (keys) {
        QTest::keyClicks(&line, text);
        return;
    }
    QInputMethodEvent event;
    event.setCommitString(text);
    QApplication::sendEvent(&line, &event);
}

[[nodiscard]] inline QPushButton &button(QWidget &window, int index)
{
    return part<QPushButton>(window, qPrintable(QStringLiteral("cmSite%1").arg(index)));
}

inline void press(QWidget &window, int index)
{
    QTest::mouseClick(&button(window, index), Qt::LeftButton);
}

[[nodiscard]] inline QListWidget &list(QWidget &window)
{
    return part<QListWidget>(window, "lsSite");
}

inline void pick(QWidget &window, int row, Qt::KeyboardModifiers keys = {})
{
    QListWidget &names = list(window);
    QTest::mouseClick(names.viewport(), Qt::LeftButton, keys,
                      names.visualItemRect(names.item(row)).center());
}

/// Takes the selection of that entry back.
inline void unpick(QWidget &window, int row)
{
    pick(window, row, Qt::ControlModifier);
    QVERIFY(list(window).selectedItems().isEmpty());
}

/// Their numbers, joined with commas.
[[nodiscard]] inline QString enabledButtons(QWidget &window)
{
    QStringList numbers;
    for (int i = 0; i < 5; ++i) {
        if (button(window, i).isEnabled())
            numbers.append(QString::number(i));
    }
    return numbers.join(QLatin1Char(','));
}

[[nodiscard]] inline QString listed(QWidget &window)
{
    QStringList names;
    for (int i = 0; i < list(window).count(); ++i)
        names.append(list(window).item(i)->text());
    return names.join(QLatin1Char(','));
}

} // namespace venlo::test
