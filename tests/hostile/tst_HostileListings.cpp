// Listings without end, of a million entries, of folders in themselves, and with sizes and times
// that cannot be: bounded in memory and time, and what was not seen whole is never taken for whole.
#include "hostile/HostileWorld.h"
#include "hostile/PeakMemory.h"

#include <QTest>

using namespace venlo;
using venlo::test::HostileWorld;
using venlo::test::PeakMemory;
using venlo::test::TreeSnapshot;

namespace
{
constexpr qint64 mebi = 1024LL * 1024;
const QString pub = QStringLiteral("/pub");

QByteArray fileLine(const QByteArray &name)
{
    return "type=file;size=4;modify=20260102030405; " + name + "\r\n";
}

QByteArray folderLine(const QByteArray &name)
{
    return "type=dir;modify=20260102030405; " + name + "\r\n";
}

ClientLimits smallLimits()
{
    ClientLimits limits = HostileWorld::hastyLimits();
    using std::chrono_literals::operator""s;
    limits.listing = 60s;
    limits.maxEntries = 20'000;
    limits.maxTreeFolders = 300;
    limits.maxTreeEntries = 30'000;
    return limits;
}

/// Why the directory is not whole, empty when it is.
QString doubt(HostileWorld &world, const QString &dir = pub)
{
    const auto marks = world.engine.cache.incompleteUnder(dir);
    return marks.empty() ? QString() : marks.front().why;
}
} // namespace

class tst_HostileListings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { HostileWorld::useMemory(); }
    void aMillionEntries();
    void endless_data();
    void endless();
    void namesOf64KiB();
    void manyMisfits();
    void aFolderInItself_data();
    void aFolderInItself();
    void linksAreNoFolders();
    void longFolderNamesAreNotEntered();
    void sizes_data();
    void sizes();
    void times_data();
    void times();
    void facts_data();
    void facts();
};

/// As many as there may be, in the client alone: memory for each, and no more.
void tst_HostileListings::aMillionEntries()
{
    constexpr int entries = 1'000'000;
    HostileWorld world;
    world.server.makeFolder("/pub");
    QByteArray listing;
    listing.reserve(60LL * entries);
    for (int i = 0; i < entries; ++i)
        listing += fileLine("evil" + QByteArray::number(i));
    world.server.setRawListing("/pub", listing);
    QVERIFY(world.start());
    QVERIFY(world.connect());
    QVERIFY(world.engine.session.client().changeDirectory("/pub"));
    const PeakMemory memory;
    QElapsedTimer timer;
    timer.start();
    const auto listed = world.engine.session.client().list();
    QVERIFY(listed);
    QVERIFY2(listed.value().whole, qPrintable(listed.value().why));
    QCOMPARE(listed.value().entries.size(), size_t(entries));
    // Twice the space while the list grows.
    QVERIFY2(memory.grown() < 700 * mebi, qPrintable(QString::number(memory.grown() / mebi)));
    QVERIFY2(timer.elapsed() < 60'000, qPrintable(QString::number(timer.elapsed())));
}

void tst_HostileListings::endless_data()
{
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<bool>("mlsd");
    QByteArray files;
    QByteArray list;
    for (int i = 0; i < 1000; ++i) {
        files += fileLine("evil" + QByteArray::number(i));
        list += "-rw-r--r-- 1 u g 4 Jan 02  2026 evil" + QByteArray::number(i) + "\r\n";
    }
    QTest::newRow("entries") << files << true;
    QTest::newRow("entries of LIST") << list << false;
    QTest::newRow("folders") << folderLine("evil") << true;
    QTest::newRow("empty lines") << QByteArray("\r\n").repeated(10'000) << true;
    QTest::newRow("a line without end") << QByteArray(64 * 1024, 'x') << true;
    QTest::newRow("lines of 60 KiB") << fileLine(QByteArray(60'000, 'x')) << true;
    QTest::newRow("garbage") << QByteArray("garbage\n").repeated(1000) << true;
    QTest::newRow("totals") << QByteArray("total 12\r\n").repeated(1000) << false;
    QTest::newRow("NULs") << QByteArray(64 * 1024, '\0') << true;
}

void tst_HostileListings::endless()
{
    QFETCH(QByteArray, block);
    QFETCH(bool, mlsd);
    HostileWorld world(smallLimits());
    world.server.options().mlsd = mlsd;
    world.server.on(mlsd ? "MLSD" : "LIST").endlessData(block);
    QVERIFY(world.start());
    const TreeSnapshot before = world.chosenTree();
    const PeakMemory memory;
    for (const bool up : {false, true})
        QVERIFY(world.engine.batch().RunSyncPattern(QStringLiteral("pattern"), up) != 0);
    QVERIFY2(memory.grown() < 64 * mebi, qPrintable(QString::number(memory.grown() / mebi)));
    QVERIFY(!doubt(world).isEmpty());
    const TreeSnapshot after = world.chosenTree();
    for (const auto &[path, item] : before)
        QVERIFY2(after.count(path) == 1, path.constData());
    QCOMPARE(world.server.count("DELE") + world.server.count("RMD"), 0);
    QCOMPARE(world.broken(40'000), QString());
}

/// They cost what of them is looked at.
void tst_HostileListings::namesOf64KiB()
{
    HostileWorld world(HostileWorld::hastyLimits());
    QByteArray listing = fileLine("good.txt");
    for (int i = 0; i < 1000; ++i)
        listing += fileLine("evil" + QByteArray::number(i) + QByteArray(60'000, 'x'));
    world.server.setRawListing("/pub", listing);
    QVERIFY(world.start());
    QVERIFY(world.connect());
    const PeakMemory memory;
    world.engine.cache.caRefresh(pub);
    QVERIFY2(memory.grown() < 32 * mebi, qPrintable(QString::number(memory.grown() / mebi)));
    QCOMPARE(world.cached(pub), QStringList{QStringLiteral("good.txt")});
    QVERIFY(doubt(world).contains(QStringLiteral("refused name: evil0")));
    QVERIFY(doubt(world).size() < 2000);
    QCOMPARE(world.broken(20'000), QString());
}

/// Some are named, of the others their number is told.
void tst_HostileListings::manyMisfits()
{
    HostileWorld world(HostileWorld::hastyLimits());
    QByteArray listing;
    for (int i = 0; i < 3000; ++i)
        listing += fileLine(i % 2 == 0 ? QByteArray("evil") : "evil" + QByteArray(300, 'x'));
    world.server.setRawListing("/pub", listing);
    QVERIFY(world.start());
    QVERIFY(world.connect());
    QString names;
    bool ok = false;
    QString words;
    try {
        world.engine.cache.caLoadDir(pub, DirectoryCache::IfAbsent, names, ok);
    } catch (const DbError &error) {
        words = error.words();
    }
    QVERIFY2(words.contains(QStringLiteral("/pub/evil")), qPrintable(words));
    QVERIFY2(words.contains(QStringLiteral("･･･ (2999)")), qPrintable(words));
    QVERIFY(words.size() < 10'000);
    QCOMPARE(doubt(world), words);
    QCOMPARE(world.broken(8000), QString());
}

void tst_HostileListings::aFolderInItself_data()
{
    QTest::addColumn<int>("branches");
    QTest::addColumn<int>("files");
    QTest::newRow("one in one") << 1 << 1;
    QTest::newRow("two in each") << 2 << 0;
    QTest::newRow("ten in each, with files") << 10 << 3;
    QTest::newRow("many files") << 3 << 3000;
}

/// Whatever is entered shows the same: the way ends, and nothing rests on what was seen of it.
void tst_HostileListings::aFolderInItself()
{
    QFETCH(int, branches);
    QFETCH(int, files);
    HostileWorld world(smallLimits());
    QByteArray listing;
    for (int i = 0; i < branches; ++i)
        listing += folderLine("d" + QByteArray::number(i));
    for (int i = 0; i < files; ++i)
        listing += fileLine("f" + QByteArray::number(i));
    world.server.on("MLSD").data(listing);
    QVERIFY(world.start());
    const TreeSnapshot before = world.chosenTree();
    const PeakMemory memory;
    for (const bool up : {false, true})
        QVERIFY(world.engine.batch().RunSyncPattern(QStringLiteral("pattern"), up) != 0);
    QVERIFY(!doubt(world).isEmpty());
    // One way down was seen whole up to where it is too deep; of more nothing was.
    if (branches > 1) {
        QCOMPARE(test::difference(before, world.chosenTree()), QStringList());
        QCOMPARE(world.server.count("DELE") + world.server.count("RMD"), 0);
    }
    if (files < 1000) { // the rest by hand
        QVERIFY(world.connect());
        bool ok = true;
        world.engine.operations.ftGetFold(world.chosen(), QStringLiteral("d0"), pub, ok);
        ok = true;
        world.engine.operations.ftRemDir(pub, QStringLiteral("d0"), ok);
        QVERIFY(!world.engine.person.outcomes(Outcome::Kind::GivenUp).empty() || branches == 1);
    }
    QVERIFY2(memory.grown() < 96 * mebi, qPrintable(QString::number(memory.grown() / mebi)));
    QVERIFY(world.server.count("MLSD") < 2500);
    QCOMPARE(world.broken(180'000), QString());
}

void tst_HostileListings::linksAreNoFolders()
{
    HostileWorld world(smallLimits());
    world.server.setRawListing("/pub", "type=OS.unix=slink:/;size=4;modify=20260102030405; loop\r\n"
                                       "type=OS.unix=symlink;modify=20260102030405; other\r\n");
    QVERIFY(world.start());
    QVERIFY(world.connect());
    world.engine.cache.caRefresh(pub);
    QCOMPARE(world.cached(pub), (QStringList{QStringLiteral("loop"), QStringLiteral("other")}));
    QCOMPARE(world.server.count("MLSD"), 1);
    bool ok = true;
    world.engine.operations.ftGetFold(world.around(), QStringLiteral("pub"), QStringLiteral("/"),
                                      ok);
    for (const auto &[path, item] : world.chosenTree())
        QVERIFY(!path.startsWith("loop/") && !path.startsWith("other/"));
    QCOMPARE(world.broken(8000), QString());
}

void tst_HostileListings::longFolderNamesAreNotEntered()
{
    HostileWorld world(smallLimits());
    world.server.on("MLSD").data(folderLine(QByteArray(300, 'd')) + folderLine("x"));
    QVERIFY(world.start());
    QVERIFY(world.connect());
    world.engine.cache.caRefresh(pub);
    for (const QByteArray &command : world.server.commands())
        QVERIFY2(!command.contains(QByteArray(300, 'd')), command.constData());
    QVERIFY(doubt(world).contains(QString(200, QLatin1Char('d'))));
    QCOMPARE(world.broken(20'000), QString());
}

void tst_HostileListings::sizes_data()
{
    QTest::addColumn<QByteArray>("size");
    QTest::addColumn<bool>("shown");
    const auto row = [](const char *size, bool shown) {
        QTest::newRow(*size == '\0' ? "empty" : size) << QByteArray(size) << shown;
    };
    row("0", true);
    row("2147483646", true);
    row("2147483647", false); // the row counts one more
    row("4294967296", false);
    row("9223372036854775807", false);
    row("9223372036854775808", false);
    row("1000000000000000000000000000000", false);
    row("-1", false);
    row("-9223372036854775808", false);
    row("+4", false);
    row("4 ", false);
    row("0x4", false);
    row("4e3", false);
    row("", false);
    row("NaN", false);
}

/// What cannot be a size leaves its entry out and the directory in doubt.
void tst_HostileListings::sizes()
{
    QFETCH(QByteArray, size);
    QFETCH(bool, shown);
    HostileWorld world(smallLimits());
    world.server.setRawListing("/pub", "type=file;size=" + size +
                                           ";modify=20260102030405; evil\r\n" +
                                           fileLine("good.txt"));
    QVERIFY(world.start());
    const TreeSnapshot before = world.chosenTree();
    (void)world.engine.batch().RunSyncPattern(QStringLiteral("pattern"), false);
    QCOMPARE(world.cached(pub).contains(QStringLiteral("evil")), shown);
    QCOMPARE(doubt(world).isEmpty(), shown);
    if (!shown)
        QCOMPARE(test::difference(before, world.chosenTree()), QStringList());
    // Four bytes come: fewer than shown are a part; more are what it has grown to.
    QCOMPARE(world.chosenTree().count("evil"), size_t(size == "0" ? 1 : 0));
    QCOMPARE(world.broken(20'000), QString());
}

void tst_HostileListings::times_data()
{
    QTest::addColumn<QByteArray>("time");
    for (const char *time :
         {"00000101000000", "00010101000000", "16001231235959", "16010101000000", "18991230000000",
          "19691231235959", "99991231235959", "9999912312359", "999990101000000", "20261301000000",
          "20260230000000", "20260102250000", "20260102030460", "-0260102030405", "", "now",
          "20260102030405.99999999999999999999999999999", "19126010203040"})
        QTest::newRow(*time == '\0' ? "empty" : time) << QByteArray(time);
}

void tst_HostileListings::times()
{
    QFETCH(QByteArray, time);
    HostileWorld world(smallLimits());
    world.server.setRawListing("/pub", "type=file;size=4;modify=" + time + "; evil\r\n" +
                                           "type=dir;modify=" + time + "; folder\r\n");
    world.server.setRawListing("/pub/folder", "type=file;size=4;modify=" + time + "; evil\r\n");
    QVERIFY(world.start());
    const int left = world.engine.batch().RunSyncPattern(QStringLiteral("pattern"), false);
    const TreeSnapshot tree = world.chosenTree();
    if (left == 0) {
        QVERIFY(tree.count("evil") == 1 && tree.at("evil").bytes == "evil");
        QVERIFY(tree.count("folder/evil") == 1);
    } else {
        QVERIFY(world.said().contains(QStringLiteral("evil")));
    }
    // What came does not come again, and up nothing is left that nobody asked for.
    (void)world.engine.batch().RunSyncPattern(QStringLiteral("pattern"), true);
    QCOMPARE(test::difference(tree, world.chosenTree()), QStringList());
    QCOMPARE(world.broken(20'000), QString());
}

void tst_HostileListings::facts_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("no facts") << QByteArray(" evil");
    QTest::newRow("no name") << QByteArray("type=file;size=4; ");
    QTest::newRow("no blank") << QByteArray("type=file;size=4;evil");
    QTest::newRow("thousands") << QByteArray("x=y;").repeated(10'000) + "type=file;size=4; evil";
    QTest::newRow("a fact of 60 KiB") << "x=" + QByteArray(60'000, 'y') + ";type=file;size=4; evil";
    QTest::newRow("twice") << QByteArray("type=dir;type=file;size=4;size=5; evil");
    QTest::newRow("a file that is a folder") << QByteArray("type=dir;size=4; evil");
    QTest::newRow("a folder of itself") << QByteArray("type=cdir; evil");
    QTest::newRow("a link to itself") << QByteArray("type=OS.unix=slink:evil; evil");
    QTest::newRow("a link to a command") << QByteArray("type=OS.unix=slink:|sh; evil");
    QTest::newRow("an unknown type") << QByteArray("type=os.evil=x;size=4; evil");
    QTest::newRow("a character set") << QByteArray("charset=UTF-7;type=file;size=4; +evil-");
    QTest::newRow("only semicolons") << QByteArray(";;;;;;;; evil");
    QTest::newRow("a statement") << QByteArray("type=file;size=4';drop table msSite; evil");
    QTest::newRow("NULs") << QByteArray("type=file;\0size=4; evil", 23);
}

void tst_HostileListings::facts()
{
    QFETCH(QByteArray, line);
    HostileWorld world(smallLimits());
    world.server.setRawListing("/pub", line + "\r\n" + fileLine("good.txt"));
    QVERIFY(world.start());
    (void)world.engine.batch().RunSyncPattern(QStringLiteral("pattern"), false);
    const QStringList cached = world.cached(pub);
    QVERIFY(cached.contains(QStringLiteral("good.txt")));
    if (cached.size() == 1 && !line.contains("cdir"))
        QVERIFY(!doubt(world).isEmpty());
    if (!doubt(world).isEmpty())
        QVERIFY(world.chosenTree().count("keep.txt") == 1);
    QCOMPARE(world.broken(20'000), QString());
}

QTEST_GUILESS_MAIN(tst_HostileListings)
#include "tst_HostileListings.moc"
