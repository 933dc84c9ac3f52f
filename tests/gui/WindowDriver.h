#pragma once

#include <cstdio>
#include <functional>
#include <memory>

#include <QString>
#include <QStringList>

class QTableView;
class QWidget;

namespace venlo::test
{

/// Two streams that a test reads back instead of stdout and stderr.
class CaughtStreams
{
public:
    CaughtStreams();
    [[nodiscard]] std::FILE *results() const { return m_results.get(); }
    [[nodiscard]] std::FILE *messages() const { return m_messages.get(); }
    [[nodiscard]] QString resultText() const { return read(m_results.get()); }
    [[nodiscard]] QString messageText() const { return read(m_messages.get()); }

private:
    [[nodiscard]] static QString read(std::FILE *file);
    using File = std::unique_ptr<std::FILE, int (*)(std::FILE *)>;
    File m_results;
    File m_messages;
};

/// Runs the action once a modal window of that object name is the active one. Where it does not
/// become that, the action runs all the same after some seconds; where there is none, the window is
/// left to the test's own time limit.
void whenShown(const QString &objectName, std::function<void(QWidget &)> action);

/// Presses the button of a message box that shows that caption.
void press(QWidget &window, const QString &caption);

/// A left click in the middle of a cell.
void clickCell(QTableView &view, int row, int column);

} // namespace venlo::test
