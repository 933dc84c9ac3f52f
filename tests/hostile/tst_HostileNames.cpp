// Names that a server shows to lead the client out of its folder, into another command or into
// another statement: whatever is done with them stays in the chosen folder, below the remote
// directory, and in the rows of the site.
#include "hostile/HostileNames.h"
#include "hostile/HostileWorld.h"
#include "shared/NameList.h"

#include <QTest>

#include <algorithm>

using namespace venlo;
using venlo::test::HostileName;
using venlo::test::HostileWorld;
using venlo::test::TreeSnapshot;

namespace
{
const QString pub = QStringLiteral("/pub");
constexpr int limitMs = 12'000;

QByteArray entry(bool mlsd, bool folder, const QByteArray &name)
{
    if (mlsd)
        return (folder ? "type=dir;modify=20260102030405; "
                       : "type=file;size=4;modify=20260102030405; ") +
               name + "\r\n";
    return (folder ? "drwxr-xr-x 2 u g 4096 Jan 02  2026 " : "-rw-r--r-- 1 u g 4 Jan 02  2026 ") +
           name + "\r\n";
}

/// The listing of "/pub": the name, and one that nobody could mind; in a folder of that name lies a
/// file.
void show(HostileWorld &world, bool mlsd, bool folder, const QByteArray &name)
{
    world.server.options().mlsd = mlsd;
    world.server.setRawListing("/", entry(mlsd, true, "pub"));
    world.server.setRawListing("/pub", entry(mlsd, folder, name) + entry(mlsd, false, "good.txt"));
    const QByteArray inside = test::ScriptedTree::resolve("/pub", name);
    if (inside != "/pub" && inside != "/")
        world.server.setRawListing(inside, entry(mlsd, false, "evil-inside.txt"));
}

/// Of the hostile name the part by which a person would find it.
QString marker(const QByteArray &name)
{
    return name.contains("evil") ? QStringLiteral("evil") : QString();
}
} // namespace

class tst_HostileNames : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { HostileWorld::useMemory(); }
    void init();
    void operations_data();
    void operations();
    void synchronisations_data();
    void synchronisations();
    void keepsRowsOfNeighbours_data();
    void keepsRowsOfNeighbours();
    void brokenStatementsNameTheName();
    void twoOfTheSame_data();
    void twoOfTheSame();
    void localNamesThatAreStatements_data();
    void localNamesThatAreStatements();

private:
    void browse(HostileWorld &world);
    void fetch(HostileWorld &world);
    void send(HostileWorld &world);
    void remove(HostileWorld &world);
    [[nodiscard]] QString names(HostileWorld &world, bool folders);
};

void tst_HostileNames::init()
{
    QVERIFY(!QFile::exists(QStringLiteral("/tmp/venlo-evil.txt")));
}

QString tst_HostileNames::names(HostileWorld &world, bool folders)
{
    QString folderNames;
    QString fileNames;
    world.engine.cache.cachedNames(pub, folderNames, fileNames);
    return folders ? folderNames : fileNames;
}

/// As the pane and the file list read it.
void tst_HostileNames::browse(HostileWorld &world)
{
    test::SyncWorld &engine = world.engine;
    QString folders;
    QString files;
    try {
        engine.cache.caDirList(pub, folders, files);
    } catch (const DbError &error) {
        engine.person.message(error.words());
    }
    for (const bool folder : {false, true}) {
        for (const QString &name : splitNames(names(world, folder))) {
            QString date;
            QString size;
            engine.cache.caEntInfo(pub, name, folder, date, size);
            QVERIFY2(!date.isEmpty(), qPrintable(name));
        }
    }
    (void)engine.cache.caHasSub(pub);
    (void)engine.cache.caFileNames(pub);
    (void)engine.cache.caSubFolds(pub);
}

void tst_HostileNames::fetch(HostileWorld &world)
{
    bool ok = true;
    world.engine.operations.ftGetFold(world.around(), QStringLiteral("pub"), QStringLiteral("/"),
                                      ok);
    ok = true;
    world.engine.operations.ftGetFile(pub, names(world, false), world.chosen(), ok);
    for (const QString &folder : splitNames(names(world, true))) {
        ok = true;
        world.engine.operations.ftGetFold(world.chosen(), folder, pub, ok);
    }
}

void tst_HostileNames::send(HostileWorld &world)
{
    const QString line = QStringLiteral("keep.txt\t26/01/02 03:04:05\t4");
    for (const QString &folder : splitNames(names(world, true))) {
        const QString dir = pub + QLatin1Char('/') + folder;
        bool ok = true;
        world.engine.operations.ftPutFile(dir, line, world.chosen(), ok);
        ok = true;
        world.engine.operations.ftPutFold(world.chosen(), QStringLiteral("inner"), dir, ok);
        ok = true;
        world.engine.operations.ftMakeDir(dir, QStringLiteral("new"), ok);
    }
}

void tst_HostileNames::remove(HostileWorld &world)
{
    bool ok = true;
    for (const bool folder : {false, true}) {
        for (const QString &name : splitNames(names(world, folder))) {
            ok = true;
            world.engine.operations.ftRename(pub, name, QStringLiteral("renamed"), folder, ok);
            ok = true;
            world.engine.operations.ftRename(pub, QStringLiteral("renamed"), name, folder, ok);
        }
    }
    ok = true;
    world.engine.operations.ftDelFile(pub, names(world, false), ok);
    ok = true;
    world.engine.operations.ftRemDir(pub, names(world, true), ok);
}

void tst_HostileNames::operations_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("refused");
    QTest::addColumn<bool>("folder");
    QTest::addColumn<bool>("mlsd");
    for (const HostileName &name : test::hostileNames()) {
        QTest::addRow("file: %s", name.what) << name.bytes << name.refused << false << true;
        QTest::addRow("folder: %s", name.what) << name.bytes << name.refused << true << true;
        QTest::addRow("LIST: %s", name.what) << name.bytes << name.refused << false << false;
    }
}

void tst_HostileNames::operations()
{
    QFETCH(QByteArray, name);
    QFETCH(bool, refused);
    QFETCH(bool, folder);
    QFETCH(bool, mlsd);
    HostileWorld world;
    show(world, mlsd, folder, name);
    QVERIFY(world.start());
    QVERIFY(world.connect());
    browse(world);
    const QStringList seen = world.cached(pub);
    const bool selfOrParent = name == "." || name == "..";
    if (refused)
        QVERIFY2(seen.size() <= 1, qPrintable(seen.join(QLatin1Char('|'))));
    // What is left out leaves the directory marked, and is named.
    if (seen.size() < 2 && !selfOrParent && !name.startsWith('.')) {
        QCOMPARE(world.engine.cache.incompleteUnder(pub).size(), size_t(1));
        if (name.size() < 60'000)
            QVERIFY(world.said().contains(marker(name)));
    }
    fetch(world);
    const TreeSnapshot tree = world.chosenTree();
    if (seen.contains(QStringLiteral("good.txt")))
        QVERIFY(tree.count("good.txt") == 1);
    QVERIFY(tree.at("keep.txt").bytes == "keep");
    // Every entry has come or was given up by its name.
    const auto givenUp = world.engine.person.outcomes(Outcome::Kind::GivenUp).size();
    if (seen.size() == 2)
        QVERIFY(tree.size() >= 5 || givenUp > 0);
    send(world);
    remove(world);
    QCOMPARE(world.broken(limitMs), QString());
    QVERIFY(!QFile::exists(QStringLiteral("/tmp/venlo-evil.txt")));
    QCOMPARE(world.engine.session.state(), Session::Connected);
}

void tst_HostileNames::synchronisations_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("folder");
    QTest::addColumn<bool>("up");
    for (const HostileName &name : test::hostileNames()) {
        QTest::addRow("down, file: %s", name.what) << name.bytes << false << false;
        QTest::addRow("up, file: %s", name.what) << name.bytes << false << true;
        QTest::addRow("down, folder: %s", name.what) << name.bytes << true << false;
        QTest::addRow("up, folder: %s", name.what) << name.bytes << true << true;
    }
}

void tst_HostileNames::synchronisations()
{
    QFETCH(QByteArray, name);
    QFETCH(bool, folder);
    QFETCH(bool, up);
    HostileWorld world;
    show(world, true, folder, name);
    QVERIFY(world.start());
    const TreeSnapshot before = world.chosenTree();
    const int left = world.engine.batch().RunSyncPattern(QStringLiteral("pattern"), up);
    const QStringList seen = world.cached(pub);
    const TreeSnapshot after = world.chosenTree();
    // MLSD's dot names are left out as LIST leaves them out, so that their absence is no doubt.
    const bool leftOut = name.startsWith('.') && !name.contains('/');
    const bool whole = seen.size() > 1 || leftOut;
    if (up)
        QCOMPARE(test::difference(before, after), QStringList());
    // Nothing is deleted that rests on a listing of which a part was refused.
    if (!whole || name.contains('\'')) {
        QVERIFY(left != 0);
        QVERIFY(after.count("keep.txt") == 1 && after.count("inner/keep.txt") == 1);
        QVERIFY(world.server.count("DELE") + world.server.count("RMD") == 0);
    }
    if (name.contains('\'') && seen.size() > 1) {
        QCOMPARE(test::difference(before, after), QStringList());
        QCOMPARE(world.server.count("RETR") + world.server.count("STOR"), 0);
        const QString told = world.engine.person.messages().join(QLatin1Char('\n'));
        QVERIFY2(told.contains(QString::fromUtf8("/pub/" + name)) &&
                     told.contains(QStringLiteral("名前に ' があるため比較できません")),
                 qPrintable(told));
        QVERIFY(world.engine.errorLogText().contains("ftSync Err SQL="));
    }
    QCOMPARE(world.broken(limitMs), QString());
    QVERIFY(!QFile::exists(QStringLiteral("/tmp/venlo-evil.txt")));
}

void tst_HostileNames::keepsRowsOfNeighbours_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const char *name : {"*", "?", "a*", "[a-z]", "[!a]", "#", "a?c", "%", "a'", "' Or ''='",
                             "_bc", "a\"c", "abc;", "ABC "})
        QTest::newRow(name) << QByteArray(name);
}

/// What is deleted or renamed takes its own rows along and no others, however its name reads as a
/// pattern.
void tst_HostileNames::keepsRowsOfNeighbours()
{
    QFETCH(QByteArray, name);
    HostileWorld world;
    QByteArray listing;
    for (const char *neighbour : {"zabc", "zaxc", "z1", "zb"})
        listing += entry(true, true, neighbour);
    world.server.setRawListing("/pub",
                               listing + entry(true, true, name) + entry(true, false, "z" + name));
    for (const char *neighbour : {"zabc", "zaxc", "z1", "zb"})
        world.server.setRawListing("/pub/" + QByteArray(neighbour), entry(true, false, "f.txt"));
    world.server.setRawListing("/pub/" + name, entry(true, false, "g.txt"));
    QVERIFY(world.start());
    QVERIFY(world.connect());
    world.engine.cache.caRefresh(pub);
    const QStringList neighbours{QStringLiteral("/pub/zabc"), QStringLiteral("/pub/zaxc"),
                                 QStringLiteral("/pub/z1"), QStringLiteral("/pub/zb")};
    const QString decoded = QString::fromUtf8(name);
    bool ok = true;
    world.engine.operations.ftRename(pub, decoded, QStringLiteral("other") + decoded, true, ok);
    world.engine.operations.ftRename(pub, QStringLiteral("other") + decoded, decoded, true, ok);
    world.engine.operations.ftDelFile(pub, QStringLiteral("z") + decoded, ok);
    world.engine.operations.ftRemDir(pub, decoded, ok);
    QVERIFY(ok);
    for (const QString &neighbour : neighbours)
        QCOMPARE(world.cached(neighbour), QStringList{QStringLiteral("f.txt")});
    const QStringList left = world.cached(pub);
    QCOMPARE(left, (QStringList{QStringLiteral("z1/"), QStringLiteral("zabc/"),
                                QStringLiteral("zaxc/"), QStringLiteral("zb/")}));
    QVERIFY(world.cached(pub + QLatin1Char('/') + decoded).isEmpty());
    QCOMPARE(world.broken(limitMs), QString());
}

/// Many of them: each is logged, some are shown, and how many there are.
void tst_HostileNames::brokenStatementsNameTheName()
{
    HostileWorld world;
    QByteArray listing;
    for (int i = 0; i < 300; ++i)
        listing += entry(true, i % 2 == 0, "evil' " + QByteArray::number(i));
    world.server.setRawListing("/pub", listing);
    QVERIFY(world.start());
    const TreeSnapshot before = world.chosenTree();
    QVERIFY(world.engine.batch().RunSyncPattern(QStringLiteral("pattern"), false) != 0);
    QCOMPARE(test::difference(before, world.chosenTree()), QStringList());
    const QString told = world.engine.person.messages().join(QLatin1Char('\n'));
    QVERIFY(told.contains(QStringLiteral("/pub/evil' 0")));
    QVERIFY(told.contains(QStringLiteral("(300)")));
    QVERIFY(told.size() < 2000);
    QCOMPARE(world.engine.errorLogText().count("ftSync Err SQL="), 300);
    QCOMPARE(world.broken(limitMs), QString());
}

void tst_HostileNames::twoOfTheSame_data()
{
    QTest::addColumn<QByteArray>("one");
    QTest::addColumn<QByteArray>("other");
    QTest::addColumn<bool>("apart"); // two rows, two files
    QTest::newRow("the same") << QByteArray("twin.txt") << QByteArray("twin.txt") << false;
    QTest::newRow("letter case") << QByteArray("twin.txt") << QByteArray("TWIN.txt") << false;
    QTest::newRow("letter case of Greek") << QByteArray("σ.txt") << QByteArray("ς.txt") << false;
    QTest::newRow("normal forms") << QByteArray("\xc3\xa9.txt") << QByteArray("e\xcc\x81.txt")
                                  << true;
    QTest::newRow("voiced katakana")
        << QByteArray("ガ.txt") << QByteArray("カ\xe3\x82\x99.txt") << true;
    QTest::newRow("encodings") << QByteArray("\xe3\x81\x82.txt") << QByteArray("\x82\xa0.txt")
                               << false;
    QTest::newRow("a blank at the end") << QByteArray("twin") << QByteArray("twin ") << true;
    QTest::newRow("a mark") << QByteArray("twin") << QByteArray("\xef\xbb\xbftwin") << true;
}

/// One row for both means that nothing is deleted by it; two rows are two files here as well.
void tst_HostileNames::twoOfTheSame()
{
    QFETCH(QByteArray, one);
    QFETCH(QByteArray, other);
    QFETCH(bool, apart);
    HostileWorld world;
    // Of a size whose row, one more, is no reason to fetch it again.
    const QByteArray content(20, '1');
    const QByteArray otherContent(20, '2');
    QByteArray listing = entry(true, false, one) + entry(true, false, other);
    world.server.setRawListing("/pub", listing.replace("size=4", "size=20"));
    world.server.put("/pub/" + one, content);
    world.server.put("/pub/" + other, otherContent);
    QVERIFY(world.start());
    const int left = world.engine.batch().RunSyncPattern(QStringLiteral("pattern"), false);
    const TreeSnapshot tree = world.chosenTree();
    QCOMPARE(world.cached(pub).size(), apart ? 2 : 1);
    QCOMPARE(left == 0, apart);
    QCOMPARE(tree.count("keep.txt"), size_t(apart ? 0 : 1));
    if (apart) {
        QCOMPARE(tree.at(one).bytes, content);
        QCOMPARE(tree.at(other).bytes, otherContent);
        // And the next comparison sees the same two.
        const int fetched = world.server.count("RETR");
        QCOMPARE(world.engine.batch().RunSyncPattern(QStringLiteral("pattern"), false), 0);
        QCOMPARE(world.server.count("RETR"), fetched);
        QCOMPARE(test::difference(tree, world.chosenTree()), QStringList());
    }
    QCOMPARE(world.broken(limitMs), QString());
}

void tst_HostileNames::localNamesThatAreStatements_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::newRow("a file") << QByteArray("evil' Or '1'='1.txt");
    QTest::newRow("a folder") << QByteArray("evil'; Drop Table msSite;/x.txt");
}

/// The other side's names break statements the same way.
void tst_HostileNames::localNamesThatAreStatements()
{
    QFETCH(QByteArray, path);
    HostileWorld world;
    world.server.setRawListing("/pub", entry(true, false, "good.txt"));
    QVERIFY(test::makeTree(world.chosen(), {{path, "x"}}));
    QVERIFY(world.start());
    const TreeSnapshot before = world.chosenTree();
    for (const bool up : {false, true})
        QVERIFY(world.engine.batch().RunSyncPattern(QStringLiteral("pattern"), up) != 0);
    QCOMPARE(test::difference(before, world.chosenTree()), QStringList());
    QCOMPARE(world.server.count("STOR") + world.server.count("DELE"), 0);
    QVERIFY(world.said().contains(QStringLiteral("evil'")));
    QVERIFY(world.engine.errorLogText().contains("sySync Err"));
    QCOMPARE(world.broken(limitMs), QString());
}

QTEST_GUILESS_MAIN(tst_HostileNames)
#include "tst_HostileNames.moc"
