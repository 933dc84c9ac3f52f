#include "ftp/protocol/ListingRows.h"
#include "ftp/protocol/ListingWords.h"

namespace venlo::test
{

/// When a listing can be relied on, and which names it never hands on.
class WholeListing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noLinesIsAnEmptyDirectory();
    void noise_data();
    void noise();
    void serverSaysSo_data();
    void serverSaysSo();
    void completionWords_data();
    void completionWords();
    void ownAndParentDirectoryAreDropped();
    void refused_data();
    void refused();
    void separatorsOfTheMachine_data();
    void separatorsOfTheMachine();
    void aNameThatDecodesToTheParentIsRefused();
    void entriesAroundADoubtStay();
    void reasonsAreBounded();
    void reasonsAreOneLine();
    void takeBeginsAnew();
};

constexpr auto mlsdSource = ListingParser::Source::Mlsd;
constexpr auto listSource = ListingParser::Source::List;

QByteArray listed(const QByteArray &name)
{
    return "-rw-r--r-- 1 user group 7 Nov 21 05:10 " + name;
}

void WholeListing::noLinesIsAnEmptyDirectory()
{
    const Listing listing = parseLines(listSource, {});
    QVERIFY(listing.whole);
    QVERIFY(listing.entries.empty());
    QVERIFY(!listing.fromMlsd);
}

void WholeListing::noise_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("blanks") << QByteArray("   ");
    QTest::newRow("total") << QByteArray("total 12");
    QTest::newRow("total of nothing") << QByteArray("total 0");
    QTest::newRow("total for people") << QByteArray("total 1.5M");
    QTest::newRow("Japanese total") << QByteArray("合計 12");
    QTest::newRow("Japanese total in CP932") << QByteArray("\x8d\x87\x8c\x76 12");
    QTest::newRow("Japanese total in EUC-JP") << QByteArray("\xb9\xe7\xb7\xd7 12");
}

void WholeListing::noise()
{
    QFETCH(QByteArray, line);
    const Listing listing = parseLines(listSource, {line, listed("name")});
    QVERIFY2(listing.whole, qPrintable(listing.why));
    QCOMPARE(listing.entries.size(), std::size_t(1));
}

void WholeListing::serverSaysSo_data()
{
    QTest::addColumn<QByteArray>("line");
    const auto row = [](const char *what, const char *line) {
        QTest::newRow(what) << QByteArray(line);
    };
    row("cannot open", "ls: cannot open directory '.': Permission denied");
    row("permission of a path", "ls: /x: Permission denied");
    row("limit", "Output limited to 2000 matches");
    row("truncated", "-- listing truncated --");
    row("too many", "Too many files");
    row("bare words", "Permission denied");
    row("cannot access one file", "ls: cannot access 'x': No such file or directory");
    row("any other words", "the disk is on fire");
    row("total with more words", "total 12 of 40");
    row("total without a number", "total files");
    row("total alone", "total");
}

void WholeListing::serverSaysSo()
{
    QFETCH(QByteArray, line);
    for (const auto source : {listSource, mlsdSource}) {
        const Listing listing = parseLines(source, {line});
        QVERIFY(!listing.whole);
        QVERIFY(listing.entries.empty());
        QVERIFY(listing.why.contains(QString::fromLatin1(line)));
    }
}

void WholeListing::completionWords_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<bool>("notWhole");
    QTest::newRow("sent") << QStringLiteral("226 Directory send OK.") << false;
    QTest::newRow("complete") << QStringLiteral("226 Transfer complete.") << false;
    QTest::newRow("matches") << QStringLiteral("226-Options: -l\n226 12 matches total") << false;
    QTest::newRow("not opened") << QStringLiteral(
                                       "226 Transfer done (but failed to open directory).")
                                << true;
    QTest::newRow("cut") << QStringLiteral("226 Output truncated to 2000 matches") << true;
    QTest::newRow("limited") << QStringLiteral("226 OUTPUT LIMITED TO 2000 MATCHES") << true;
    QTest::newRow("not permitted") << QStringLiteral("226 .: Permission denied") << true;
}

void WholeListing::completionWords()
{
    QFETCH(QString, words);
    QFETCH(bool, notWhole);
    QCOMPARE(saysListingIsNotWhole(words), notWhole);
}

void WholeListing::ownAndParentDirectoryAreDropped()
{
    const Listing listing =
        parseLines(listSource, {"drwxr-xr-x 2 user group 4096 Nov 21 05:10 .",
                                "drwxr-xr-x 2 user group 4096 Nov 21 05:10 ..", listed("name")});
    QVERIFY2(listing.whole, qPrintable(listing.why));
    QCOMPARE(listing.entries.size(), std::size_t(1));
    QCOMPARE(listing.entries.front().name, QStringLiteral("name"));
}

void WholeListing::refused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("path upwards") << QByteArray("../../etc/passwd");
    QTest::newRow("absolute path") << QByteArray("/etc/passwd");
    QTest::newRow("slash at the end") << QByteArray("name/");
    QTest::newRow("hidden with a slash") << QByteArray(".x/y");
    QTest::newRow("NUL") << QByteArray("na\0me", 5);
    QTest::newRow("CR inside") << QByteArray("na\rme");
    QTest::newRow("CR at the end") << QByteArray("name\r");
    QTest::newRow("LF") << QByteArray("na\nme");
}

void WholeListing::refused()
{
    QFETCH(QByteArray, bytes);
    const Listing fromList = parseLines(listSource, {listed(bytes), listed("good")});
    const Listing fromMlsd =
        parseLines(mlsdSource, {"type=file;size=7; " + bytes, "type=file;size=7; good"});
    const Listing fromEplf = parseLines(listSource, {"+r,\t" + bytes, listed("good")});
    const Listing fromDos =
        parseLines(listSource, {"11-21-26  05:10AM    7 " + bytes, listed("good")});
    for (const Listing &listing : {fromList, fromMlsd, fromEplf, fromDos}) {
        QVERIFY(!listing.whole);
        QCOMPARE(listing.entries.size(), std::size_t(1));
        QCOMPARE(listing.entries.front().rawName, QByteArray("good"));
        QVERIFY(listing.why.startsWith(QStringLiteral("refused name: ")));
        QVERIFY(listing.why.contains(QString::fromLatin1(bytes.left(2))));
    }
}

void WholeListing::separatorsOfTheMachine_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("onUnix");
    QTest::addColumn<bool>("onWindows");
    QTest::newRow("ordinary") << QStringLiteral("a.b") << false << false;
    QTest::newRow("backslash") << QStringLiteral("..\\x") << false << true;
    QTest::newRow("slash") << QStringLiteral("../x") << true << true;
    QTest::newRow("parent") << QStringLiteral("..") << true << true;
    QTest::newRow("itself") << QStringLiteral(".") << true << true;
    QTest::newRow("empty") << QString() << true << true;
    QTest::newRow("three points") << QStringLiteral("...") << false << false;
}

void WholeListing::separatorsOfTheMachine()
{
    QFETCH(QString, name);
    QFETCH(bool, onUnix);
    QFETCH(bool, onWindows);
    QCOMPARE(isRefusedName(name, QStringLiteral("/")), onUnix);
    QCOMPARE(isRefusedName(name, QStringLiteral("/\\")), onWindows);
}

void WholeListing::aNameThatDecodesToTheParentIsRefused()
{
    // A byte order mark, overlong points and an overlong slash must not vanish into "..".
    for (const char *bytes : {"\xef\xbb\xbf..", "\xc0\xae\xc0\xae", "..\xc0\xaf"}) {
        const Listing listing = parseLines(listSource, {listed(bytes)});
        for (const ListedEntry &entry : listing.entries) {
            QVERIFY(entry.name != QStringLiteral(".."));
            QVERIFY(!entry.name.contains(QLatin1Char('/')));
        }
        QCOMPARE(listing.entries.size(), std::size_t(1));
    }
}

void WholeListing::entriesAroundADoubtStay()
{
    const Listing listing = parseLines(listSource, {listed("a"), "garbage", listed("b")});
    QVERIFY(!listing.whole);
    QCOMPARE(listing.entries.size(), std::size_t(2));
    QCOMPARE(listing.why, QStringLiteral("not an entry: garbage"));
}

void WholeListing::reasonsAreBounded()
{
    const QList<QByteArray> lines(1000, QByteArray(60'000, 'x'));
    const Listing listing = parseLines(listSource, lines);
    QVERIFY(!listing.whole);
    QVERIFY(listing.why.size() > 200);
    QVERIFY(listing.why.size() < 2000);
}

void WholeListing::reasonsAreOneLine()
{
    const Listing listing = parseLines(listSource, {"bad\rline", listed("x\ry")});
    QCOMPARE(listing.why, QStringLiteral("not an entry: bad?line; refused name: x?y"));
}

void WholeListing::takeBeginsAnew()
{
    NameCodec codec;
    ListingParser parser(mlsdSource, codec, today());
    parser.addLine("garbage");
    QVERIFY(!parser.take().whole);
    const Listing second = parser.take();
    QVERIFY(second.whole);
    QVERIFY(second.fromMlsd);
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::WholeListing)
#include "tst_WholeListing.moc"
