#pragma once

#include <QPoint>
#include <QProcess>
#include <QStringList>

namespace venlo::test
{

/// The second program (neighbour.cpp) as a test drives it. Made, used and ended in one thread; it
/// ends with it.
class Neighbour
{
public:
    /// Starts it and waits until it is ready; StepFailed when it is not.
    explicit Neighbour(const QStringList &arguments);
    ~Neighbour();
    Q_DISABLE_COPY_MOVE(Neighbour)

    /// What the clipboard shows to another program: the lines it says of it.
    [[nodiscard]] static QStringList paste();

    /// Where its window can be dragged from or dropped onto.
    [[nodiscard]] const QPoint &middle() const { return m_middle; }
    /// Waits for a line that begins so; the lines up to it, itself included.
    [[nodiscard]] QStringList linesUntil(const QString &beginning, int limitMs = 15'000);

private:
    QProcess m_process;
    QPoint m_middle;
};

} // namespace venlo::test
