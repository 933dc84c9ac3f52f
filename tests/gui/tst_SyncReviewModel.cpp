#include <QAbstractItemModelTester>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

#include "gui/ReviewFixture.h"
#include "support/ShownToolTip.h"
#include "sync/windows/SyncReviewModel.h"

namespace venlo::test
{

class tst_SyncReviewModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void keepsTheModelRules();
    void cells_data();
    void cells();
    void toolTipsShowPathsAsTheyAre();
    void headings();
    void ticks();
    void coveredRowsFollow();
    void boxesRecompute();
    void displayBoxesFilter_data();
    void displayBoxesFilter();
    void sorting_data();
    void sorting();
    void sortingKeepsTheReview();
    void persistentIndexesFollow();
    void lockedWhileRunning();
    void manyRows();

private:
    [[nodiscard]] QStringList names() const;
    [[nodiscard]] QModelIndex cell(const QString &path, int column) const;

    std::unique_ptr<ReviewTables> m_tables;
    std::unique_ptr<SyncReview> m_review;
    std::unique_ptr<SyncReviewModel> m_model;
};

void tst_SyncReviewModel::init()
{
    m_model.reset();
    m_tables = std::make_unique<ReviewTables>();
    fillEveryKind(*m_tables);
    m_review = m_tables->review();
    m_model = std::make_unique<SyncReviewModel>(*m_review, QPalette());
}

QStringList tst_SyncReviewModel::names() const
{
    QStringList names;
    for (int row = 0; row < m_model->rowCount(); ++row)
        names += m_review->listText(m_model->reviewRow(row));
    return names;
}

QModelIndex tst_SyncReviewModel::cell(const QString &path, int column) const
{
    return m_model->index(m_model->tableRow(rowOf(*m_review, path)), column);
}

void tst_SyncReviewModel::keepsTheModelRules()
{
    const QAbstractItemModelTester tester(m_model.get(),
                                          QAbstractItemModelTester::FailureReportingMode::QtTest);
    m_model->setChDsp(0, false);
    m_model->sort(NameColumn, Qt::DescendingOrder);
    m_model->setChCmp(0, true);
    m_model->setTicked({0, 1, 2}, false);
    m_model->setChDsp(0, true);
    m_model->sort(-1, Qt::AscendingOrder);
    QCOMPARE(m_model->rowCount(), m_review->count());
}

void tst_SyncReviewModel::cells_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const char *path, int column, const QString &text) {
        QTest::newRow(name) << QString::fromLatin1(path) << column << text;
    };
    row("a folder says so", "/both/", NameColumn, QStringLiteral("/both [ﾌｫﾙﾀﾞ]"));
    row("a file is its name", "/both/same.html", NameColumn, QStringLiteral("same.html"));
    row("master time", "/both/newer.html", MasterTimeColumn, QStringLiteral("24/05/02 11:30"));
    row("other time", "/both/newer.html", OtherTimeColumn, QStringLiteral("24/05/01 10:00"));
    row("master size", "/both/newer.html", MasterSizeColumn, QStringLiteral("5KB"));
    row("other size", "/gone.html", OtherSizeColumn, QStringLiteral("70B"));
    row("no size where there is no copy", "/gone.html", MasterSizeColumn, QString());
    row("folders have no size", "/both/", MasterSizeColumn, QString());
    row("added", "/added.html", ActionColumn, QStringLiteral("(追加)"));
    row("removed", "/gone.html", ActionColumn, QStringLiteral("(削除)"));
    row("overwritten", "/both/newer.html", ActionColumn, QStringLiteral("(上書)"));
    row("nothing to do", "/both/same.html", ActionColumn, QString());
    row("a covered folder", "/new/sub/", ActionColumn, QStringLiteral("*"));
}

void tst_SyncReviewModel::cells()
{
    QFETCH(QString, path);
    QFETCH(int, column);
    QFETCH(QString, text);
    QCOMPARE(cell(path, column).data().toString(), text);
}

void tst_SyncReviewModel::toolTipsShowPathsAsTheyAre()
{
    const int row = m_model->reviewRow(0);
    QVERIFY(shownToolTip(m_model->index(0, NameColumn).data(Qt::ToolTipRole).toString())
                .endsWith(QStringLiteral("ﾏｲｺﾝﾋﾟｭｰﾀｰ: ") + m_review->localPath(row) +
                          QStringLiteral("\nFTP: ") + m_review->remotePath(row)));
}

void tst_SyncReviewModel::headings()
{
    const auto group = [](const SyncReviewModel &model, int column) {
        return model.headerData(column, Qt::Horizontal, SyncReviewModel::groupRole).toString();
    };
    QCOMPARE(group(*m_model, MasterTimeColumn), QStringLiteral("同期元(ﾏｲｺﾝﾋﾟｭｰﾀｰ)"));
    QCOMPARE(group(*m_model, OtherSizeColumn), QStringLiteral("同期先(FTP)"));
    QVERIFY(group(*m_model, NameColumn).isEmpty());
    const auto down = m_tables->review(true);
    const SyncReviewModel downModel(*down, QPalette());
    QCOMPARE(group(downModel, MasterSizeColumn), QStringLiteral("同期元(FTP)"));
    QCOMPARE(group(downModel, OtherTimeColumn), QStringLiteral("同期先(ﾏｲｺﾝﾋﾟｭｰﾀｰ)"));
}

void tst_SyncReviewModel::ticks()
{
    const QSignalSpy plans(m_model.get(), &SyncReviewModel::planChanged);
    const QModelIndex added = cell(QStringLiteral("/added.html"), TickColumn);
    QCOMPARE(added.data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
    QVERIFY(m_model->setData(added, Qt::Unchecked, Qt::CheckStateRole));
    QVERIFY(!m_review->row(rowOf(*m_review, QStringLiteral("/added.html"))).ticked);
    QCOMPARE(plans.size(), 1);
    const QModelIndex root = m_model->index(0, TickColumn);
    QVERIFY(!root.data(Qt::CheckStateRole).isValid());
    QVERIFY(!m_model->setData(root, Qt::Checked, Qt::CheckStateRole));
    m_model->tickAll(Action::Add, true);
    QCOMPARE(added.data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
}

void tst_SyncReviewModel::coveredRowsFollow()
{
    const QModelIndex inside = cell(QStringLiteral("/new/a.css"), ActionColumn);
    QCOMPARE(inside.data().toString(), QStringLiteral("(追加)"));
    QVERIFY(!inside.siblingAtColumn(TickColumn).data(Qt::CheckStateRole).isValid());
    m_model->setTicked({cell(QStringLiteral("/new/"), 0).row()}, false);
    QCOMPARE(inside.data().toString(), QString());
}

void tst_SyncReviewModel::boxesRecompute()
{
    const QModelIndex same = cell(QStringLiteral("/both/same.html"), ActionColumn);
    m_model->setChCmp(0, true);
    QCOMPARE(same.data().toString(), QStringLiteral("(上書)"));
    m_model->setChCmp(1, true);
    QCOMPARE(cell(QStringLiteral("/new/"), ActionColumn).data().toString(),
             QStringLiteral("対象外"));
    m_model->setChCmp(0, false);
    m_model->setChCmp(1, false);
    QCOMPARE(same.data().toString(), QString());
    QCOMPARE(cell(QStringLiteral("/new/"), ActionColumn).data().toString(),
             QStringLiteral("(追加)"));
}

void tst_SyncReviewModel::displayBoxesFilter_data()
{
    QTest::addColumn<bool>("folders");
    QTest::addColumn<bool>("files");
    QTest::addColumn<int>("hidden");
    QTest::newRow("everything") << true << true << 0;
    QTest::newRow("no covered folders") << false << true << 2;
    QTest::newRow("no files of such folders") << true << false << 3;
    QTest::newRow("neither") << false << false << 4;
}

void tst_SyncReviewModel::displayBoxesFilter()
{
    QFETCH(bool, folders);
    QFETCH(bool, files);
    QFETCH(int, hidden);
    m_model->setChDsp(0, folders);
    m_model->setChDsp(1, files);
    QCOMPARE(m_model->rowCount(), m_review->count() - hidden);
    QCOMPARE(m_model->tableRow(rowOf(*m_review, QStringLiteral("/new/sub/"))) >= 0, folders);
    QCOMPARE(m_model->tableRow(rowOf(*m_review, QStringLiteral("/old/c.css"))) >= 0, files);
}

void tst_SyncReviewModel::sorting_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<Qt::SortOrder>("order");
    QTest::addColumn<QString>("first");
    QTest::newRow("largest at the master")
        << int(MasterSizeColumn) << Qt::DescendingOrder << QStringLiteral("newer.html");
    QTest::newRow("smallest elsewhere, absent ones first")
        << int(OtherSizeColumn) << Qt::AscendingOrder << QStringLiteral(". [ﾌｫﾙﾀﾞ]");
    QTest::newRow("last name") << int(NameColumn) << Qt::DescendingOrder
                               << QStringLiteral("same.html");
    QTest::newRow("ticked ones first")
        << int(TickColumn) << Qt::AscendingOrder << QStringLiteral("added.html");
    QTest::newRow("latest") << int(MasterTimeColumn) << Qt::DescendingOrder
                            << QStringLiteral("added.html");
}

void tst_SyncReviewModel::sorting()
{
    QFETCH(int, column);
    QFETCH(Qt::SortOrder, order);
    QFETCH(QString, first);
    const QStringList natural = names();
    m_model->sort(column, order);
    QCOMPARE(names().first(), first);
    QVERIFY(names() != natural || column == OtherSizeColumn);
    m_model->sort(-1, Qt::AscendingOrder);
    QCOMPARE(names(), natural);
}

void tst_SyncReviewModel::sortingKeepsTheReview()
{
    const QString before = m_review->print();
    m_model->sort(NameColumn, Qt::DescendingOrder);
    QCOMPARE(m_review->print(), before);
    const QModelIndex file = cell(QStringLiteral("/both/same.html"), NameColumn);
    QCOMPARE(file.data().toString(), QStringLiteral("same.html  (/both)"));
}

void tst_SyncReviewModel::persistentIndexesFollow()
{
    const QPersistentModelIndex kept(cell(QStringLiteral("/gone.html"), ActionColumn));
    m_model->sort(NameColumn, Qt::DescendingOrder);
    QCOMPARE(m_review->listText(m_model->reviewRow(kept.row())), QStringLiteral("gone.html"));
    QCOMPARE(kept.column(), int(ActionColumn));
}

void tst_SyncReviewModel::lockedWhileRunning()
{
    const QModelIndex added = cell(QStringLiteral("/added.html"), TickColumn);
    m_model->setLocked(true);
    QVERIFY(!added.flags().testFlag(Qt::ItemIsUserCheckable));
    QVERIFY(!m_model->setData(added, Qt::Unchecked, Qt::CheckStateRole));
    m_model->setTicked({added.row()}, false);
    QCOMPARE(added.data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
    m_model->setLocked(false);
    QVERIFY(m_model->setData(added, Qt::Unchecked, Qt::CheckStateRole));
}

/// Not a benchmark: the limit is far above what it takes, and only something that grows faster
/// than the rows gets past it.
void tst_SyncReviewModel::manyRows()
{
    constexpr int files = 100'000;
    ReviewTables tables;
    tables.manyFiles(files);
    const auto review = tables.review();
    QElapsedTimer time;
    time.start();
    SyncReviewModel model(*review, QPalette());
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    model.setChDsp(0, false);
    QCOMPARE(resets.size(), 1);
    model.sort(NameColumn, Qt::DescendingOrder);
    std::vector<int> all(static_cast<size_t>(model.rowCount()));
    for (size_t i = 0; i < all.size(); ++i)
        all[i] = static_cast<int>(i);
    QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    model.setTicked(all, false);
    QCOMPARE(changes.size(), 1);
    QCOMPARE(review->pendingCount(), 0);
    QVERIFY2(time.elapsed() < 10'000, qPrintable(QString::number(time.elapsed())));
    qInfo("%d rows: %lld ms", model.rowCount(), static_cast<long long>(time.elapsed()));
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_SyncReviewModel)
#include "tst_SyncReviewModel.moc"
