// A refresh by STAT leaves the rows that one without it leaves, whatever the server makes of it.
#include "ftp/StatFixture.h"
#include "support/DaemonTests.h"

#include <QTest>

namespace venlo::test
{

class tst_StatListing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sameRows_data();
    void sameRows();
    void namesInCp932();
    void commands();
    void messageLines();
    void dayOnlyIsListedAgain();
    void uselessStatIsGivenUp();
    void longListingsAreCut();
    void clockThatChanges_data();
    void clockThatChanges();
    void manyEntries();
    void learnedAnewAtEachConnect();
    void clockIsLearnedAtEachConnect();
    void daemons_data() { addDaemons(); }
    void daemons();
};

void tst_StatListing::sameRows_data()
{
    QTest::addColumn<int>("stat");
    QTest::addColumn<bool>("mlsd");
    QTest::addColumn<bool>("listsDots");
    QTest::addColumn<bool>("statDots");
    QTest::addColumn<bool>("used");
    for (const bool mlsd : {true, false}) {
        for (const bool listsDots : {true, false}) {
            for (const bool statDots : {true, false}) {
                const bool used = mlsd || !listsDots || statDots;
                QTest::addRow("%s%s%s", mlsd ? "MLSD" : "LIST", listsDots ? " lists dots" : "",
                              statDots ? " STAT shows dots" : "")
                    << int(StatPath::Listed) << mlsd << listsDots << statDots << used;
            }
        }
        const char *ordinary = mlsd ? "MLSD" : "LIST";
        const auto row = [&](const char *what, StatPath stat) {
            QTest::addRow("%s %s", ordinary, what) << int(stat) << mlsd << false << true << false;
        };
        row("STAT without itself", StatPath::WithoutItself);
        row("STAT shows half", StatPath::FirstHalf);
        row("STAT takes no path", StatPath::NotHeeded);
        row("no STAT", StatPath::Unknown);
    }
}

void tst_StatListing::sameRows()
{
    QFETCH(int, stat);
    QFETCH(bool, mlsd);
    QFETCH(bool, listsDots);
    QFETCH(bool, statDots);
    QFETCH(bool, used);
    const auto prepare = [&](StatFixture &f) {
        f.putMixedTree();
        f.server.options().mlsd = mlsd;
        f.server.options().listsDotNames = listsDots;
        f.server.options().statShowsDotNames = statDots;
        f.server.options().stat = static_cast<StatPath>(stat);
    };
    const QStringList expected = rowsWithoutStat(prepare);
    QVERIFY(expected.size() > 20);
    StatFixture f;
    prepare(f);
    QVERIFY(f.start());
    QCOMPARE(f.refreshed(), expected);
    QCOMPARE(f.events().contains(QLatin1String("used from now")), used);
    QCOMPARE(f.refreshed(), expected);              // and with what is known by now
    QCOMPARE(f.incomplete(), QStringList(slash())); // of two names one fits
    QCOMPARE(f.server.logins(), 1);
}

void tst_StatListing::namesInCp932()
{
    const auto prepare = [](StatFixture &f) {
        f.server.options().utf8 = false;
        f.server.put("/a.txt", "x", daysAgo(1));
        // The second byte of the third name is a backslash.
        for (const char *dir : {"/\x93\xfa", "/\x93\xfa/\x8c\xea", "/\x94\x5c"}) {
            f.server.tree().makeFolder(dir, daysAgo(2));
            f.server.put(QByteArray(dir) + "/\x8e\x9a.txt", dir, daysAgo(2));
        }
    };
    const QStringList expected = rowsWithoutStat(prepare);
    QCOMPARE(expected.size(), 7);
    StatFixture f;
    prepare(f);
    QVERIFY(f.start());
    QCOMPARE(f.refreshed(), expected);
    QCOMPARE(f.incomplete(), QStringList());
    QCOMPARE(f.server.count("MLSD"), 2);
}

void tst_StatListing::commands()
{
    StatFixture f;
    f.putFolders(80);
    QVERIFY(f.start());
    QCOMPARE(f.refreshed().size(), 240);
    QCOMPARE(f.server.count("CWD"), 0);
    QCOMPARE(f.server.count("MLSD"), 1);
    QCOMPARE(f.server.count("STAT"), 2 + 80); // "/", what is not there, and the folders
    QCOMPARE(f.server.count("NOOP"), 2);
    QVERIFY(f.server.count("MDTM") + f.server.count("MLST") <= 4);
    f.server.log().clear();
    QCOMPARE(f.refreshed().size(), 240);
    QCOMPARE(f.server.count("MLSD"), 0);
    QCOMPARE(f.server.count("STAT"), 81);
    QCOMPARE(f.server.count("MDTM") + f.server.count("MLST"), 0);
    QCOMPARE(f.incomplete(), QStringList());
}

void tst_StatListing::messageLines()
{
    StatFixture f;
    for (const char *dir : {"/a", "/a/x", "/b", "/b/y", "/c"})
        f.server.tree().makeFolder(dir, daysAgo(1));
    QVERIFY(f.start());
    f.cache.caRefresh(slash());
    f.person.clear();
    f.cache.caRefresh(slash());
    QStringList dirs;
    for (const QString &line : f.person.messageLines())
        dirs.append(line.section(QLatin1Char(' '), 0, 0));
    QCOMPARE(dirs.join(QLatin1Char(' ')), QStringLiteral("/ /a /b /c /a/x /b/y "));
    QCOMPARE(f.person.messageLines().value(1),
             QStringLiteral("/a ﾌｫﾙﾀﾞとﾌｧｲﾙ情報を記録しています･･･"));
}

void tst_StatListing::dayOnlyIsListedAgain()
{
    StatFixture f;
    f.putFolders(5);
    const QDateTime old(QDate(2020, 2, 3), QTime(4, 5, 6), Qt::UTC);
    f.server.put("/d02/old.txt", "old", old);
    f.server.tree().makeFolder("/d03/old", old);
    QVERIFY(f.start());
    f.cache.caRefresh(slash());
    const QStringList rows = f.cacheRows(web());
    QVERIFY(rows.contains(QStringLiteral("/d02|0|old.txt|20/02/03 13:05:06|4")));
    QVERIFY(rows.contains(QStringLiteral("/d03|1|old|20/02/03 13:05:06|0")));
    QCOMPARE(f.server.count("MLSD"), 3); // and the first
    QVERIFY(f.cache.dayOnlyUnder(slash()).empty());

    StatFixture list; // there the day is all there is
    list.server.options().mlsd = false;
    list.putFolders(5);
    list.server.put("/d02/old.txt", "old", old);
    QVERIFY(list.start());
    list.cache.caRefresh(slash());
    QCOMPARE(list.server.count("LIST"), 1);
    QCOMPARE(list.cache.dayOnlyUnder(slash()).size(), size_t(1));
}

void tst_StatListing::uselessStatIsGivenUp()
{
    StatFixture f;
    f.putFolders(90);
    for (int i = 0; i < 90; ++i)
        f.server.put(StatFixture::folder(i) + "/old.txt", "old", daysAgo(1000));
    QVERIFY(f.start());
    QCOMPARE(f.refreshed().size(), 360);
    f.server.log().clear();
    QCOMPARE(f.refreshed().size(), 360);
    QCOMPARE(f.server.count("STAT"), 0);
}

void tst_StatListing::longListingsAreCut()
{
    const auto prepare = [](StatFixture &f) {
        f.putFolders(5);
        for (int i = 0; i < 30; ++i)
            f.server.put("/d02/n" + QByteArray::number(i), "x", daysAgo(3));
    };
    const QStringList expected = rowsWithoutStat(prepare);
    QCOMPARE(expected.size(), 45);
    StatFixture f;
    prepare(f);
    const QByteArray file = "-rw-r--r-- 1 u g 1 Nov 21 05:10 n";
    QByteArray first = "drwxr-xr-x 2 u g 4096 Nov 21 05:10 .\r\n";
    for (int i = 0; i < 10; ++i)
        first += file + QByteArray::number(i) + "\r\n";
    f.server.on("STAT", "/d02").rawReply("213-Status follows:\r\n" + first + "213 End\r\n");
    QVERIFY(f.start());
    QCOMPARE(f.refreshed(), expected);
    f.server.log().clear();
    QCOMPARE(f.refreshed(), expected);
    QCOMPARE(f.server.count("STAT"), 0);
}

void tst_StatListing::clockThatChanges_data()
{
    QTest::addColumn<int>("changed"); // days ago
    QTest::addColumn<bool>("used");
    QTest::newRow("between the files") << 50 << false;
    QTest::newRow("before all of them") << 170 << true;
    QTest::newRow("behind all of them") << -10 << true;
}

void tst_StatListing::clockThatChanges()
{
    QFETCH(int, changed);
    QFETCH(bool, used);
    const auto prepare = [&](StatFixture &f) {
        f.server.options().listOffsetSeconds = 3600;
        f.server.options().summerUntil = daysAgo(changed);
        f.putFolders(10);
        for (int i = 0; i < 10; ++i)
            f.server.put(StatFixture::folder(i) + "/c.txt", "c", daysAgo(20 + 7 * i));
    };
    const QStringList expected = rowsWithoutStat(prepare);
    StatFixture f;
    prepare(f);
    QVERIFY(f.start());
    QCOMPARE(f.refreshed(), expected);
    QCOMPARE(f.server.count("MLSD") == 1, used);
}

void tst_StatListing::manyEntries()
{
    const auto prepare = [](StatFixture &f) {
        f.putFolders(4);
        for (int i = 0; i < 2000; ++i) {
            const QByteArray name = "/n" + QByteArray::number(i);
            f.server.put("/d01" + name, "x", daysAgo(3));
            f.server.put("/d02/e" + name, "x", daysAgo(3));
            f.server.put("/d03/e" + name, "x", daysAgo(3));
        }
        f.server.tree().makeFolder("/d02/e", daysAgo(3));
        f.server.tree().makeFolder("/d03/e", daysAgo(3));
    };
    const QStringList expected = rowsWithoutStat(prepare);
    QCOMPARE(expected.size(), 6014);
    StatFixture f;
    prepare(f);
    QVERIFY(f.start());
    QCOMPARE(f.refreshed(), expected);
    QCOMPARE(f.server.count("MLSD"), 3); // "/", the folder of 2,002 and one of 2,000 to compare
    QCOMPARE(f.incomplete(), QStringList());
}

void tst_StatListing::learnedAnewAtEachConnect()
{
    StatFixture f;
    f.putFolders(5);
    QVERIFY(f.start());
    const QStringList expected = f.refreshed();
    f.server.stop();
    f.server.options().stat = StatPath::NotHeeded;
    QVERIFY(f.server.start());
    f.session.Disconnect();
    QVERIFY(f.connect());
    QCOMPARE(f.refreshed(), expected);
    QCOMPARE(f.server.count("STAT"), 2);
}

void tst_StatListing::clockIsLearnedAtEachConnect()
{
    StatFixture f(StatPath::Unknown);
    f.server.options().mlsd = false;
    f.server.options().listOffsetSeconds = -5 * 3600;
    f.putFolders(1);
    QVERIFY(f.start());
    const QStringList expected = f.refreshed();
    for (int i = 0; i < 8; ++i) {
        f.session.Disconnect();
        QVERIFY(f.connect());
        QCOMPARE(f.refreshed(), expected);
    }
}

namespace
{
/// Some hundred files with odd names in nested folders, some old, some of the future.
void putOddTree(const FtpDaemon &daemon)
{
    const QList<QByteArray> names{"a.txt",
                                  "with blank.txt",
                                  " lead",
                                  "trail ",
                                  "it's.txt",
                                  "\"q\".txt",
                                  "[b].txt",
                                  "{c}.txt",
                                  "-la",
                                  "x*y?.txt",
                                  "100%.txt",
                                  "~tilde",
                                  "back\\slash",
                                  "a -> b",
                                  ".hidden",
                                  "a;b=c; d",
                                  "Nov 21 05:10 x",
                                  "\xe6\x97\xa5\xe6\x9c\xac.txt",
                                  "\xef\xbe\x8a\xef\xbe\x9d.txt"};
    const QList<QByteArray> dirs{"",
                                 "/plain",
                                 "/plain/deep",
                                 "/with blank",
                                 "/with blank/[x]",
                                 "/-dash",
                                 "/-dash/-r",
                                 "/it's",
                                 "/{a,b}",
                                 "/~home",
                                 "/.dots",
                                 "/sub.x",
                                 "/sub.x/.y",
                                 "/\xe6\x97\xa5\xe6\x9c\xac",
                                 "/\xe6\x97\xa5\xe6\x9c\xac/\xe8\xaa\x9e \"q\"",
                                 "/many/1",
                                 "/many/2",
                                 "/many/3"};
    int count = 0;
    for (const QByteArray &dir : dirs) {
        for (const QByteArray &name : names) {
            ++count;
            QVERIFY(daemon.put(dir + '/' + name, QByteArray(count, 'x'), daysAgo(count % 120)));
        }
    }
    QVERIFY(daemon.put("/many/2/old.txt", "old", daysAgo(1234)));
    QVERIFY(daemon.put("/many/3/future.txt", "future", daysAgo(-90)));
    QVERIFY(daemon.makeFolder("/many/empty"));
    QVERIFY(QFile::link(QStringLiteral("plain"), daemon.root() + QLatin1String("/many/1/link")));
    daemon.own();
}
} // namespace

void tst_StatListing::daemons()
{
    QFETCH(FtpDaemon::Kind, kind);
    if (skippedWithout(kind))
        return;
    FtpDaemon daemon(kind);
    QVERIFY(daemon.start());
    putOddTree(daemon);
    if (QTest::currentTestFailed())
        return;

    EngineFixture f{ClientLimits{}};
    f.registerSite(web(), daemon.server(), daemon.user(), daemon.password());
    QVERIFY(f.connectTo(web(), daemon.server(), daemon.user(), daemon.password()));
    const QString root = slash();
    QStringList rows;
    for (const char *dir : {"/"}) { // one by one, in the ordinary way
        QStringList pending{QString::fromLatin1(dir)};
        while (!pending.isEmpty()) {
            const QString next = pending.takeFirst();
            for (const QString &name :
                 f.cache.caSubFolds(next).split(QLatin1Char('\r'), Qt::SkipEmptyParts))
                pending.append((next == root ? QString() : next) + QLatin1Char('/') + name);
        }
    }
    const QStringList expected = toTheMinute(f.cacheRows(web()));
    QVERIFY(expected.size() > 250);
    QVERIFY(!f.events().contains(QLatin1String("STAT")));
    f.cache.caRefresh(root);
    QVERIFY(f.events().contains(QLatin1String("used from now")));
    QCOMPARE(toTheMinute(f.cacheRows(web())), expected);
    f.cache.caRefresh(root);
    QCOMPARE(toTheMinute(f.cacheRows(web())), expected);
    QVERIFY(f.cache.incompleteUnder(root).empty());
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::tst_StatListing)
#include "tst_StatListing.moc"
