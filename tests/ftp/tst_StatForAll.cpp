// Servers whose STAT shows a directory itself only with "-a": they are asked that way, believed
// only when it shows what the ordinary listing does, and left alone otherwise.
#include "ftp/StatFixture.h"

#include <QTest>

namespace venlo::test
{

namespace
{
struct ForAllFixture : StatFixture {
    ForAllFixture() : StatFixture(StatPath::ItselfForAll)
    {
        server.options().statAll = StatAll::Taken;
    }
    [[nodiscard]] bool used() const { return events().contains(QLatin1String("used from now")); }
    /// The paths that were asked for, "-a" and the end of each batch (";") included.
    [[nodiscard]] QByteArray asked() const
    {
        QByteArrayList paths;
        for (const QByteArray &command : server.commands()) {
            if (command.startsWith("STAT "))
                paths.append(command.mid(5));
            else if (command == "NOOP")
                paths.append(";");
        }
        return paths.join(' ');
    }
};
} // namespace

class tst_StatForAll : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sameRows_data();
    void sameRows();
    void commands();
    void noGoodAnswer_data();
    void noGoodAnswer();
    void forgedEndOfReply();
    void timesThatCannotBeProven_data();
    void timesThatCannotBeProven();
    void staysSoBehindALoss();
    void learnedAnewAtEachConnect();
};

void tst_StatForAll::sameRows_data()
{
    QTest::addColumn<bool>("mlsd");
    QTest::addColumn<bool>("listsDots");
    for (const bool mlsd : {true, false}) {
        for (const bool dots : {true, false})
            QTest::addRow("%s%s", mlsd ? "MLSD" : "LIST", dots ? " lists dots" : "")
                << mlsd << dots;
    }
}

void tst_StatForAll::sameRows()
{
    QFETCH(bool, mlsd);
    QFETCH(bool, listsDots);
    const auto prepare = [&](StatFixture &f) {
        f.putMixedTree();
        f.putFolders(70);
        f.server.options().mlsd = mlsd;
        f.server.options().listsDotNames = listsDots;
    };
    const QStringList expected = rowsWithoutStat(prepare);
    QVERIFY(expected.size() > 220);
    ForAllFixture f;
    prepare(f);
    QVERIFY(f.start());
    QCOMPARE(f.refreshed(), expected);
    QVERIFY(f.used());
    QVERIFY(f.server.count("STAT") > 70);
    QCOMPARE(f.refreshed(), expected);              // and with what is known by now
    QCOMPARE(f.incomplete(), QStringList(slash())); // of two names one fits
    QCOMPARE(f.server.logins(), 1);
}

void tst_StatForAll::commands()
{
    ForAllFixture f;
    f.putFolders(3);
    QVERIFY(f.start());
    QCOMPARE(f.refreshed().size(), 9);
    QCOMPARE(f.asked(), QByteArray("/ /no-such-folder-here ; -a / -a /no-such-folder-here ; "
                                   "-a /d00 -a /d01 -a /d02 ;"));
    QCOMPARE(f.server.count("MLSD"), 1);
    QVERIFY(f.server.count("MDTM") + f.server.count("MLST") <= 4);
    f.server.log().clear();
    QCOMPARE(f.refreshed().size(), 9);
    QCOMPARE(f.asked(), QByteArray("-a / ; -a /d00 -a /d01 -a /d02 ;"));
    QCOMPARE(f.server.count("MLSD") + f.server.count("MDTM") + f.server.count("MLST"), 0);
    QCOMPARE(f.incomplete(), QStringList());
}

void tst_StatForAll::noGoodAnswer_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("mlsd");
    QTest::addColumn<int>("asked"); // STAT, in all
    const auto row = [](const char *what, StatAll answer, int asked) {
        QTest::addRow("%s, MLSD", what) << int(answer) << true << asked;
        QTest::addRow("%s, LIST", what) << int(answer) << false << asked;
    };
    // What shows nothing is tried in three directories, what shows something else in one.
    row("part of the path", StatAll::PartOfThePath, 12);
    row("nothing", StatAll::Nothing, 12);
    row("refused", StatAll::Refused, 12);
    row("without itself", StatAll::WithoutItself, 12);
    row("half of it", StatAll::FirstHalf, 4);
    row("whatever the path", StatAll::NotHeeded, 4);
}

void tst_StatForAll::noGoodAnswer()
{
    QFETCH(int, answer);
    QFETCH(bool, mlsd);
    QFETCH(int, asked);
    const auto prepare = [&](StatFixture &f) {
        f.putMixedTree();
        f.server.options().mlsd = mlsd;
    };
    const QStringList expected = rowsWithoutStat(prepare);
    QVERIFY(expected.size() > 20);
    ForAllFixture f;
    prepare(f);
    f.server.options().statAll = static_cast<StatAll>(answer);
    QVERIFY(f.start());
    QCOMPARE(f.refreshed(), expected);
    QVERIFY(!f.used());
    QCOMPARE(f.server.count("STAT"), asked);
    QCOMPARE(f.refreshed(), expected);
    QCOMPARE(f.server.count("STAT"), asked);
    QCOMPARE(f.server.logins(), 1);
}

void tst_StatForAll::forgedEndOfReply()
{
    const auto prepare = [](StatFixture &f) { f.putFolders(8); };
    const QStringList expected = rowsWithoutStat(prepare);
    const QByteArray itself = "drwxr-xr-x 2 u g 4096 Nov 21 05:10 .\r\n";
    ForAllFixture f;
    prepare(f);
    // The replies behind it move up by one, and that to NOOP comes too late.
    f.server.on("STAT", "-a /d03")
        .once()
        .rawReply("213-Status follows:\r\n" + itself + "213 End\r\n213-more\r\n" + itself +
                  "213 End of status\r\n");
    QVERIFY(f.start());
    QCOMPARE(f.refreshed(), expected);
    QVERIFY(f.events().contains(QLatin1String("out of step")));
    QCOMPARE(f.incomplete(), QStringList());
}

void tst_StatForAll::timesThatCannotBeProven_data()
{
    QTest::addColumn<QByteArray>("reply"); // to MDTM and MLST; null: the connection is closed
    QTest::addColumn<int>("nth");
    QTest::newRow("refused") << QByteArray("550 No\r\n") << 1;
    QTest::newRow("refused later") << QByteArray("550 No\r\n") << 2;
    QTest::newRow("unknown") << QByteArray("500 What?\r\n") << 1;
    QTest::newRow("another clock") << QByteArray("213 20260101000000\r\n") << 2;
    QTest::newRow("no time") << QByteArray("213 yesterday\r\n") << 1;
    QTest::newRow("lost") << QByteArray() << 1;
}

void tst_StatForAll::timesThatCannotBeProven()
{
    QFETCH(QByteArray, reply);
    QFETCH(int, nth);
    const auto prepare = [](StatFixture &f) {
        f.putFolders(20);
        for (int i = 0; i < 20; ++i)
            f.server.put(StatFixture::folder(i) + "/c.txt", "c", daysAgo(4 + 7 * i));
    };
    const QStringList expected = rowsWithoutStat(prepare);
    QCOMPARE(expected.size(), 80);
    ForAllFixture f;
    prepare(f);
    for (const char *verb : {"MDTM", "MLST"}) {
        auto rule = f.server.on(verb).from(nth);
        if (reply.isNull())
            rule.dropBeforeReply();
        else
            rule.rawReply(reply);
    }
    QVERIFY(f.start());
    QCOMPARE(f.refreshed(), expected);
    QCOMPARE(f.incomplete(), QStringList());
    QVERIFY(f.server.count("MLSD") > 5);
    f.server.log().clear();
    QCOMPARE(f.refreshed(), expected);
    QVERIFY(f.server.count("STAT") <= (reply.isNull() ? 1 : 0)); // a second loss is the last
    QCOMPARE(f.incomplete(), QStringList());
}

void tst_StatForAll::staysSoBehindALoss()
{
    const auto prepare = [](StatFixture &f) { f.putFolders(40); };
    const QStringList expected = rowsWithoutStat(prepare);
    ForAllFixture f;
    prepare(f);
    f.server.on("STAT").nth(20).dropBeforeReply();
    QVERIFY(f.start());
    QCOMPARE(f.refreshed(), expected);
    QCOMPARE(f.server.logins(), 2);
    f.server.log().clear();
    QCOMPARE(f.refreshed(), expected);
    QCOMPARE(f.server.count("MLSD"), 0);
    QCOMPARE(f.asked().count("-a "), 41);
    QCOMPARE(f.server.count("STAT"), 41);
}

void tst_StatForAll::learnedAnewAtEachConnect()
{
    ForAllFixture f;
    f.putFolders(5);
    QVERIFY(f.start());
    const QStringList expected = f.refreshed();
    QVERIFY(f.used());
    f.server.stop();
    f.server.options().statAll = StatAll::PartOfThePath;
    QVERIFY(f.server.start());
    f.session.Disconnect();
    QVERIFY(f.connect());
    QCOMPARE(f.refreshed(), expected);
    QCOMPARE(f.server.count("STAT"), 12);
    QVERIFY(f.asked().startsWith("/ "));
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::tst_StatForAll)
#include "tst_StatForAll.moc"
