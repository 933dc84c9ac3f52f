// Replies and data that trickle, lie or lead elsewhere: bounded in memory and time, and the session
// is none the worse for it.
#include "hostile/HostileWorld.h"
#include "hostile/PeakMemory.h"

#include <QBuffer>
#include <QTcpServer>
#include <QTest>
#include <QTimer>

#include <chrono>
#include <thread>

using namespace venlo;
using namespace std::chrono_literals;
using venlo::test::HostileWorld;
using venlo::test::PeakMemory;

namespace
{
constexpr qint64 mebi = 1024LL * 1024;
/// What a flood may cost: some buffers of the size of the longest reply.
constexpr qint64 mostMemory = 24 * mebi;
} // namespace

class tst_HostileReplies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { HostileWorld::useMemory(); }
    void aByteNowAndThen_data();
    void aByteNowAndThen();
    void aListingOfAByteNowAndThen();
    void aFileWithoutEnd();
    void completedBeforeTheData_data();
    void completedBeforeTheData();
    void dataPortsOfOthers_data();
    void dataPortsOfOthers();
    void directoriesThatPwdShows_data();
    void directoriesThatPwdShows();
    void featuresWithoutEnd();
    void valuesNobodyExpects_data();
    void valuesNobodyExpects();
};

void tst_HostileReplies::aByteNowAndThen_data()
{
    QTest::addColumn<QByteArray>("verb");
    for (const char *verb : {"CONNECT", "PASS", "CWD"})
        QTest::newRow(verb) << QByteArray(verb);
}

/// A reply has a time as a whole, however its bytes come.
void tst_HostileReplies::aByteNowAndThen()
{
    QFETCH(QByteArray, verb);
    HostileWorld world(HostileWorld::hastyLimits());
    std::jthread speaker;
    world.server.on(verb).once().rawReply("2").call([&] {
        speaker = std::jthread([&](const std::stop_token &stop) {
            while (!stop.stop_requested()) {
                std::this_thread::sleep_for(100ms);
                world.server.say("2");
            }
        });
    });
    QVERIFY(world.start());
    QElapsedTimer timer;
    timer.start();
    if (verb == "CWD") {
        QVERIFY(world.connect());
        timer.start();
        (void)world.engine.session.client().changeDirectory("/pub");
    } else {
        QVERIFY(!world.connect());
    }
    QVERIFY2(timer.elapsed() < 3000, qPrintable(QString::number(timer.elapsed())));
    speaker.request_stop();
    speaker.join();
    QCOMPARE(world.broken(6000), QString());
}

void tst_HostileReplies::aListingOfAByteNowAndThen()
{
    HostileWorld world(HostileWorld::hastyLimits());
    QByteArray listing;
    for (int i = 0; i < 100; ++i)
        listing += "type=file;size=1; " + QByteArray::number(i) + "\r\n";
    world.server.setRawListing("/pub", listing);
    world.server.on("MLSD").slow(1, 20);
    QVERIFY(world.start());
    QVERIFY(world.connect());
    QElapsedTimer timer;
    timer.start();
    QString names;
    bool ok = false;
    world.engine.cache.caLoadDir(QStringLiteral("/pub"), DirectoryCache::IfAbsent, names, ok);
    QVERIFY2(timer.elapsed() < 8000, qPrintable(QString::number(timer.elapsed())));
    const auto marks = world.engine.cache.incompleteUnder(QStringLiteral("/pub"));
    QCOMPARE(marks.size(), size_t(1));
    QVERIFY2(marks.at(0).why.contains(QStringLiteral("takes too long")),
             qPrintable(marks.at(0).why));
    QCOMPARE(world.broken(10'000), QString());
}

/// It ends with Cancel, or with the disk; nothing of it stays.
void tst_HostileReplies::aFileWithoutEnd()
{
    HostileWorld world;
    world.server.put("/pub/a.txt", "a");
    world.server.on("RETR").endlessData(QByteArray(256 * 1024, 'x')).slow(256 * 1024, 2);
    QVERIFY(world.start());
    QVERIFY(world.connect());
    const PeakMemory memory;
    QTimer::singleShot(600ms, this, [&] { world.engine.person.cancelNow(); });
    const auto before = world.chosenTree();
    bool ok = true;
    world.engine.operations.ftGetFile(QStringLiteral("/pub"), QStringLiteral("a.txt"),
                                      world.chosen(), ok);
    QVERIFY(!ok);
    QVERIFY2(memory.grown() < mostMemory, qPrintable(QString::number(memory.grown())));
    QCOMPARE(test::difference(before, world.chosenTree()), QStringList());
    QCOMPARE(world.broken(5000), QString());
}

void tst_HostileReplies::completedBeforeTheData_data()
{
    QTest::addColumn<QByteArray>("opening");
    QTest::newRow("226 instead of 150") << QByteArray("226 done");
    QTest::newRow("226 behind 150") << QByteArray("150 here\r\n226 done");
    QTest::newRow("two of them") << QByteArray("226 done\r\n226 done");
}

/// The bytes count, not that somebody said early they were all there.
void tst_HostileReplies::completedBeforeTheData()
{
    QFETCH(QByteArray, opening);
    HostileWorld world(HostileWorld::hastyLimits());
    const QByteArray content(300'000, 'c');
    world.server.put("/pub/a.txt", content);
    world.server.on("RETR").opening(opening).slow(32 * 1024, 20);
    QVERIFY(world.start());
    QVERIFY(world.connect());
    bool ok = true;
    world.engine.operations.ftGetFile(QStringLiteral("/pub"), QStringLiteral("a.txt"),
                                      world.chosen(), ok);
    const auto tree = world.chosenTree();
    QVERIFY(tree.count("a.txt") == 0 || tree.at("a.txt").bytes == content);
    if (tree.count("a.txt") == 0)
        QVERIFY(world.said().contains(QStringLiteral("a.txt")));
    QCOMPARE(world.broken(20'000), QString());
}

void tst_HostileReplies::dataPortsOfOthers_data()
{
    QTest::addColumn<QByteArray>("verb");
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("EPSV: SSH") << QByteArray("EPSV") << QByteArray("229 here (|||22|)\r\n");
    QTest::newRow("EPSV: SMTP") << QByteArray("EPSV") << QByteArray("229 here (|||25|)\r\n");
    QTest::newRow("EPSV: 1023") << QByteArray("EPSV") << QByteArray("229 here (|||1023|)\r\n");
    QTest::newRow("PASV: SSH") << QByteArray("PASV") << QByteArray("227 here (127,0,0,1,0,22)\r\n");
    QTest::newRow("PASV: HTTP of another host")
        << QByteArray("PASV") << QByteArray("227 here (192,0,2,1,0,80)\r\n");
    QTest::newRow("PASV: 1023") << QByteArray("PASV")
                                << QByteArray("227 here (127,0,0,1,3,255)\r\n");
}

/// A server must not make this program talk to the services of a machine.
void tst_HostileReplies::dataPortsOfOthers()
{
    QFETCH(QByteArray, verb);
    QFETCH(QByteArray, answer);
    HostileWorld world(HostileWorld::hastyLimits());
    world.server.options().epsv = verb == "EPSV";
    world.server.on(verb).rawReply(answer);
    QVERIFY(world.start());
    QVERIFY(world.connect());
    QVERIFY(world.engine.session.client().changeDirectory("/pub"));
    const auto listing = world.engine.session.client().list();
    QVERIFY(!listing);
    QVERIFY2(listing.error().words.startsWith(QStringLiteral("refused data port")),
             qPrintable(listing.error().words));
    QByteArray secret("our file");
    QBuffer file(&secret);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(!world.engine.session.client().store("a.txt", file, {}));
    QCOMPARE(world.server.count("MLSD") + world.server.count("STOR"), 0);
    QCOMPARE(world.broken(5000), QString());
}

void tst_HostileReplies::directoriesThatPwdShows_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("home");
    const auto row = [](const char *what, const QByteArray &answer, const QString &home) {
        QTest::newRow(what) << answer << home;
    };
    row("a quote too few", "257 \"/pub\r\n", {});
    row("no quote", "257 /pub\r\n", {});
    row("empty", "257 \"\"\r\n", {});
    row("upwards", "257 \"../../etc\"\r\n", QStringLiteral("../../etc"));
    row("relative", "257 \"pub\"\r\n", QStringLiteral("pub"));
    row("a drive", "257 \"C:\\Windows\\\"\r\n", QStringLiteral("C:\\Windows"));
    row("SQL", "257 \"/'; Drop Table msSite; --\"\r\n",
        QStringLiteral("/'; Drop Table msSite; --"));
    row("NUL", QByteArray("257 \"/pu\0b\"\r\n", 13), {});
    row("CR inside", "257 \"/pu\rb\"\r\n", {});
    row("wildcards", "257 \"/*?\"\r\n", QStringLiteral("/*?"));
    row("a doubled quote", "257 \"/p\"\"ub\"\r\n", QStringLiteral("/p\"ub"));
    row("1,023 bytes", "257 \"/" + QByteArray(1022, 'd') + "\"\r\n",
        QLatin1Char('/') + QString(1022, QLatin1Char('d')));
    row("1,024 bytes", "257 \"/" + QByteArray(1023, 'd') + "\"\r\n", {});
    row("15 KiB", "257 \"/" + QByteArray(15 * 1024, 'd') + "\"\r\n", {});
    row("64 KiB", "257 \"/" + QByteArray(64 * 1024, 'd') + "\"\r\n", {});
}

void tst_HostileReplies::directoriesThatPwdShows()
{
    QFETCH(QByteArray, answer);
    QFETCH(QString, home);
    HostileWorld world(HostileWorld::hastyLimits());
    world.server.put("/pub/a.txt", "a");
    world.server.on("PWD").rawReply(answer);
    QVERIFY(world.start());
    QVERIFY(world.connect());
    QCOMPARE(world.engine.session.homeDirectory(), home);
    // As the pane does with it.
    QString folders;
    QString files;
    try {
        world.engine.cache.caDirList(home, folders, files);
    } catch (const DbError &error) {
        QVERIFY(home.size() > 255); // no row has space for it
        QVERIFY(!error.words().isEmpty());
    }
    world.engine.cache.caRefresh(home);
    bool ok = true;
    world.engine.operations.ftGetFile(home, QStringLiteral("x.txt"), world.chosen(), ok);
    QCOMPARE(world.broken(8000), QString());
}

void tst_HostileReplies::featuresWithoutEnd()
{
    HostileWorld world(HostileWorld::hastyLimits());
    QByteArray text = "Features:";
    for (int i = 0; i < 14'000; ++i)
        text += "\n F" + QByteArray::number(i);
    world.server.on("FEAT").reply(211, text + "\nEnd");
    QVERIFY(world.start());
    const PeakMemory memory;
    QVERIFY(world.connect());
    QVERIFY2(memory.grown() < mostMemory, qPrintable(QString::number(memory.grown())));
    QCOMPARE(world.broken(4000), QString());
}

void tst_HostileReplies::valuesNobodyExpects_data()
{
    QTest::addColumn<QByteArray>("verb");
    QTest::addColumn<QByteArray>("answer");
    for (const char *size : {"-1", "9223372036854775808", "1000000000000000000000000000000", "0x10",
                             "", "1e30", "12 34", "\xef\xbc\x91"}) {
        QTest::addRow("SIZE %s", size) << QByteArray("SIZE") << QByteArray("213 ") + size + "\r\n";
    }
    for (const char *time :
         {"00000101000000", "99999101000000", "99991231235959", "20241301000000", "20240230000000",
          "-2024010100000", "20240101000000.999999999999999999999", "19100101000000", ""}) {
        QTest::addRow("MDTM %s", time) << QByteArray("MDTM") << QByteArray("213 ") + time + "\r\n";
    }
    QTest::newRow("EPSV without a port") << QByteArray("EPSV") << QByteArray("229 (||||)\r\n");
    QTest::newRow("EPSV with a large one")
        << QByteArray("EPSV") << QByteArray("229 (|||99999|)\r\n");
}

void tst_HostileReplies::valuesNobodyExpects()
{
    QFETCH(QByteArray, verb);
    QFETCH(QByteArray, answer);
    HostileWorld world(HostileWorld::hastyLimits());
    world.server.options().mlsd = false;
    world.server.options().dialect = test::ListDialect::UnixDay;
    world.server.put("/pub/a.txt", "content");
    world.server.on(verb).rawReply(answer);
    QVERIFY(world.start());
    QVERIFY(world.connect());
    const bool done = world.engine.batch().RunSyncPattern(QStringLiteral("pattern"), false) == 0;
    const auto tree = world.chosenTree();
    QVERIFY(tree.count("a.txt") == 0 || tree.at("a.txt").bytes == "content");
    QVERIFY(done == (tree.count("a.txt") == 1));
    QCOMPARE(world.broken(20'000), QString());
}

QTEST_GUILESS_MAIN(tst_HostileReplies)
#include "tst_HostileReplies.moc"
