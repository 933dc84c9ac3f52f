#include <QAbstractItemModelTester>
#include <QFont>
#include <QItemSelectionModel>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>

#include "views/RowList.h"

namespace venlo::test
{

namespace
{

constexpr int nameColumn = 0;
constexpr int sizeColumn = 1;
constexpr int kindColumn = 2;
constexpr int orderColumn = 3;

RowList::Layout layout()
{
    return {{QStringLiteral("名前"), QStringLiteral("ｻｲｽﾞ"), QStringLiteral("種類"), QString()},
            kindColumn,
            orderColumn,
            {sizeColumn}};
}

RowList::Row file(const QString &name, const QString &size = {})
{
    RowList::Row row;
    row.texts = {name, size, QString(), QStringLiteral("L") + name};
    return row;
}

RowList::Row folder(const QString &name)
{
    RowList::Row row;
    row.tag = EntryTag::FD;
    row.texts = {name, QString(), QString(), QStringLiteral("D") + name};
    return row;
}

std::vector<RowList::Row> files(const QStringList &names)
{
    std::vector<RowList::Row> rows;
    for (const QString &name : names)
        rows.push_back(file(name));
    return rows;
}

QStringList numbered(int from, int to, int step)
{
    QStringList names;
    for (int i = from; i < to; i += step)
        names += QStringLiteral("%1").arg(i, 5, 10, QLatin1Char('0'));
    return names;
}

} // namespace

class tst_RowList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void keysGrowAcrossRefills();
    void keysRunOut();
    void sortsByPlainText_data();
    void sortsByPlainText();
    void equalOnes();
    void unsortedAsTheyCame();
    void appendsInOrder_data();
    void appendsInOrder();
    void firstFillIsOneStep();
    void removing_data();
    void removing();
    void findsRows();
    void editedRowStaysUntilTheNextSort();
    void selectionSurvives();
    void lateColumn();
    void iconsComeOnce();
    void flags();
    void looks();

private:
    [[nodiscard]] QStringList names() const;

    std::unique_ptr<RowList> m_list;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
};

void tst_RowList::init()
{
    m_tester.reset();
    m_list = std::make_unique<RowList>(layout());
    m_tester = std::make_unique<QAbstractItemModelTester>(
        m_list.get(), QAbstractItemModelTester::FailureReportingMode::Fatal);
}

QStringList tst_RowList::names() const
{
    QStringList names;
    for (int row = 0; row < m_list->count(); ++row)
        names += m_list->text(row, nameColumn);
    return names;
}

void tst_RowList::keysGrowAcrossRefills()
{
    QVERIFY(m_list->append(files({QStringLiteral("a"), QStringLiteral("b")})));
    QCOMPARE(m_list->row(0).key, QStringLiteral("L000"));
    QCOMPARE(m_list->row(1).key, QStringLiteral("L001"));
    m_list->clear();
    QCOMPARE(m_list->count(), 0);
    QCOMPARE(m_list->rowOfKey(QStringLiteral("L000")), -1);
    QVERIFY(m_list->append(files({QStringLiteral("a")})));
    QCOMPARE(m_list->row(0).key, QStringLiteral("L002"));
}

void tst_RowList::keysRunOut()
{
    m_list->keys().restart(KeyCounter::last - 1);
    QVERIFY(
        !m_list->append(files({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")})));
    QCOMPARE(names(), QStringList({QStringLiteral("a"), QStringLiteral("b")}));
    QVERIFY(!m_list->append(files({QStringLiteral("d")})));
    QVERIFY(m_list->append({}));
    QCOMPARE(m_list->count(), 2);
}

void tst_RowList::sortsByPlainText_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<Qt::SortOrder>("order");
    QTest::addColumn<QString>("sorted");
    QTest::newRow("names") << nameColumn << Qt::AscendingOrder << "A,b,C,sub";
    QTest::newRow("names down") << nameColumn << Qt::DescendingOrder << "sub,C,b,A";
    // Sizes too are plain text: 1,000B before 20B before 2KB.
    QTest::newRow("sizes") << sizeColumn << Qt::AscendingOrder << "sub,C,A,b";
    QTest::newRow("folders first") << orderColumn << Qt::AscendingOrder << "sub,A,b,C";
}

void tst_RowList::sortsByPlainText()
{
    QFETCH(int, column);
    QFETCH(Qt::SortOrder, order);
    QFETCH(QString, sorted);
    QVERIFY(m_list->append({file(QStringLiteral("b"), QStringLiteral("2KB")),
                            folder(QStringLiteral("sub")),
                            file(QStringLiteral("C"), QStringLiteral("1,000B")),
                            file(QStringLiteral("A"), QStringLiteral("20B"))}));
    m_list->sort(column, order);
    QCOMPARE(names().join(QLatin1Char(',')), sorted);
    QCOMPARE(m_list->sortColumn(), column);
    QCOMPARE(m_list->sortOrder(), order);
}

void tst_RowList::equalOnes()
{
    // One name for a folder and a file: the tie column puts the folder first, up and down.
    QVERIFY(m_list->append(
        {file(QStringLiteral("x")), file(QStringLiteral("y")), folder(QStringLiteral("X"))}));
    m_list->sort(nameColumn, Qt::AscendingOrder);
    QCOMPARE(names().join(QLatin1Char(',')), QStringLiteral("X,x,y"));
    m_list->sort(nameColumn, Qt::DescendingOrder);
    QCOMPARE(names().join(QLatin1Char(',')), QStringLiteral("y,X,x"));

    // Equal in the tie column as well: as they came.
    RowList plain({{QStringLiteral("名前"), QStringLiteral("ｻｲｽﾞ")}, -1, -1, {}});
    QVERIFY(plain.append({file(QStringLiteral("c"), QStringLiteral("1")),
                          file(QStringLiteral("a"), QStringLiteral("1")),
                          file(QStringLiteral("b"), QStringLiteral("0"))}));
    plain.sort(1, Qt::AscendingOrder);
    QCOMPARE(plain.text(1, 0) + plain.text(2, 0), QStringLiteral("ca"));
    plain.sort(0, Qt::AscendingOrder);
    plain.sort(1, Qt::DescendingOrder);
    QCOMPARE(plain.text(0, 0) + plain.text(1, 0), QStringLiteral("ca"));
}

void tst_RowList::unsortedAsTheyCame()
{
    QVERIFY(m_list->append(files({QStringLiteral("c"), QStringLiteral("a")})));
    QVERIFY(m_list->append(files({QStringLiteral("b")})));
    QCOMPARE(names().join(QString()), QStringLiteral("cab"));
    m_list->sort(nameColumn, Qt::AscendingOrder);
    m_list->sort(-1, Qt::AscendingOrder);
    QCOMPARE(names().join(QString()), QStringLiteral("cab"));
    QCOMPARE(m_list->sortColumn(), -1);
}

void tst_RowList::appendsInOrder_data()
{
    QTest::addColumn<QStringList>("present");
    QTest::addColumn<QStringList>("coming");
    QTest::newRow("one in the middle") << numbered(0, 10, 2) << numbered(3, 4, 1);
    QTest::newRow("a few places") << numbered(0, 40, 2) << numbered(1, 40, 4);
    QTest::newRow("runs") << numbered(0, 100, 20) << numbered(21, 40, 1) + numbered(81, 99, 1);
    QTest::newRow("behind") << numbered(0, 10, 1) << numbered(10, 200, 1);
    QTest::newRow("in front") << numbered(100, 110, 1) << numbered(0, 90, 1);
    QTest::newRow("everywhere") << numbered(0, 600, 2) << numbered(1, 600, 2);
}

void tst_RowList::appendsInOrder()
{
    QFETCH(QStringList, present);
    QFETCH(QStringList, coming);
    m_list->sort(nameColumn, Qt::AscendingOrder);
    QVERIFY(m_list->append(files(present)));
    const QString marked = present.at(present.size() / 2);
    const QPersistentModelIndex held = m_list->index(m_list->rowOf(EntryTag::FL, marked), 0);
    std::reverse(coming.begin(), coming.end());
    QVERIFY(m_list->append(files(coming)));
    QStringList all = present + coming;
    all.sort();
    QCOMPARE(names(), all);
    QCOMPARE(held.data().toString(), marked);
    for (int row = 0; row < m_list->count(); ++row)
        QCOMPARE(m_list->rowOfKey(m_list->row(row).key), row);
}

void tst_RowList::firstFillIsOneStep()
{
    m_list->sort(nameColumn, Qt::DescendingOrder);
    QSignalSpy inserted(m_list.get(), &QAbstractItemModel::rowsInserted);
    QSignalSpy moved(m_list.get(), &QAbstractItemModel::layoutChanged);
    QVERIFY(m_list->append(files(numbered(0, 500, 1))));
    QCOMPARE(inserted.size(), 1);
    QCOMPARE(moved.size(), 0);
    QCOMPARE(names().constFirst(), QStringLiteral("00499"));
}

void tst_RowList::removing_data()
{
    QTest::addColumn<int>("total");
    QTest::addColumn<int>("every");
    QTest::addColumn<int>("steps");
    QTest::newRow("few ranges") << 60 << 3 << 20;
    QTest::newRow("many ranges") << 600 << 2 << 1;
    QTest::newRow("all") << 300 << 1 << 1;
}

void tst_RowList::removing()
{
    QFETCH(int, total);
    QFETCH(int, every);
    QFETCH(int, steps);
    QVERIFY(m_list->append(files(numbered(0, total, 1))));
    const QPersistentModelIndex last = m_list->index(total - 1, sizeColumn);
    const QPersistentModelIndex first = m_list->index(0, 0);
    QSignalSpy removed(m_list.get(), &QAbstractItemModel::rowsRemoved);
    std::vector<int> rows{-1, total, 0};
    for (int row = 0; row < total; row += every)
        rows.push_back(row);
    m_list->remove(rows);
    QCOMPARE(removed.size(), steps);
    QVERIFY(!first.isValid());
    QStringList left = numbered(0, total, 1);
    for (const QString &gone : numbered(0, total, every)) {
        left.removeOne(gone);
        QCOMPARE(m_list->rowOf(EntryTag::FL, gone), -1);
    }
    QCOMPARE(names(), left);
    QCOMPARE(last.isValid(), every != 1);
    if (last.isValid())
        QCOMPARE(last.row(), m_list->count() - 1);
    for (int row = 0; row < m_list->count(); ++row)
        QCOMPARE(m_list->rowOf(EntryTag::FL, left.at(row)), row);
}

void tst_RowList::findsRows()
{
    QVERIFY(m_list->append(
        {folder(QStringLiteral("x")), file(QStringLiteral("x")), file(QStringLiteral("X"))}));
    QCOMPARE(m_list->rowOf(EntryTag::FD, QStringLiteral("x")), 0);
    QCOMPARE(m_list->rowOf(EntryTag::FL, QStringLiteral("x")), 1);
    QCOMPARE(m_list->rowOf(EntryTag::FL, QStringLiteral("X")), 2);
    QCOMPARE(m_list->rowOf(EntryTag::NW, QStringLiteral("x")), -1);
    m_list->setTag(0, EntryTag::NW);
    QCOMPARE(m_list->rowOf(EntryTag::NW, QStringLiteral("x")), 0);
    m_list->setText(1, nameColumn, QStringLiteral("z"));
    QCOMPARE(m_list->rowOf(EntryTag::FL, QStringLiteral("x")), -1);
    QCOMPARE(m_list->rowOf(EntryTag::FL, QStringLiteral("z")), 1);
    QCOMPARE(m_list->rowOfKey(m_list->row(2).key), 2);
    QCOMPARE(m_list->rowOfKey(QStringLiteral("L999")), -1);
}

void tst_RowList::editedRowStaysUntilTheNextSort()
{
    m_list->sort(nameColumn, Qt::AscendingOrder);
    QVERIFY(m_list->append(files({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")})));
    QSignalSpy changed(m_list.get(), &QAbstractItemModel::dataChanged);
    m_list->setText(0, nameColumn, QStringLiteral("z"));
    m_list->setText(0, nameColumn, QStringLiteral("z"));
    m_list->setToolTip(0, QStringLiteral("更新:"));
    QCOMPARE(changed.size(), 2);
    QCOMPARE(names().join(QString()), QStringLiteral("zbc"));
    QCOMPARE(m_list->index(0, 0).data(Qt::ToolTipRole).toString(), QStringLiteral("更新:"));
    m_list->resort();
    QCOMPARE(names().join(QString()), QStringLiteral("bcz"));
}

void tst_RowList::selectionSurvives()
{
    QVERIFY(m_list->append(files({QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("a")})));
    QItemSelectionModel selection(m_list.get());
    selection.select(m_list->index(1, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    selection.setCurrentIndex(m_list->index(0, 0), QItemSelectionModel::NoUpdate);
    m_list->sort(nameColumn, Qt::AscendingOrder);
    QCOMPARE(selection.selectedRows().size(), 1);
    QCOMPARE(selection.selectedRows().constFirst().data().toString(), QStringLiteral("c"));
    QCOMPARE(selection.currentIndex().data().toString(), QStringLiteral("b"));
}

void tst_RowList::lateColumn()
{
    m_tester.reset(); // it reads everything at once
    int asked = 0;
    m_list->setLateSource([&asked](const RowList::Row &row) {
        ++asked;
        return row.texts.value(0).section(QLatin1Char('.'), -1) + QStringLiteral(" ﾌｧｲﾙ");
    });
    QVERIFY(m_list->append(files({QStringLiteral("a.txt"), QStringLiteral("b.doc")})));
    m_list->sort(nameColumn, Qt::DescendingOrder);
    QCOMPARE(asked, 0);
    QCOMPARE(m_list->index(1, kindColumn).data().toString(), QStringLiteral("txt ﾌｧｲﾙ"));
    QCOMPARE(m_list->text(1, kindColumn), QStringLiteral("txt ﾌｧｲﾙ"));
    QCOMPARE(asked, 1);
    m_list->sort(kindColumn, Qt::AscendingOrder);
    QCOMPARE(asked, 2);
    QCOMPARE(names().constFirst(), QStringLiteral("b.doc"));
    // Another name, another kind.
    m_list->setText(0, nameColumn, QStringLiteral("b.png"));
    QCOMPARE(m_list->text(0, kindColumn), QStringLiteral("png ﾌｧｲﾙ"));
    m_list->setText(0, kindColumn, QStringLiteral("ﾌｧｲﾙﾌｫﾙﾀﾞ"));
    QCOMPARE(m_list->text(0, kindColumn), QStringLiteral("ﾌｧｲﾙﾌｫﾙﾀﾞ"));
    QCOMPARE(asked, 3);
}

void tst_RowList::iconsComeOnce()
{
    m_tester.reset();
    int asked = 0;
    m_list->setIconSource([&asked](const RowList::Row &) {
        ++asked;
        return QIcon();
    });
    QVERIFY(m_list->append(files({QStringLiteral("a"), QStringLiteral("b")})));
    QCOMPARE(asked, 0);
    const QModelIndex cell = m_list->index(0, 0);
    QVERIFY(cell.data(Qt::DecorationRole).canConvert<QIcon>());
    QVERIFY(cell.data(Qt::DecorationRole).canConvert<QIcon>());
    QVERIFY(!m_list->index(0, 1).data(Qt::DecorationRole).isValid());
    QCOMPARE(asked, 1);
}

void tst_RowList::flags()
{
    RowList::Row looked = file(QStringLiteral("COM1"));
    looked.viewOnly = true;
    QVERIFY(m_list->append({file(QStringLiteral("a")), looked}));
    const Qt::ItemFlags open = m_list->flags(m_list->index(0, 0));
    QVERIFY(open & Qt::ItemIsEditable);
    QVERIFY(open & Qt::ItemIsDragEnabled);
    QVERIFY(open & Qt::ItemIsDropEnabled);
    QVERIFY(!(m_list->flags(m_list->index(0, 1)) & Qt::ItemIsEditable));
    const Qt::ItemFlags shut = m_list->flags(m_list->index(1, 0));
    QVERIFY(shut & Qt::ItemIsSelectable);
    QVERIFY(!(shut & (Qt::ItemIsEditable | Qt::ItemIsDragEnabled)));
}

void tst_RowList::looks()
{
    RowList::Row hidden = file(QStringLiteral(".a"));
    hidden.pale = true;
    QVERIFY(m_list->append({file(QStringLiteral("a")), hidden}));
    QVERIFY(!m_list->index(0, 0).data(Qt::ForegroundRole).isValid());
    QVERIFY(m_list->index(1, 1).data(Qt::ForegroundRole).isValid());
    m_list->setDropTarget(0);
    QVERIFY(m_list->index(0, 0).data(Qt::FontRole).value<QFont>().bold());
    m_list->setDropTarget(-1);
    QVERIFY(!m_list->index(0, 0).data(Qt::FontRole).isValid());
    QVERIFY(m_list->index(0, sizeColumn).data(Qt::TextAlignmentRole).toInt() & Qt::AlignRight);
    QCOMPARE(m_list->headerData(1, Qt::Horizontal, Qt::DisplayRole).toString(),
             QStringLiteral("ｻｲｽﾞ"));
    QCOMPARE(m_list->index(0, 0).data(entryTagRole).toInt(), static_cast<int>(EntryTag::FL));
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_RowList)
#include "tst_RowList.moc"
