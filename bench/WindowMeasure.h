#pragma once

#include <cstdio>
#include <ctime>
#include <functional>

#include <QApplication>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QTableView>

namespace venlo::bench
{

/// Time on the clock and of the processor, in ns: on a machine in use the second tells more.
class Stopwatch
{
public:
    Stopwatch() { m_clock.start(); }
    [[nodiscard]] qint64 elapsed() const { return m_clock.nsecsElapsed(); }
    [[nodiscard]] qint64 worked() const { return processor() - m_before; }

private:
    [[nodiscard]] static qint64 processor()
    {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
    }
    QElapsedTimer m_clock;
    qint64 m_before = processor();
};

inline void report(const char *what, const Stopwatch &watch)
{
    const auto milliseconds = [](qint64 time) { return static_cast<double>(time) / 1e6; };
    std::printf("  %-44s %9.1f ms, processor %9.1f ms\n", what, milliseconds(watch.elapsed()),
                milliseconds(watch.worked()));
    std::fflush(stdout);
}

/// Times the work and the picture that follows it.
inline void measure(const char *what, QWidget &window, const std::function<void()> &work)
{
    const Stopwatch watch;
    work();
    QCoreApplication::processEvents();
    window.repaint();
    report(what, watch);
}

template <typename Widget>
Widget &part(const QWidget &window, const char *name)
{
    auto *found = window.findChild<Widget *>(QString::fromLatin1(name));
    if (found == nullptr)
        qFatal("no %s", name);
    return *found;
}

inline void sortByEveryColumn(QTableView &view, QWidget &window)
{
    const QAbstractItemModel &model = *view.model();
    for (int column = 0; column < model.columnCount(); ++column) {
        const QString heading = model.headerData(column, Qt::Horizontal).toString();
        const QByteArray what = "sorted by " + heading.toUtf8();
        measure(what.constData(), window,
                [&] { view.horizontalHeader()->setSortIndicator(column, Qt::DescendingOrder); });
    }
    measure("all selected", window, [&] { view.selectAll(); });
    measure("sorted with all selected", window,
            [&] { view.horizontalHeader()->setSortIndicator(1, Qt::AscendingOrder); });
}

} // namespace venlo::bench
