#include <QTest>

#include "sync/SyncReview.h"
#include "sync/WorkTables.h"

using namespace venlo;
using venlo::test::rowOf;
using venlo::test::WorkTables;

namespace
{
const QString early = QStringLiteral("24/05/06 07:08");
const QString add = QStringLiteral("追加");
const QString removal = QStringLiteral("削除");
const QString compare = QStringLiteral("比較");
const QString pub = QStringLiteral("/pub");
} // namespace

/// Rows that a synchronisation must keep its hands off, and rows that need a person's word.
class tst_HeldRows : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void rowsUnderABlockedFolder();
    void aWholeFolderThatHoldsABlockedItem();
    void blockedRowsCannotBeTicked();
    void blockedRowsWithoutAnActionAreNotLeftOver();
    void dotNamesOfADownload_data();
    void dotNamesOfADownload();
    void dotNamesOfAnUploadAreOrdinary();
    void aHeldDotNameIsNotLeftOver();
    void theServersRoot_data();
    void theServersRoot();
    void anUnfinishedUploadIsSentAgain_data();
    void anUnfinishedUploadIsSentAgain();
    void aFolderOfMixedRows_data();
    void aFolderOfMixedRows();
    void tickingAllLeavesHeldRowsAlone();
    void aWholeFolderOfTheServersRoot();
    void rowsOfASiblingFolder();
};

void tst_HeldRows::rowsUnderABlockedFolder()
{
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, early, compare);
    tables.addFolder(QStringLiteral("/x"), early, early, compare);
    tables.addFile(QStringLiteral("/x"), QStringLiteral("gone"), {early, 1}, {}, removal);
    tables.addFile(QStringLiteral("/x"), QStringLiteral("new"), {}, {early, 1}, add);
    tables.addFile(QStringLiteral("."), QStringLiteral("free"), {}, {early, 1}, add);
    tables.addFolder(QStringLiteral("/x/old"), early, QString(), removal);
    ComparisonResult comparison = WorkTables::compared(true, pub);
    comparison.blocks.add(QStringLiteral("/X"), QStringLiteral("broken"));
    const SyncReview review = tables.review(comparison);
    for (const char *path : {"/x/gone", "/x/new", "/x/old/"}) {
        const int row = rowOf(review, QString::fromLatin1(path));
        QVERIFY2(!review.row(row).box && !review.row(row).ticked, path);
        QVERIFY2(!review.pending(row), path);
        QCOMPARE(review.row(row).why, QStringLiteral("broken"));
        QCOMPARE(review.actionText(row), QStringLiteral("対象外"));
    }
    QVERIFY(review.pending(rowOf(review, QStringLiteral("/free"))));
    QCOMPARE(review.counts().held, 3);
    QVERIFY(review.leftOver());
}

void tst_HeldRows::aWholeFolderThatHoldsABlockedItem()
{
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, early, compare);
    tables.addFolder(QStringLiteral("/a"), QString(), early, removal);
    tables.addFile(QStringLiteral("/a"), QStringLiteral("f"), {}, {early, 1}, removal);
    tables.addFolder(QStringLiteral("/a/b"), QString(), early, removal);
    tables.addFolder(QStringLiteral("/c"), QString(), early, removal);
    ComparisonResult comparison = WorkTables::compared(false, pub);
    comparison.blocks.add(QStringLiteral("/a/b"), QStringLiteral("broken"));
    const SyncReview review = tables.review(comparison);
    const int folder = rowOf(review, QStringLiteral("/a/"));
    QVERIFY(review.row(folder).hold == Hold::Blocked);
    QVERIFY(!review.included(rowOf(review, QStringLiteral("/a/f"))));
    QVERIFY(review.pending(rowOf(review, QStringLiteral("/c/"))));
}

void tst_HeldRows::blockedRowsCannotBeTicked()
{
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, early, compare);
    tables.addFile(QStringLiteral("."), QStringLiteral("x"), {early, 1}, {}, removal);
    ComparisonResult comparison = WorkTables::compared(true, pub);
    comparison.blocks.add(QStringLiteral("/x"), QStringLiteral("broken"));
    SyncReview review = tables.review(comparison, {true, false});
    review.setTicked(1, true);
    review.tickAll(Action::Remove, true);
    review.setChCmp(0, false);
    QVERIFY(!review.row(1).ticked);
    QVERIFY(!review.pending(1));
    QVERIFY(!review.included(1));
}

void tst_HeldRows::blockedRowsWithoutAnActionAreNotLeftOver()
{
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, early, compare);
    tables.addFile(QStringLiteral("."), QStringLiteral("x"), {early, 10}, {early, 10}, compare);
    ComparisonResult comparison = WorkTables::compared(true, pub);
    comparison.blocks.add(QStringLiteral("/x"), QStringLiteral("differs in case"));
    const SyncReview review = tables.review(comparison);
    QVERIFY(!review.leftOver());
    QCOMPARE(review.actionText(1), QString());
}

void tst_HeldRows::dotNamesOfADownload_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("ticked");
    QTest::newRow("a file") << QStringLiteral("/.htaccess") << false;
    QTest::newRow("a folder") << QStringLiteral("/.git/") << false;
    QTest::newRow("a file in a folder that stays") << QStringLiteral("/both/.keep") << false;
    QTest::newRow("a folder that holds one") << QStringLiteral("/holds/") << false;
    QTest::newRow("a folder that holds one further down") << QStringLiteral("/deep/") << false;
    QTest::newRow("a folder that holds none") << QStringLiteral("/plain/") << true;
    QTest::newRow("an ordinary file") << QStringLiteral("/gone.txt") << true;
    QTest::newRow("one that both sides have and that differs") << QStringLiteral("/.both") << true;
    QTest::newRow("one that only the server has") << QStringLiteral("/.server") << true;
}

void tst_HeldRows::dotNamesOfADownload()
{
    QFETCH(QString, path);
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, early, compare);
    tables.addFile(QStringLiteral("."), QStringLiteral(".htaccess"), {early, 1}, {}, removal);
    tables.addFile(QStringLiteral("."), QStringLiteral(".both"), {early, 1}, {early, 9}, compare);
    tables.addFile(QStringLiteral("."), QStringLiteral(".server"), {}, {early, 9}, add);
    tables.addFile(QStringLiteral("."), QStringLiteral("gone.txt"), {early, 1}, {}, removal);
    tables.addFolder(QStringLiteral("/.git"), early, QString(), removal);
    tables.addFolder(QStringLiteral("/both"), early, early, compare);
    tables.addFile(QStringLiteral("/both"), QStringLiteral(".keep"), {early, 1}, {}, removal);
    tables.addFolder(QStringLiteral("/holds"), early, QString(), removal);
    tables.addFile(QStringLiteral("/holds"), QStringLiteral(".keep"), {early, 1}, {}, removal);
    tables.addFolder(QStringLiteral("/deep"), early, QString(), removal);
    tables.addFolder(QStringLiteral("/deep/a"), early, QString(), removal);
    tables.addFolder(QStringLiteral("/deep/a/.svn"), early, QString(), removal);
    tables.addFolder(QStringLiteral("/plain"), early, QString(), removal);
    SyncReview review = tables.review(WorkTables::compared(true, pub));
    const int row = rowOf(review, path);
    QVERIFY(row > 0);
    QVERIFY(review.row(row).box);
    QTEST(review.row(row).ticked, "ticked");
    review.setTicked(row, true);
    QVERIFY2(review.pending(row), "a person may");
}

void tst_HeldRows::dotNamesOfAnUploadAreOrdinary()
{
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, early, compare);
    tables.addFile(QStringLiteral("."), QStringLiteral(".htaccess"), {}, {early, 1}, removal);
    const SyncReview review = tables.review(WorkTables::compared(false, pub));
    QVERIFY(review.row(1).ticked);
}

void tst_HeldRows::aHeldDotNameIsNotLeftOver()
{
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, early, compare);
    tables.addFile(QStringLiteral("."), QStringLiteral(".htaccess"), {early, 1}, {}, removal);
    QVERIFY(!tables.review(WorkTables::compared(true, pub)).leftOver());
    tables.addFolder(QStringLiteral("/holds"), early, QString(), removal);
    tables.addFile(QStringLiteral("/holds"), QStringLiteral(".keep"), {early, 1}, {}, removal);
    QVERIFY2(tables.review(WorkTables::compared(true, pub)).leftOver(),
             "the ordinary files of that folder stay too");
}

void tst_HeldRows::theServersRoot_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("ticked");
    QTest::addColumn<bool>("box");
    QTest::newRow("a file in the root") << QStringLiteral("/top.txt") << true << true;
    QTest::newRow("a first-level folder") << QStringLiteral("/new/") << true << true;
    QTest::newRow("a file of a first-level folder")
        << QStringLiteral("/both/mine.txt") << false << true;
    QTest::newRow("a file of both sides") << QStringLiteral("/both/x.txt") << false << false;
    QTest::newRow("its other row") << QStringLiteral("both/x.txt") << false << false;
    QTest::newRow("a deeper folder of both sides")
        << QStringLiteral("/both/sub/") << false << false;
    QTest::newRow("its other row, cut without its slash")
        << QStringLiteral("both/sub/") << false << false;
    QTest::newRow("a deeper folder of the server") << QStringLiteral("both/old/") << false << true;
}

void tst_HeldRows::theServersRoot()
{
    QFETCH(QString, path);
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, QString(), add);
    tables.addFile(QStringLiteral("."), QStringLiteral("top.txt"), {early, 1}, {}, add);
    tables.addFolder(QStringLiteral("/both"), early, early, compare);
    tables.addFile(QStringLiteral("/both"), QStringLiteral("x.txt"), {early, 1}, {}, add);
    tables.addFile(QStringLiteral("/both"), QStringLiteral("mine.txt"), {early, 1}, {}, add);
    tables.addFolder(QStringLiteral("both"), QString(), early, compare);
    tables.addFolder(QStringLiteral("both/old"), QString(), early, removal);
    tables.addFile(QStringLiteral("both"), QStringLiteral("x.txt"), {}, {early, 2}, removal);
    tables.addFolder(QStringLiteral("/both/sub"), early, QString(), add);
    tables.addFolder(QStringLiteral("both/sub"), QString(), early, removal);
    tables.addFolder(QStringLiteral("/new"), early, QString(), add);
    tables.addFile(QStringLiteral("/new"), QStringLiteral("n.txt"), {early, 1}, {}, add);
    const SyncReview review = tables.review(WorkTables::compared(false, QStringLiteral("/")));
    const int row = rowOf(review, path);
    QVERIFY(row > 0);
    QTEST(review.row(row).ticked, "ticked");
    QTEST(review.row(row).box, "box");
    QVERIFY2(!review.row(0).box, "the root row is only compared, whatever its mark");
    QVERIFY(review.included(rowOf(review, QStringLiteral("/new/n.txt"))));
    QVERIFY(review.leftOver());
}

void tst_HeldRows::anUnfinishedUploadIsSentAgain_data()
{
    QTest::addColumn<QString>("mark");
    QTest::addColumn<bool>("down");
    QTest::addColumn<bool>("noted");
    QTest::addColumn<bool>("ticked");
    QTest::newRow("up, cut") << compare << false << true << true;
    QTest::newRow("up, whole") << compare << false << false << false;
    QTest::newRow("down, cut") << compare << true << true << false;
}

void tst_HeldRows::anUnfinishedUploadIsSentAgain()
{
    QFETCH(QString, mark);
    QFETCH(bool, down);
    QFETCH(bool, noted);
    QFETCH(bool, ticked);
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, early, compare);
    tables.addFolder(QStringLiteral("/a"), early, early, compare);
    tables.addFile(QStringLiteral("/a"), QStringLiteral("X"), {early, 100}, {early, 99}, mark);
    ComparisonResult comparison = WorkTables::compared(down, pub);
    if (noted)
        comparison.unfinished.insert(QStringLiteral("/a/x"));
    const SyncReview review = tables.review(comparison);
    const int row = rowOf(review, QStringLiteral("/a/X"));
    QCOMPARE(review.row(row).ticked, ticked);
    QCOMPARE(review.actionText(row), ticked ? QStringLiteral("(上書)") : QString());
}

void tst_HeldRows::aFolderOfMixedRows_data()
{
    QTest::addColumn<QString>("inside");
    QTest::addColumn<bool>("pending");
    QTest::newRow("all of one kind") << removal << true;
    QTest::newRow("one that both sides have") << compare << false;
    QTest::newRow("one that only the other side has") << add << false;
}

void tst_HeldRows::aFolderOfMixedRows()
{
    QFETCH(QString, inside);
    QFETCH(bool, pending);
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, early, compare);
    tables.addFolder(QStringLiteral("/old"), early, QString(), removal);
    tables.addFolder(QStringLiteral("/old/in"), early, QString(), removal);
    tables.addFile(QStringLiteral("/old/in"), QStringLiteral("x"), {early, 1}, {early, 1}, inside);
    tables.addFile(QStringLiteral("/old"), QStringLiteral("y"), {early, 1}, {}, removal);
    const SyncReview review = tables.review(WorkTables::compared(true, pub));
    QCOMPARE(review.pending(rowOf(review, QStringLiteral("/old/"))), pending);
    QCOMPARE(review.leftOver(), true);
    QCOMPARE(review.row(rowOf(review, QStringLiteral("/old/"))).hold == Hold::Blocked, !pending);
}

void tst_HeldRows::tickingAllLeavesHeldRowsAlone()
{
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, early, compare);
    tables.addFile(QStringLiteral("."), QStringLiteral(".htaccess"), {early, 1}, {}, removal);
    tables.addFile(QStringLiteral("."), QStringLiteral("gone"), {early, 1}, {}, removal);
    SyncReview review = tables.review(WorkTables::compared(true, pub));
    review.tickAll(Action::Remove, true);
    QVERIFY(!review.row(rowOf(review, QStringLiteral("/.htaccess"))).ticked);
    QVERIFY(review.row(rowOf(review, QStringLiteral("/gone"))).ticked);
    review.setTicked(rowOf(review, QStringLiteral("/.htaccess")), true);
    review.tickAll(Action::Remove, false);
    QVERIFY2(!review.row(rowOf(review, QStringLiteral("/.htaccess"))).ticked, "off takes all");
}

void tst_HeldRows::aWholeFolderOfTheServersRoot()
{
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, early, compare);
    tables.addFolder(QStringLiteral("/new"), early, QString(), add);
    tables.addFolder(QStringLiteral("/old"), QString(), early, removal);
    SyncReview review = tables.review(WorkTables::compared(false, QStringLiteral("/")));
    QVERIFY(review.row(rowOf(review, QStringLiteral("/new/"))).ticked);
    const int old = rowOf(review, QStringLiteral("/old/"));
    QVERIFY2(!review.row(old).ticked, "it would take the levels below with it");
    QVERIFY(review.row(old).hold == Hold::NotUnattended);
}

void tst_HeldRows::rowsOfASiblingFolder()
{
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, early, compare);
    tables.addFolder(QStringLiteral("lic/x"), QString(), early, removal);
    const SyncReview review = tables.review(WorkTables::compared(false, pub));
    QVERIFY(review.row(1).hold == Hold::Blocked);
}

QTEST_APPLESS_MAIN(tst_HeldRows)
#include "tst_HeldRows.moc"
