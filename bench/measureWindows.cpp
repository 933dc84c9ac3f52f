// measureWindows
//
// Fills the local list and the list of remote files and prints how long a person waits: until the
// first picture for an opening, until the next picture for everything else. Offscreen, so that no
// graphics card helps.
#include "WindowMeasure.h"
#include "db/Store.h"
#include "localpane/LocalListFill.h"
#include "mainwin/popup/sfFlst.h"
#include "support/ScriptedServer.h"
#include "sync/SyncWorld.h"
#include "views/PaneView.h"

#include <QFile>
#include <QLineEdit>
#include <QTest>
#include <QTimer>

using namespace venlo;
using namespace venlo::test;
using namespace venlo::bench;

namespace
{

constexpr int localFiles = 30'000;
constexpr int listedFiles = 200'000;

void measureLocalList()
{
    std::printf("local folder of %d files\n", localFiles);
    const QTemporaryDir folder;
    for (int i = 0; i < localFiles; ++i) {
        QFile file(folder.filePath(QStringLiteral("file %1.txt").arg((i * 7919) % localFiles)));
        if (!file.open(QIODevice::WriteOnly))
            qFatal("the folder cannot be filled");
    }
    ScriptedPerson person;
    person.onYield([] { QCoreApplication::processEvents(); });
    RowList rows(LocalListFill::layout());
    PaneView view(PaneView::Kind::List);
    view.setModel(&rows);
    view.resize(600, 800);
    view.show();
    LocalListFill fill(rows, view, person);
    rows.sort(LocalListFill::SortKey, Qt::AscendingOrder);
    measure("filled", view, [&] { fill.FillList(folder.path()); });
    if (rows.count() != localFiles)
        std::puts("rows are missing");
    measure("brought up to date", view, [&] { fill.UpdateList(); });
    view.selectAll();
    measure("read again with all selected", view, [&] { fill.refill(); });
}

void fillCache(SyncWorld &world)
{
    Transaction transaction(world.database);
    const QString insert = QStringLiteral("Insert Into ") + world.session.currentSite() +
                           QStringLiteral(" (sDir, bFd, sName, dDate, nSize) Values (?,0,?,?,?)");
    for (int i = 0; i < listedFiles; ++i)
        world.database.store().exec(insert,
                                    {QStringLiteral("/pub/d%1").arg(i / 100),
                                     QStringLiteral("File %1.html").arg((i * 7919) % listedFiles),
                                     45000.0 + i % 1000, i});
    transaction.commit();
}

void measureFileList()
{
    std::printf("list of %d remote files\n", listedFiles);
    ScriptedServer server;
    SyncWorld world;
    if (!server.start())
        qFatal("no server");
    world.registerSite(server.server(), server.user(), server.password());
    if (!world.connectToSite())
        qFatal("not connected");
    fillCache(world);
    sfFlst window(world.database, world.session, world.person);
    Stopwatch watch;
    QTimer::singleShot(0, &window, [&] {
        window.repaint();
        report("window opened", watch);
        auto &view = part<QTableView>(window, "vSpr");
        if (view.model()->rowCount() != listedFiles)
            std::puts("rows are missing");
        sortByEveryColumn(view, window);
        auto &filter = part<QLineEdit>(window, "txFlt");
        filter.setText(QStringLiteral("*7.html"));
        measure("filtered", window, [&] { QTest::keyClick(&filter, Qt::Key_Return); });
        window.close();
    });
    watch = {};
    window.Act(QStringLiteral("/"));
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    measureLocalList();
    measureFileList();
    return 0;
}
