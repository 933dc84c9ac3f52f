#include "gui/WindowDriver.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QTableView>
#include <QTest>
#include <QTimer>

namespace venlo::test
{

namespace
{
constexpr int lookEvery = 10;       // ms
constexpr int giveUpAfter = 10'000; // ms
} // namespace

void whenShown(const QString &objectName, std::function<void(QWidget &)> action)
{
    auto *timer = new QTimer(qApp);
    QElapsedTimer since;
    since.start();
    QObject::connect(timer, &QTimer::timeout, timer, [=] {
        QWidget *window = QApplication::activeModalWidget();
        const bool there =
            window != nullptr && window->isVisible() && window->objectName() == objectName;
        // Shortcuts are those of the active window, which it becomes a little later.
        const bool ready = there && window->isActiveWindow();
        if (!ready && since.elapsed() < giveUpAfter)
            return;
        timer->stop();
        timer->deleteLater();
        if (there)
            action(*window);
    });
    timer->start(lookEvery);
}

void press(QWidget &window, const QString &caption)
{
    for (QAbstractButton *button : window.findChildren<QAbstractButton *>()) {
        if (button->text() == caption) {
            QTest::mouseClick(button, Qt::LeftButton);
            return;
        }
    }
    QFAIL(qPrintable(QStringLiteral("no button ") + caption));
}

void clickCell(QTableView &view, int row, int column)
{
    const QModelIndex index = view.model()->index(row, column);
    view.scrollTo(index);
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, view.visualRect(index).center());
}

} // namespace venlo::test
