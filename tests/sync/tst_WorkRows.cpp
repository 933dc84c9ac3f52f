#include "sync/WorkTables.h"

#include <QTest>

#include "db/Store.h"

using venlo::WorkRows;
using venlo::test::WorkTables;

namespace
{
const QString time1 = QStringLiteral("26/01/02 03:04");
const QString time2 = QStringLiteral("26/05/06 07:08");
} // namespace

/// What both sides have of an item meets in one row, and the tables hold the rows when they are
/// stored.
class tst_WorkRows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void localSideAlone();
    void bothSidesMeetWhateverTheCase();
    void marks_data();
    void marks();
    void aDroppedPlaceholderMakesNamesOne();
    void namesThatShareAPathAreApart();
    void storingTwiceWritesOnce();
    void storingReplacesWhatIsThere();
    void rowsInTwoPlacesAreNotTakenForStored();
    void aFolderWithoutANameIsNotTheRoot();

private:
    [[nodiscard]] QString stored(const WorkRows &rows);

    std::unique_ptr<WorkTables> m_tables;
};

void tst_WorkRows::init()
{
    m_tables = std::make_unique<WorkTables>();
}

QString tst_WorkRows::stored(const WorkRows &rows)
{
    return venlo::test::storedText(m_tables->database(), rows);
}

void tst_WorkRows::localSideAlone()
{
    WorkRows rows;
    rows.mergeLocalFolder(QStringLiteral("."), time1);
    rows.mergeLocalFolder(QStringLiteral("/a"), time2);
    rows.mergeLocalFile(QStringLiteral("/a"), QStringLiteral("b"), time1, 7);
    QCOMPARE(stored(rows), QStringLiteral("D .|26/01/02 03:04||\n"
                                          "D /a|26/05/06 07:08||\n"
                                          "F /a|b|26/01/02 03:04|7||0|\n"));
}

void tst_WorkRows::bothSidesMeetWhateverTheCase()
{
    WorkRows rows;
    rows.addRemoteFolder(QStringLiteral("/Ａ"), time1);
    rows.addRemoteFile(QStringLiteral("/Ａ"), QStringLiteral("Read.ME"), time1, 8);
    rows.mergeLocalFolder(QStringLiteral("/ａ"), time2);
    rows.mergeLocalFile(QStringLiteral("/ａ"), QStringLiteral("read.me"), time2, 9);
    rows.mark(false);
    QCOMPARE(stored(rows),
             QStringLiteral("D /Ａ|26/05/06 07:08|26/01/02 03:04|比較\n"
                            "F /Ａ|Read.ME|26/05/06 07:08|9|26/01/02 03:04|8|比較\n"));
}

void tst_WorkRows::marks_data()
{
    QTest::addColumn<bool>("down");
    QTest::addColumn<bool>("here");
    QTest::addColumn<bool>("there");
    QTest::addColumn<QString>("mark");
    QTest::newRow("both up") << false << true << true << QStringLiteral("比較");
    QTest::newRow("both down") << true << true << true << QStringLiteral("比較");
    QTest::newRow("local up") << false << true << false << QStringLiteral("追加");
    QTest::newRow("local down") << true << true << false << QStringLiteral("削除");
    QTest::newRow("remote up") << false << false << true << QStringLiteral("削除");
    QTest::newRow("remote down") << true << false << true << QStringLiteral("追加");
}

void tst_WorkRows::marks()
{
    QFETCH(bool, down);
    QFETCH(bool, here);
    QFETCH(bool, there);
    QFETCH(QString, mark);
    WorkRows rows;
    if (there) {
        rows.addRemoteFolder(QStringLiteral("/d"), time1);
        rows.addRemoteFile(QStringLiteral("/d"), QStringLiteral("f"), time1, 1);
    }
    if (here) {
        rows.mergeLocalFolder(QStringLiteral("/d"), time1);
        rows.mergeLocalFile(QStringLiteral("/d"), QStringLiteral("f"), time1, 1);
    }
    rows.mark(down);
    const QString text = stored(rows);
    QCOMPARE(text.count(QLatin1Char('|') + mark + QLatin1Char('\n')), 2);
}

/// As in a statement, where both rows are the ones that are meant.
void tst_WorkRows::aDroppedPlaceholderMakesNamesOne()
{
    WorkRows rows;
    rows.addRemoteFile(QStringLiteral("."), QStringLiteral("a?b"), time1, 1);
    rows.addRemoteFile(QStringLiteral("."), QStringLiteral("ab"), time1, 2);
    rows.mergeLocalFile(QStringLiteral("."), QStringLiteral("AB"), time2, 3);
    QCOMPARE(rows.files(QStringLiteral("."), QStringLiteral("ab")).size(), 2U);
    rows.mark(true);
    QCOMPARE(stored(rows), QStringLiteral("F .|ab|26/05/06 07:08|3|26/01/02 03:04|1|比較\n"
                                          "F .|ab|26/05/06 07:08|3|26/01/02 03:04|2|比較\n"));
}

/// With the server's root, deeper rows come without their leading "/".
void tst_WorkRows::namesThatShareAPathAreApart()
{
    WorkRows rows;
    rows.addRemoteFile(QStringLiteral("a"), QStringLiteral("f"), time1, 1);
    rows.mergeLocalFile(QStringLiteral("/a"), QStringLiteral("f"), time2, 2);
    QCOMPARE(rows.files(QStringLiteral("a"), QStringLiteral("f")).size(), 1U);
    QVERIFY(rows.files(QStringLiteral("."), QStringLiteral("f")).empty());
    QCOMPARE(stored(rows).count(QLatin1Char('\n')), 2);
}

void tst_WorkRows::storingTwiceWritesOnce()
{
    WorkRows rows;
    rows.mergeLocalFolder(QStringLiteral("."), time1);
    rows.mergeLocalFile(QStringLiteral("."), QStringLiteral("f"), time1, 1);
    rows.mark(false);
    const QString before = stored(rows);
    const auto changes = [this] {
        return m_tables->database()
            .store()
            .query(QStringLiteral("SELECT total_changes()"))
            .at(0, 0)
            .toLongLong();
    };
    const qint64 then = changes();
    QCOMPARE(stored(rows), before);
    QCOMPARE(changes(), then);
}

void tst_WorkRows::storingReplacesWhatIsThere()
{
    WorkRows first;
    first.mergeLocalFolder(QStringLiteral("/gone"), time1);
    first.mergeLocalFile(QStringLiteral("/gone"), QStringLiteral("f"), time1, 1);
    (void)stored(first);
    WorkRows second;
    second.mergeLocalFolder(QStringLiteral("/new"), time2);
    QCOMPARE(stored(second), QStringLiteral("D /new|26/05/06 07:08||\n"));
}

/// Of two tables with as many rows, one of which shows the same folder where it is asked for twice.
void tst_WorkRows::rowsInTwoPlacesAreNotTakenForStored()
{
    WorkRows first;
    first.addRemoteFile(QStringLiteral("/a"), QStringLiteral("f"), time1, 1);
    first.addRemoteFile(QStringLiteral("/b"), QStringLiteral("f"), time1, 1);
    first.addRemoteFile(QStringLiteral("/old"), QStringLiteral("f"), time1, 1);
    (void)stored(first);
    WorkRows second;
    second.addRemoteFile(QStringLiteral("/a"), QStringLiteral("f"), time1, 1);
    second.addRemoteFile(QStringLiteral("/b"), QStringLiteral("f"), time1, 1);
    second.addRemoteFile(QStringLiteral("/a?"), QStringLiteral("f"), time1, 1);
    QCOMPARE(stored(second), QStringLiteral("F /a|f||0|26/01/02 03:04|1|\n"
                                            "F /a|f||0|26/01/02 03:04|1|\n"
                                            "F /b|f||0|26/01/02 03:04|1|\n"));
}

/// The server's root can hold a folder "?", whose files come without a path.
void tst_WorkRows::aFolderWithoutANameIsNotTheRoot()
{
    WorkRows rows;
    rows.addRemoteFile(QStringLiteral("?"), QStringLiteral("f"), time1, 1);
    rows.mergeLocalFile(QStringLiteral("."), QStringLiteral("f"), time2, 2);
    QCOMPARE(stored(rows), QStringLiteral("F |f||0|26/01/02 03:04|1|\n"
                                          "F .|f|26/05/06 07:08|2||0|\n"));
}

QTEST_GUILESS_MAIN(tst_WorkRows)
#include "tst_WorkRows.moc"
