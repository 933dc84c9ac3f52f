// Servers that answer STAT wrongly, late, out of step or not at all: a refresh shows all the same.
#include "ftp/StatFixture.h"

#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

namespace venlo::test
{

class tst_StatFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void faults_data();
    void faults();
    void secondLossIsTheLast();
    void linesAheadAreDropped();
    void forgedEndOfReply();
    void cancelled();
};

void tst_StatFaults::faults_data()
{
    QTest::addColumn<QByteArray>("reply"); // null: the connection is closed instead
    QTest::addColumn<int>("nth");
    QTest::addColumn<bool>("closes");
    QTest::addColumn<bool>("forAll");
    const auto row = [](const char *what, const QByteArray &reply, bool closes) {
        for (const int nth : {1, 2, 3, 20, 42})
            QTest::addRow("%s, %d", what, nth) << reply << nth << closes << false;
        for (const int nth : {2, 3, 4, 22}) // from the third on with "-a"
            QTest::addRow("-a: %s, %d", what, nth) << reply << nth << closes << true;
    };
    row("lost", {}, true);
    row("cut", "213-Status follows:\r\ndrwxr-xr-x 2 u g 4096 Nov 21 05:10 .\r\n-rw", true);
    row("refused", "550 No such folder\r\n", false);
    row("refused for now", "450 Busy\r\n", false);
    row("empty", "213-Status follows:\r\n213 End\r\n", false);
    row("no status", "200 Fine\r\n", false);
    row("says it is cut",
        "213-Status follows:\r\ndrwxr-xr-x 2 u g 4096 Nov 21 05:10 .\r\n213 Output truncated\r\n",
        false);
    row("not an entry",
        "213-Status follows:\r\ndrwxr-xr-x 2 u g 4096 Nov 21 05:10 .\r\nwhat is that\r\n213 "
        "End\r\n",
        false);
    row("preliminary", "150 Here it comes\r\n", false);
    row("one reply more", "226 Done\r\n213 End\r\n", false);
    row("421", "421 Too much\r\n", true);
    row("no reply", "what?\r\n", false);
}

void tst_StatFaults::faults()
{
    QFETCH(QByteArray, reply);
    QFETCH(int, nth);
    QFETCH(bool, closes);
    QFETCH(bool, forAll);
    const auto prepare = [](StatFixture &f) { f.putFolders(40); };
    const QStringList expected = rowsWithoutStat(prepare);
    QCOMPARE(expected.size(), 120);
    StatFixture f(forAll ? StatPath::ItselfForAll : StatPath::Listed);
    f.server.options().statAll = StatAll::Taken;
    prepare(f);
    auto rule = f.server.on("STAT").nth(nth);
    if (reply.isNull())
        rule.dropBeforeReply();
    else if (closes)
        rule.rawReply(reply).thenClose();
    else
        rule.rawReply(reply);
    QVERIFY(f.start());
    QCOMPARE(f.refreshed(), expected);
    QCOMPARE(f.incomplete(), QStringList());
    QVERIFY(f.server.logins() <= 2); // once more
    QCOMPARE(f.refreshed(), expected);
    QVERIFY(f.server.logins() <= 2);
}

void tst_StatFaults::secondLossIsTheLast()
{
    StatFixture f;
    f.putFolders(40);
    f.server.on("STAT").from(5).dropBeforeReply();
    QVERIFY(f.start());
    QCOMPARE(f.refreshed().size(), 120);
    QCOMPARE(f.server.logins(), 3);
    QCOMPARE(f.incomplete(), QStringList());
    const int asked = f.server.count("STAT");
    QCOMPARE(f.refreshed().size(), 120);
    QCOMPARE(f.server.count("STAT"), asked);
}

void tst_StatFaults::linesAheadAreDropped()
{
    StatFixture f;
    f.putFolders(12);
    f.server.options().firstLineOnly = true;
    QVERIFY(f.start());
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(f.refreshed().size(), 36);
    QVERIFY(timer.elapsed() < 8000);
    QCOMPARE(f.server.logins(), 2);
    QVERIFY(f.server.count("STAT") > 10); // one at a time
    QCOMPARE(f.incomplete(), QStringList());
}

void tst_StatFaults::forgedEndOfReply()
{
    // As a name with a line end in it would: the replies behind it move up by one.
    StatFixture f;
    f.putFolders(8);
    const QStringList expected = rowsWithoutStat([](StatFixture &g) { g.putFolders(8); });
    const QByteArray itself = "drwxr-xr-x 2 u g 4096 Nov 21 05:10 .\r\n";
    const QByteArray file = "-rw-r--r-- 1 u g 5 Nov 21 05:10 ";
    f.server.on("STAT", "/d03")
        .once()
        .rawReply("213-Status follows:\r\n" + itself + file + "x\r\n213 End\r\n213-more\r\n" +
                  itself + file + "y\r\n213 End of status\r\n");
    QVERIFY(f.start());
    QCOMPARE(f.refreshed(), expected);
    QCOMPARE(f.incomplete(), QStringList());
    QVERIFY(f.events().contains(QLatin1String("out of step")));
}

void tst_StatFaults::cancelled()
{
    StatFixture f;
    f.putFolders(60);
    QVERIFY(f.start());
    QCOMPARE(f.refreshed().size(), 180);
    f.server.on("STAT").delay(100);
    QElapsedTimer timer;
    timer.start();
    QTimer::singleShot(300, this, [&] { f.person.cancelNow(); });
    f.cache.caRefresh(slash());
    QVERIFY2(timer.elapsed() < 3000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(!f.incomplete().isEmpty());
    f.server.script().clear();
    f.person.resetCancel();
    QCOMPARE(f.refreshed().size(), 180);
    QCOMPARE(f.incomplete(), QStringList());
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::tst_StatFaults)
#include "tst_StatFaults.moc"
