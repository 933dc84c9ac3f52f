// measureReview
//
// Opens the review of a large synchronisation and prints how long a person waits: until the first
// picture for an opening, until the next picture for everything else. Offscreen, so that no
// graphics card helps.
#include "WindowMeasure.h"
#include "gui/ReviewFixture.h"
#include "gui/WindowDriver.h"
#include "mainwin/WindowFrontEnd.h"
#include "shared/ConsolePrinter.h"
#include "shared/Flags.h"
#include "sync/Execution.h"
#include "sync/windows/ReviewSort.h"
#include "sync/windows/ReviewView.h"
#include "sync/windows/sfSync.h"

#include <QAbstractButton>
#include <QTest>

using namespace venlo;
using namespace venlo::test;
using namespace venlo::bench;

namespace
{

constexpr int reviewRows = 100'000;

void press(const QWidget &window, const char *button)
{
    QTest::mouseClick(&part<QAbstractButton>(window, button), Qt::LeftButton);
}

void measureReview(ConsolePrinter &printer, const Flags &flags)
{
    std::printf("review of %d rows\n", reviewRows);
    ReviewTables tables;
    tables.manyFiles(reviewRows);
    Stopwatch watch;
    const auto review = tables.review();
    report("rows read from the work tables", watch);
    Flags ownFlags = flags;
    WindowFrontEnd desk(printer, ownFlags);
    ScriptedWorker worker;
    Execution execution(worker, desk, ownFlags);
    watch = {};
    sfSync window(*review, execution, desk);
    window.show();
    QCoreApplication::processEvents();
    window.repaint();
    report("window opened", watch);
    auto &view = part<ReviewView>(window, "vCmp");
    const int file = rowOf(*review, QStringLiteral("/d0000/f000003.html"));
    measure("one row toggled", window, [&] { clickCell(view, file, TickColumn); });
    measure("box: overwrite all", window, [&] { press(window, "chCmp0"); });
    measure("box: files of covered folders", window, [&] { press(window, "chDsp1"); });
    measure("all additions unticked", window, [&] { press(window, "cmAddNone"); });
    measure("all additions ticked", window, [&] { press(window, "cmAddAll"); });
    sortByEveryColumn(view, window);
    measure("all selected toggled", window, [&] { QTest::keyClick(&view, Qt::Key_Space); });
    measure("scrolled to the end", window, [&] { view.scrollToBottom(); });
    watch = {};
    (void)execution.run(*review, true);
    report("executed by a worker that does nothing", watch);
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    ConsolePrinter printer(stdout, stderr);
    const Flags flags;
    measureReview(printer, flags);
    return 0;
}
