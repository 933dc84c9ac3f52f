#include "sync/WorkTables.h"

#include <QRandomGenerator>
#include <QTest>

using venlo::Transaction;
using venlo::WorkRows;
using venlo::test::storedText;
using venlo::test::WorkTables;
using venlo::test::workTablesText;

namespace
{
const QString time1 = QStringLiteral("26/01/02 03:04");
const QString time2 = QStringLiteral("26/05/06 07:08");

/// A file, or a folder where it has no name.
struct Item {
    QString sPh;
    QString sFL;
    QString time;
    int size = 0;
};

const QStringList &paths()
{
    static const QStringList all{QStringLiteral("."),
                                 QStringLiteral("/a"),
                                 QStringLiteral("/A"),
                                 QStringLiteral("/a?"),
                                 QStringLiteral("a"),
                                 QStringLiteral("/?"),
                                 QStringLiteral("?"),
                                 QStringLiteral("/a/\u00e9 [x]"),
                                 QStringLiteral("/\u65e5\u672c|#*\"")};
    return all;
}

const QStringList &names()
{
    static const QStringList all{QString(), QStringLiteral("f"), QStringLiteral("F?"),
                                 QStringLiteral("?"), QStringLiteral("\uff21 | #1# * \"q\"")};
    return all;
}

std::vector<Item> someItems(QRandomGenerator &random, const QString &time)
{
    std::vector<Item> items;
    for (int i = 0; i < 12; ++i)
        items.push_back({paths().at(random.bounded(int(paths().size()))),
                         names().at(random.bounded(int(names().size()))), time,
                         random.bounded(1, 1000)});
    return items;
}
} // namespace

/// The rows that a comparison merges in memory are those that statements on the tables would leave.
class tst_WorkStatements : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void asStatementsWouldHaveIt_data();
    void asStatementsWouldHaveIt();

private:
    void remoteByStatements(const Item &item);
    void localByStatements(const Item &item);
    void markByStatements(bool down);

    std::unique_ptr<WorkTables> m_tables;
};

void tst_WorkStatements::init()
{
    m_tables = std::make_unique<WorkTables>();
}

void tst_WorkStatements::remoteByStatements(const Item &item)
{
    if (item.sFL.isNull())
        m_tables->database().run(
            QStringLiteral("Insert Into tbFold (sPh, sUL, sUF, sEd) Values ('?', '', '?', '') "),
            {item.sPh, item.time});
    else
        m_tables->database().run(
            QStringLiteral("Insert Into tbFile (sPh, sFL, sUL, nSL, sUF, nSF, sEd)"
                           " Values ('?', '?', '', 0, '?', ?, '') "),
            {item.sPh, item.sFL, item.time, item.size});
}

void tst_WorkStatements::localByStatements(const Item &item)
{
    venlo::Database &database = m_tables->database();
    if (item.sFL.isNull()) {
        if (database.run(QStringLiteral("Update tbFold Set sUL='?' Where sPh='?'"),
                         {item.time, item.sPh}) == 0)
            database.run(QStringLiteral("Insert Into tbFold (sPh, sUL, sUF, sEd)"
                                        " Values ('?', '?', '', '')"),
                         {item.sPh, item.time});
        return;
    }
    if (database.run(QStringLiteral("Update tbFile Set nSL=?, sUL='?' Where sPh='?' And sFL='?'"),
                     {item.size, item.time, item.sPh, item.sFL}) == 0)
        database.run(QStringLiteral("Insert Into tbFile (sPh, sFL, nSL, sUL, nSF, sUF, sEd)"
                                    " Values ('?', '?', ?, '?', 0, '', '')"),
                     {item.sPh, item.sFL, item.size, item.time});
}

void tst_WorkStatements::markByStatements(bool down)
{
    for (const QString &table : {QStringLiteral("tbFold"), QStringLiteral("tbFile")}) {
        const QString update = QStringLiteral("Update ") + table + QStringLiteral(" Set sEd=");
        m_tables->database().run(update + QStringLiteral("'比較'"));
        m_tables->database().run(update + (down ? QStringLiteral("'追加' Where sUL=''")
                                                : QStringLiteral("'追加' Where sUF=''")));
        m_tables->database().run(update + (down ? QStringLiteral("'削除' Where sUF=''")
                                                : QStringLiteral("'削除' Where sUL=''")));
    }
}

void tst_WorkStatements::asStatementsWouldHaveIt_data()
{
    QTest::addColumn<int>("seed");
    for (int seed = 1; seed <= 20; ++seed)
        QTest::addRow("%d", seed) << seed;
}

/// The rows are merged in memory; inserting, updating and marking them in the tables one by one
/// leaves the same.
void tst_WorkStatements::asStatementsWouldHaveIt()
{
    QFETCH(int, seed);
    QRandomGenerator random{static_cast<quint32>(seed)};
    const bool down = seed % 2 == 0;
    const auto remote = someItems(random, time1);
    const auto local = someItems(random, time2);
    WorkRows rows;
    Transaction transaction(m_tables->database());
    for (const Item &item : remote) {
        remoteByStatements(item);
        if (item.sFL.isNull())
            rows.addRemoteFolder(item.sPh, item.time);
        else
            rows.addRemoteFile(item.sPh, item.sFL, item.time, item.size);
    }
    for (const Item &item : local) {
        localByStatements(item);
        if (item.sFL.isNull())
            rows.mergeLocalFolder(item.sPh, item.time);
        else
            rows.mergeLocalFile(item.sPh, item.sFL, item.time, item.size);
    }
    markByStatements(down);
    transaction.commit();
    rows.mark(down);
    const QString byStatements = workTablesText(m_tables->database());
    QVERIFY(!byStatements.isEmpty());
    QCOMPARE(storedText(m_tables->database(), rows), byStatements);
    m_tables->database().run(QStringLiteral("Delete From tbFold"));
    m_tables->database().run(QStringLiteral("Delete From tbFile"));
    QCOMPARE(storedText(m_tables->database(), rows), byStatements);
}

QTEST_GUILESS_MAIN(tst_WorkStatements)
#include "tst_WorkStatements.moc"
