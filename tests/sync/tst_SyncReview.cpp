#include "sync/SyncReview.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTest>

#include "sync/WorkTables.h"

using namespace venlo;
using venlo::test::rowOf;
using venlo::test::WorkTables;

namespace
{
const QString early = QStringLiteral("24/05/06 07:08");
const QString late = QStringLiteral("24/05/06 07:09");
const QString add = QStringLiteral("追加");
const QString removal = QStringLiteral("削除");
const QString compare = QStringLiteral("比較");

/// Up: one file of every kind, a new folder with a folder and files below, an old one likewise.
void fillUp(WorkTables &tables)
{
    tables.addFolder(QStringLiteral("."), early, early, compare);
    tables.addFile(QStringLiteral("."), QStringLiteral("equal.txt"), {early, 100}, {early, 101},
                   compare);
    tables.addFile(QStringLiteral("."), QStringLiteral("gone.txt"), {}, {early, 10}, removal);
    tables.addFile(QStringLiteral("."), QStringLiteral("new.txt"), {early, 7}, {}, add);
    tables.addFile(QStringLiteral("."), QStringLiteral("newer.txt"), {late, 100}, {early, 101},
                   compare);
    tables.addFolder(QStringLiteral("/both"), early, early, compare);
    tables.addFile(QStringLiteral("/both"), QStringLiteral("in.txt"), {early, 5}, {}, add);
    tables.addFolder(QStringLiteral("/fresh"), early, QString(), add);
    tables.addFile(QStringLiteral("/fresh"), QStringLiteral("f.txt"), {early, 11}, {}, add);
    tables.addFolder(QStringLiteral("/fresh/sub"), early, QString(), add);
    tables.addFile(QStringLiteral("/fresh/sub"), QStringLiteral("s.txt"), {early, 13}, {}, add);
    tables.addFolder(QStringLiteral("/old"), QString(), early, removal);
    tables.addFile(QStringLiteral("/old"), QStringLiteral("o.txt"), {}, {early, 17}, removal);
}
} // namespace

/// The plan of a synchronisation: rows, actions, ticks.
class tst_SyncReview : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void rowsInOrder();
    void masterSideComesFirst();
    void boxes_data();
    void boxes();
    void coveredRowsFollowTheirFolder();
    void tickingDerivesTheAction();
    void overwriteAllBox();
    void foldersOutOfScope();
    void handMadeTickSurvives();
    void nothingIsWrittenToTheRegistry();
    void visibleRows_data();
    void visibleRows();
    void tickAll();
    void counts();
    void marks();
    void givenUpIsLeftOver();
    void whatAPersonLeftOutIsNotLeftOver();
    void pathsFollowEachSidesSpelling();
    void foldersSortedBehindABlank();
    void manyRowsStayFast();
};

void tst_SyncReview::rowsInOrder()
{
    WorkTables tables;
    fillUp(tables);
    const SyncReview review = tables.review(WorkTables::compared(false, QStringLiteral("/pub")));
    QCOMPARE(review.print(), QStringLiteral("    ./\n"
                                            "[ ] /equal.txt\n"
                                            "[x] /gone.txt (削除)\n"
                                            "[x] /new.txt (追加)\n"
                                            "[x] /newer.txt (上書)\n"
                                            "    /both/\n"
                                            "[x] /both/in.txt (追加)\n"
                                            "[x] /fresh/ (追加)\n"
                                            "    /fresh/f.txt (追加)\n"
                                            "    /fresh/sub/ *\n"
                                            "    /fresh/sub/s.txt (追加)\n"
                                            "[x] /old/ (削除)\n"
                                            "    /old/o.txt (削除)\n"));
}

void tst_SyncReview::masterSideComesFirst()
{
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, late, compare);
    tables.addFile(QStringLiteral("."), QStringLiteral("x"), {early, 1}, {late, 2}, compare);
    const SyncReview up = tables.review(WorkTables::compared(false, QStringLiteral("/pub")));
    QCOMPARE(up.row(0).master.time, early);
    QCOMPARE(up.row(1).master.time, early);
    QCOMPARE(up.row(1).master.size, 1);
    QCOMPARE(up.row(1).other.size, 2);
    const SyncReview down = tables.review(WorkTables::compared(true, QStringLiteral("/pub")));
    QCOMPARE(down.row(0).master.time, late);
    QCOMPARE(down.row(1).master.time, late);
    QCOMPARE(down.row(1).master.size, 2);
    QCOMPARE(down.row(1).other.time, early);
}

void tst_SyncReview::boxes_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("box");
    QTest::addColumn<bool>("ticked");
    QTest::newRow("the roots: none") << QStringLiteral("./") << false << false;
    QTest::newRow("a compared folder: none") << QStringLiteral("/both/") << false << false;
    QTest::newRow("a folder below a new one: none")
        << QStringLiteral("/fresh/sub/") << false << false;
    QTest::newRow("a file of a new folder: none")
        << QStringLiteral("/fresh/f.txt") << false << false;
    QTest::newRow("a file below a new folder: none")
        << QStringLiteral("/fresh/sub/s.txt") << false << false;
    QTest::newRow("a file of an old folder: none")
        << QStringLiteral("/old/o.txt") << false << false;
    QTest::newRow("a new folder: ticked") << QStringLiteral("/fresh/") << true << true;
    QTest::newRow("an old folder: ticked") << QStringLiteral("/old/") << true << true;
    QTest::newRow("a new file: ticked") << QStringLiteral("/new.txt") << true << true;
    QTest::newRow("a file to delete: ticked") << QStringLiteral("/gone.txt") << true << true;
    QTest::newRow("an overwrite that stands: ticked")
        << QStringLiteral("/newer.txt") << true << true;
    QTest::newRow("a cleared overwrite: not ticked")
        << QStringLiteral("/equal.txt") << true << false;
    QTest::newRow("a file of a compared folder: ticked")
        << QStringLiteral("/both/in.txt") << true << true;
}

void tst_SyncReview::boxes()
{
    QFETCH(QString, path);
    WorkTables tables;
    fillUp(tables);
    const SyncReview review = tables.review(WorkTables::compared(false, QStringLiteral("/pub")));
    const int row = rowOf(review, path);
    QVERIFY(row >= 0);
    QTEST(review.row(row).box, "box");
    QTEST(review.row(row).ticked, "ticked");
}

void tst_SyncReview::coveredRowsFollowTheirFolder()
{
    WorkTables tables;
    fillUp(tables);
    SyncReview review = tables.review(WorkTables::compared(false, QStringLiteral("/pub")));
    const int folder = rowOf(review, QStringLiteral("/fresh/"));
    const int file = rowOf(review, QStringLiteral("/fresh/sub/s.txt"));
    QVERIFY(review.included(file));
    review.setTicked(file, false);
    QVERIFY(review.included(file));
    review.setTicked(folder, false);
    QVERIFY(!review.included(file));
    QCOMPARE(review.actionText(file), QString());
    QCOMPARE(review.actionText(folder), QString());
    QCOMPARE(review.actionText(rowOf(review, QStringLiteral("/fresh/sub/"))), QStringLiteral("*"));
    QVERIFY(!review.pending(folder));
}

void tst_SyncReview::tickingDerivesTheAction()
{
    WorkTables tables;
    fillUp(tables);
    SyncReview review = tables.review(WorkTables::compared(false, QStringLiteral("/pub")));
    const int equal = rowOf(review, QStringLiteral("/equal.txt"));
    QCOMPARE(review.actionText(equal), QString());
    review.setTicked(equal, true);
    QCOMPARE(review.actionText(equal), QStringLiteral("(上書)"));
    QVERIFY(review.plannedAction(equal) == Action::Overwrite);
    review.setTicked(equal, false);
    QCOMPARE(review.actionText(equal), QString());
}

void tst_SyncReview::overwriteAllBox()
{
    WorkTables tables;
    fillUp(tables);
    SyncReview review =
        tables.review(WorkTables::compared(false, QStringLiteral("/pub")), {true, false});
    const int equal = rowOf(review, QStringLiteral("/equal.txt"));
    QVERIFY(review.chCmp(0));
    QVERIFY(review.row(equal).ticked);
    review.setChCmp(0, false);
    QVERIFY(!review.row(equal).ticked);
    QVERIFY(review.row(rowOf(review, QStringLiteral("/newer.txt"))).ticked);
}

void tst_SyncReview::foldersOutOfScope()
{
    WorkTables tables;
    fillUp(tables);
    tables.addFolder(QStringLiteral("/both/deep"), QString(), early, removal);
    SyncReview review =
        tables.review(WorkTables::compared(false, QStringLiteral("/pub")), {false, true});
    const int fresh = rowOf(review, QStringLiteral("/fresh/"));
    const int old = rowOf(review, QStringLiteral("/old/"));
    QCOMPARE(review.actionText(fresh), QStringLiteral("対象外"));
    QCOMPARE(review.actionText(old), QStringLiteral("対象外"));
    QVERIFY(review.row(old).box && !review.row(old).ticked);
    QVERIFY(!review.included(rowOf(review, QStringLiteral("/old/o.txt"))));
    QCOMPARE(review.actionText(rowOf(review, QStringLiteral("/both/deep/"))),
             QStringLiteral("(削除)"));
    review.setTicked(old, true);
    QCOMPARE(review.actionText(old), QStringLiteral("(削除)"));
    QVERIFY(review.pending(old));
    QVERIFY(!review.row(rowOf(review, QStringLiteral("./"))).outOfScope);
    review.tickAll(Action::Add, true);
    QVERIFY(!review.row(fresh).ticked);
}

void tst_SyncReview::handMadeTickSurvives()
{
    WorkTables tables;
    fillUp(tables);
    SyncReview review = tables.review(WorkTables::compared(false, QStringLiteral("/pub")));
    const int gone = rowOf(review, QStringLiteral("/gone.txt"));
    const int equal = rowOf(review, QStringLiteral("/equal.txt"));
    const int old = rowOf(review, QStringLiteral("/old/"));
    review.setTicked(gone, false);
    review.setTicked(old, false);
    review.setChCmp(0, true);
    QVERIFY2(!review.row(gone).ticked, "its action did not change");
    QVERIFY2(!review.row(old).ticked, "its action did not change");
    QVERIFY2(review.row(equal).ticked, "its action became an overwrite");
    review.setTicked(equal, false);
    review.setChCmp(0, false);
    review.setChCmp(0, true);
    QVERIFY2(review.row(equal).ticked, "its action changed twice, the tick starts anew");
    review.setChCmp(1, true);
    review.setChCmp(1, false);
    QVERIFY2(review.row(old).ticked, "out of scope and back, the tick starts anew");
    QVERIFY(!review.row(gone).ticked);
}

void tst_SyncReview::nothingIsWrittenToTheRegistry()
{
    WorkTables tables;
    fillUp(tables);
    tables.addPattern(QStringLiteral("p"), QStringLiteral("/home/me/web"), QStringLiteral("/pub"),
                      false, false);
    SyncReview review = tables.review(WorkTables::compared(false, QStringLiteral("/pub")));
    review.setChCmp(0, true);
    review.setChCmp(1, true);
    const ReviewOptions kept = optionsOfPattern(tables.database(), QStringLiteral("p"));
    QVERIFY(!kept.bCfl && !kept.bCfd);
}

void tst_SyncReview::visibleRows_data()
{
    QTest::addColumn<bool>("folders");
    QTest::addColumn<bool>("files");
    QTest::addColumn<QStringList>("hidden");
    const QString sub = QStringLiteral("/fresh/sub/");
    const QString s = QStringLiteral("/fresh/sub/s.txt");
    const QStringList direct{QStringLiteral("/fresh/f.txt"), QStringLiteral("/old/o.txt")};
    QTest::newRow("both checked: everything") << true << true << QStringList();
    QTest::newRow("covered folders hidden, with their files")
        << false << true << QStringList{sub, s};
    QTest::newRow("covered files hidden") << true << false << (QStringList{s} + direct);
    QTest::newRow("neither") << false << false << (QStringList{sub, s} + direct);
}

void tst_SyncReview::visibleRows()
{
    QFETCH(bool, folders);
    QFETCH(bool, files);
    QFETCH(QStringList, hidden);
    WorkTables tables;
    fillUp(tables);
    SyncReview review = tables.review(WorkTables::compared(false, QStringLiteral("/pub")));
    QVERIFY(review.chDsp(0) && review.chDsp(1));
    review.setChDsp(0, folders);
    review.setChDsp(1, files);
    std::vector<int> expected;
    for (int i = 0; i < review.count(); ++i) {
        const bool gone = std::any_of(hidden.cbegin(), hidden.cend(), [&](const QString &path) {
            return rowOf(review, path) == i;
        });
        if (!gone)
            expected.push_back(i);
    }
    QCOMPARE(review.visibleRows(), expected);
}

void tst_SyncReview::tickAll()
{
    WorkTables tables;
    fillUp(tables);
    SyncReview review = tables.review(WorkTables::compared(false, QStringLiteral("/pub")));
    review.tickAll(Action::Remove, false);
    QVERIFY(!review.row(rowOf(review, QStringLiteral("/gone.txt"))).ticked);
    QVERIFY(!review.row(rowOf(review, QStringLiteral("/old/"))).ticked);
    QVERIFY(review.row(rowOf(review, QStringLiteral("/new.txt"))).ticked);
    review.tickAll(Action::Remove, true);
    QVERIFY(review.row(rowOf(review, QStringLiteral("/old/"))).ticked);
    review.tickAll(Action::Overwrite, true);
    QVERIFY2(!review.row(rowOf(review, QStringLiteral("/equal.txt"))).ticked,
             "a cleared row has no action that could be meant");
}

void tst_SyncReview::counts()
{
    WorkTables tables;
    fillUp(tables);
    SyncReview review = tables.review(WorkTables::compared(false, QStringLiteral("/pub")));
    SyncReview::Counts counts = review.counts();
    QCOMPARE(counts.add, 6);
    QCOMPARE(counts.remove, 3);
    QCOMPARE(counts.overwrite, 1);
    QCOMPARE(counts.bytes, 7 + 100 + 5 + 11 + 13);
    QCOMPARE(counts.pending, 6);
    QCOMPARE(review.pendingCount(), 6);
    review.setTicked(rowOf(review, QStringLiteral("/fresh/")), false);
    counts = review.counts();
    QCOMPARE(counts.add, 2);
    QCOMPARE(counts.bytes, 7 + 100 + 5);
}

void tst_SyncReview::marks()
{
    WorkTables tables;
    fillUp(tables);
    SyncReview review = tables.review(WorkTables::compared(false, QStringLiteral("/pub")));
    const int fresh = rowOf(review, QStringLiteral("/fresh/"));
    review.markRow(fresh, true);
    QCOMPARE(review.stateText(fresh), QStringLiteral("a"));
    QCOMPARE(review.stateText(rowOf(review, QStringLiteral("/fresh/sub/s.txt"))),
             QStringLiteral("a"));
    QVERIFY(!review.pending(fresh));
    review.setTicked(fresh, false);
    QVERIFY2(review.row(fresh).ticked, "what is done is not untaken");
    const int gone = rowOf(review, QStringLiteral("/gone.txt"));
    review.markRow(gone, false);
    QCOMPARE(review.stateText(gone), QStringLiteral("r"));
    QCOMPARE(review.stateText(rowOf(review, QStringLiteral("/new.txt"))), QString());
    QCOMPARE(review.counts().done, 1);
    QCOMPARE(review.counts().givenUp, 1);
    QCOMPARE(review.pendingCount(), 4);
}

void tst_SyncReview::givenUpIsLeftOver()
{
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, early, compare);
    tables.addFile(QStringLiteral("."), QStringLiteral("x"), {early, 1}, {}, add);
    SyncReview review = tables.review(WorkTables::compared(false, QStringLiteral("/pub")));
    QVERIFY2(review.leftOver(), "pending");
    SyncReview refused = review;
    refused.markRow(1, false);
    QVERIFY(refused.leftOver());
    review.markRow(1, true);
    QVERIFY(!review.leftOver());
}

void tst_SyncReview::whatAPersonLeftOutIsNotLeftOver()
{
    WorkTables tables;
    fillUp(tables);
    SyncReview review =
        tables.review(WorkTables::compared(false, QStringLiteral("/pub")), {false, true});
    for (int i = 0; i < review.count(); ++i)
        review.setTicked(i, false);
    QVERIFY(!review.leftOver());
    ComparisonResult doubtful = WorkTables::compared(false, QStringLiteral("/pub"));
    doubtful.unreliable = true;
    const SyncReview second = tables.review(doubtful, {});
    QVERIFY(second.leftOver());
}

void tst_SyncReview::pathsFollowEachSidesSpelling()
{
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, early, compare);
    tables.addFolder(QStringLiteral("/doc"), early, early, compare);
    tables.addFile(QStringLiteral("/Doc"), QStringLiteral("new.txt"), {early, 1}, {}, add);
    tables.addFile(QStringLiteral("/doc"), QStringLiteral("old.txt"), {}, {early, 1}, removal);
    tables.addFolder(QStringLiteral("/Doc/Sub"), early, QString(), add);
    ComparisonResult comparison = WorkTables::compared(false, QStringLiteral("/pub"));
    comparison.localSpelling.insert(QStringLiteral("/doc"), QStringLiteral("/Doc"));
    const SyncReview review = tables.review(comparison);
    const int file = rowOf(review, QStringLiteral("/doc/new.txt"));
    QVERIFY(file > 0);
    QCOMPARE(review.localPath(file),
             QDir::toNativeSeparators(QStringLiteral("/home/me/web/Doc/new.txt")));
    QCOMPARE(review.remoteParent(file), QStringLiteral("/pub/doc"));
    QCOMPARE(review.localParent(file),
             QDir::toNativeSeparators(QStringLiteral("/home/me/web/Doc")));
    const int folder = rowOf(review, QStringLiteral("/Doc/Sub/"));
    QVERIFY(folder > 0);
    QCOMPARE(review.localPath(folder),
             QDir::toNativeSeparators(QStringLiteral("/home/me/web/Doc/Sub")));
    QCOMPARE(review.remotePath(folder), QStringLiteral("/pub/doc/Sub"));
    QCOMPARE(review.remoteParent(folder), QStringLiteral("/pub/doc"));
    QCOMPARE(review.row(folder).name, QStringLiteral("Sub"));
    QCOMPARE(review.listText(folder), QStringLiteral("/Doc/Sub [ﾌｫﾙﾀﾞ]"));
}

void tst_SyncReview::foldersSortedBehindABlank()
{
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, early, compare);
    tables.addFolder(QStringLiteral("/a"), early, QString(), add);
    tables.addFolder(QStringLiteral("/a b"), early, early, compare);
    tables.addFile(QStringLiteral("/a b"), QStringLiteral("f"), {early, 1}, {}, add);
    tables.addFolder(QStringLiteral("/a/c"), early, QString(), add);
    const SyncReview review = tables.review(WorkTables::compared(false, QStringLiteral("/pub")));
    QVERIFY(review.row(rowOf(review, QStringLiteral("/a b/f"))).box);
    const int covered = rowOf(review, QStringLiteral("/a/c/"));
    QCOMPARE(review.row(covered).owner, rowOf(review, QStringLiteral("/a/")));
}

void tst_SyncReview::manyRowsStayFast()
{
    WorkTables tables;
    constexpr int files = 40'000;
    {
        Transaction transaction(tables.database());
        tables.addFolder(QStringLiteral("."), early, early, compare);
        tables.addFolder(QStringLiteral("/new"), early, QString(), add);
        for (int i = 0; i < files; ++i) {
            tables.addFile(i % 2 == 0 ? QStringLiteral(".") : QStringLiteral("/new"),
                           QStringLiteral("file%1").arg(i), {early, 10}, {}, add);
        }
        transaction.commit();
    }
    QElapsedTimer clock;
    clock.start();
    SyncReview review = tables.review(WorkTables::compared(false, QStringLiteral("/pub")));
    QCOMPARE(review.count(), files + 2);
    review.setChCmp(0, true);
    for (int i = 0; i < review.count(); ++i)
        review.setTicked(i, false);
    review.tickAll(Action::Add, true);
    for (int i = 0; i < review.count(); ++i) {
        if (review.pending(i))
            review.markRow(i, true);
    }
    QCOMPARE(review.pendingCount(), 0);
    QCOMPARE(static_cast<int>(review.visibleRows().size()), files + 2);
    QVERIFY2(clock.elapsed() < 60'000, "anything quadratic takes minutes here");
}

QTEST_APPLESS_MAIN(tst_SyncReview)
#include "tst_SyncReview.moc"
