#pragma once

#include <functional>

#include <QString>

class QTableView;
class QWidget;

namespace venlo::test
{

/// Runs the action once a modal window of that object name is the active one. Where it does not
/// become that, the action runs all the same after some seconds; where there is none, the window is
/// left to the test's own time limit.
void whenShown(const QString &objectName, std::function<void(QWidget &)> action);

/// Presses the button of a message box that shows that caption.
void press(QWidget &window, const QString &caption);

/// A left click in the middle of a cell.
void clickCell(QTableView &view, int row, int column);

} // namespace venlo::test
