// measureTransfers
//
// What a person feels of a running operation: how long the longest turn of the event loop takes and
// how often the message window draws itself during a large download, how soon Cancel ends it, what
// status lines cost, and what it takes to expand a remote folder of many folders.
#include "WindowMeasure.h"
#include "db/DatabaseFile.h"
#include "ftp/ErrorLog.h"
#include "ftp/FetchFolder.h"
#include "ftp/RemoteOperations.h"
#include "ftppane/uFtp.h"
#include "mainwin/StatusList.h"
#include "mainwin/WindowFrontEnd.h"
#include "mainwin/popup/pfFtp.h"
#include "mainwin/popup/sfMsg.h"
#include "shared/ConsolePrinter.h"
#include "shared/Flags.h"
#include "shared/OperationGate.h"
#include "support/FtpDaemon.h"
#include "support/ScriptedServer.h"
#include "views/FolderTree.h"
#include "views/PaneView.h"

#include <algorithm>
#include <memory>

#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

using namespace venlo;
using namespace venlo::test;
using namespace venlo::bench;

namespace
{

constexpr int subFolders = 500;
constexpr qint64 fileBytes = 1024LL * 1024 * 1024;
constexpr int frame = 33;        // ms
constexpr int cancelAfter = 300; // ms
constexpr int linesInSecond = 10'000;

/// The engine with the front end of a run with a display, over a throwaway folder.
struct World {
    World() : database(desk, made(data))
    {
        bool ok = false;
        database.OpenDb(ok);
        if (!ok)
            qFatal("no database");
    }
    static QString made(const QTemporaryDir &folder)
    {
        createInitialDatabase(folder.path() + QStringLiteral("/dbFtp.mdb"));
        return folder.path() + QLatin1Char('/');
    }
    void connectTo(const QString &server, const QString &user, const QString &password)
    {
        database.run(
            QStringLiteral("Insert Into msSite (sName, sSvr, sUsr, sPwd, sPxy, bPsv, bSvDb)"
                           " Values ('site', '?', '?', '?', '', -1, 0)"),
            {server, user, password});
        bool ok = true;
        session.OpenInternet(QString(), ok, false);
        session.Connect(QStringLiteral("site"), server, user, password, true, ok);
        if (!ok)
            qFatal("not connected");
    }

    QTemporaryDir data;
    Flags flags;
    ConsolePrinter printer{stderr, stderr};
    WindowFrontEnd desk{printer, flags};
    Database database;
    ErrorLog errorLog{data.path() + QLatin1Char('/')};
    EventLog eventLog{data.path() + QLatin1Char('/')};
    Session session{desk, database, errorLog, eventLog};
    DirectoryCache cache{session, database, desk, flags};
    RemoteOperations operations{session, cache, desk, flags};
};

/// Counts pictures of a window and looks for the longest gap between two turns of the event loop.
class Watcher : public QObject
{
public:
    explicit Watcher(QWidget &window)
    {
        for (QWidget *part : window.findChildren<QWidget *>())
            part->installEventFilter(this);
        QObject::connect(&m_frames, &QTimer::timeout, this, [this] {
            m_longest = std::max(m_longest, m_since.restart());
            ++m_turns;
        });
        m_since.start();
        m_frames.start(frame);
    }
    bool eventFilter(QObject *, QEvent *event) override
    {
        m_pictures += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
    void print(qint64 nanoseconds) const
    {
        const double seconds = static_cast<double>(nanoseconds) / 1e9;
        std::printf("  %.1f turns a second (30 asked for), longest gap %lld ms, %.1f paints\n",
                    m_turns / seconds, static_cast<long long>(m_longest), m_pictures / seconds);
    }

private:
    QTimer m_frames;
    QElapsedTimer m_since;
    qint64 m_longest = 0;
    int m_turns = 0;
    int m_pictures = 0;
};

qint64 download(World &world, const char *what, const std::function<void(sfMsg &)> &meanwhile)
{
    sfMsg window(world.desk);
    window.cOn();
    meanwhile(window);
    const Watcher watcher(window);
    const QTemporaryDir target;
    world.desk.beginOperation();
    const Stopwatch watch;
    bool ok = true;
    world.operations.ftGetFile(QStringLiteral("/"), QStringLiteral("large\r"), target.path(), ok);
    const qint64 worked = watch.worked();
    report(what, watch);
    watcher.print(watch.elapsed());
    return worked;
}

void measureDownload()
{
    QString why;
    FtpDaemon daemon(DaemonKind::Vsftpd);
    if (!FtpDaemon::available(DaemonKind::Vsftpd, &why) || !daemon.start(&why)) {
        std::printf("no vsftpd: %s\n", qPrintable(why));
        return;
    }
    (void)daemon.put("/large", "");
    if (!QFile::resize(daemon.root() + QStringLiteral("/large"), fileBytes))
        qFatal("no large file");
    World world;
    world.connectTo(daemon.server(), daemon.user(), daemon.password());
    std::printf("download of %lld MiB (sparse, loopback)\n",
                static_cast<long long>(fileBytes / 1024 / 1024));
    const auto nothing = [](sfMsg &) {};
    (void)download(world, "once, to warm up", nothing);
    const qint64 plain = download(world, "without status lines", nothing);
    const qint64 lines = download(world, "with 10,000 status lines a second", [&](sfMsg &window) {
        auto *timer = new QTimer(&window);
        auto since = std::make_shared<QElapsedTimer>();
        since->start();
        auto said = std::make_shared<qint64>(0);
        QObject::connect(timer, &QTimer::timeout, &window, [&world, since, said] {
            for (; *said < since->elapsed() * linesInSecond / 1000; ++*said)
                world.desk.addStatus(QStringLiteral("/pub/a folder/file %1 ･･･").arg(*said));
        });
        timer->start(1);
    });
    std::printf("  processor time of the transfer with them: %.2f of that without\n",
                static_cast<double>(lines) / static_cast<double>(plain));
    Stopwatch sinceClick;
    (void)download(world, "cancelled", [&](sfMsg &window) {
        QTimer::singleShot(cancelAfter, &window, [&] {
            sinceClick = {};
            part<QPushButton>(window, "cmCancel").click();
        });
    });
    report("from the click to the end of the transfer", sinceClick);
}

void measureStatus(const char *what, World &world)
{
    const Stopwatch watch;
    for (int line = 0; line < linesInSecond; ++line)
        world.desk.addStatus(QStringLiteral("/pub/a folder/file %1 ･･･").arg(line));
    report(what, watch);
}

void measureStatusLists()
{
    std::puts("10,000 status lines as fast as they go");
    World world;
    measureStatus("no window shows", world);
    QWidget main;
    main.resize(600, 120);
    StatusList list(&main);
    list.resize(600, 120);
    world.desk.addStatusTarget(list, StatusRank::MainWindow);
    main.show();
    measureStatus("main window's list", world);
    sfMsg window(world.desk);
    window.cOn();
    measureStatus("message window's list", world);
    world.desk.removeStatusTarget(list);
}

void measureExpand(bool stat)
{
    std::printf("remote folder of %d sub-folders, never listed, server %s STAT\n", subFolders,
                stat ? "with" : "without");
    ScriptedServer server;
    server.options().stat = stat ? StatPath::Listed : StatPath::Unknown;
    for (int i = 0; i < subFolders; ++i)
        server.put("/many/sub" + QByteArray::number(i) + "/file.txt", "x",
                   QDateTime::currentDateTimeUtc());
    if (!server.start())
        qFatal("no server");
    World world;
    world.connectTo(server.server(), server.user(), server.password());
    world.session.CloseInternet();
    OperationGate gate(world.desk);
    pfFtp menus(world.database);
    sfMsg window(world.desk);
    std::vector<std::unique_ptr<FetchFolder>> handedOut;
    uFtp pane({world.desk, world.flags, gate, world.database, world.session, world.cache,
               world.operations, menus, window, handedOut});
    pane.resize(600, 600);
    pane.show();
    pane.SetSync(QStringLiteral("site"), QStringLiteral("/"));
    auto &tree = part<PaneView>(pane, "TrView");
    auto &nodes = *qobject_cast<FolderTree *>(tree.model());
    const QPersistentModelIndex many =
        nodes.child(nodes.root(), QStringLiteral("many"), Qt::CaseSensitive);
    if (!many.isValid() || !nodes.isUnread(many))
        qFatal("the folder is not there");
    server.log().clear();
    const Watcher watcher(pane);
    const Stopwatch watch;
    tree.expand(many);
    while (many.isValid() && nodes.isUnread(many))
        QCoreApplication::processEvents();
    report("expanded", watch);
    watcher.print(watch.elapsed());
    std::printf("  %d folders, %lld round trips, %lld control commands:", nodes.rowCount(many),
                static_cast<long long>(server.log().batches().size()),
                static_cast<long long>(server.commands().size()));
    for (const char *verb : {"CWD", "EPSV", "PASV", "MLSD", "LIST", "STAT", "TYPE"})
        std::printf(" %s %d", verb, server.count(verb));
    std::puts("");
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    measureStatusLists();
    measureExpand(false);
    measureExpand(true);
    measureDownload();
    return 0;
}
