#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include "gui/ReviewFixture.h"
#include "gui/WindowDriver.h"
#include "mainwin/WindowFrontEnd.h"
#include "shared/ConsolePrinter.h"
#include "shared/Flags.h"
#include "support/CaughtStreams.h"
#include "sync/Execution.h"
#include "sync/windows/ReviewSort.h"
#include "sync/windows/sfSync.h"

namespace venlo::test
{

/// The review window before anything is executed.
class tst_sfSync : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void spaceTogglesSelectedRows();
    void clickOnTheBoxToggles();
    void comparisonBoxes();
    void displayBoxes();
    void allOrNone();
    void headingsSort();
    void enterDoesNotExecute();
    void enterPressesTheFocusedButton();
    void heldBackRowsAreListed();
    void earlierWarningsAreListed();
    void statusListIsCleared();
    void statusLinesComeHere();
    void keyboardReachesEverything();
    void everythingHasAName();

private:
    void open(SyncBlocks blocks = {});
    template <typename Widget>
    [[nodiscard]] Widget *child(const char *name) const
    {
        return m_window->findChild<Widget *>(QString::fromLatin1(name));
    }
    [[nodiscard]] QTableView &grid() const { return *child<QTableView>("vCmp"); }
    [[nodiscard]] bool ticked(const char *path) const
    {
        return m_review->row(rowOf(*m_review, QString::fromLatin1(path))).ticked;
    }
    [[nodiscard]] int place(const char *path) const
    {
        return rowOf(*m_review, QString::fromLatin1(path));
    }
    [[nodiscard]] QString nameAt(int row) const
    {
        return grid().model()->index(row, NameColumn).data().toString();
    }

    std::unique_ptr<CaughtStreams> m_streams;
    std::unique_ptr<ConsolePrinter> m_printer;
    Flags m_flags;
    std::unique_ptr<WindowFrontEnd> m_desk;
    std::unique_ptr<ReviewTables> m_tables;
    std::unique_ptr<SyncReview> m_review;
    std::unique_ptr<ScriptedWorker> m_worker;
    std::unique_ptr<Execution> m_execution;
    std::unique_ptr<sfSync> m_window;
};

void tst_sfSync::init()
{
    m_streams = std::make_unique<CaughtStreams>();
    m_printer = std::make_unique<ConsolePrinter>(m_streams->results(), m_streams->messages());
    m_flags = {};
    m_desk = std::make_unique<WindowFrontEnd>(*m_printer, m_flags);
    m_tables = std::make_unique<ReviewTables>();
    fillEveryKind(*m_tables);
    m_worker = std::make_unique<ScriptedWorker>();
    m_execution = std::make_unique<Execution>(*m_worker, *m_desk, m_flags);
}

void tst_sfSync::cleanup()
{
    m_window.reset();
}

void tst_sfSync::open(SyncBlocks blocks)
{
    m_review = m_tables->review(false, std::move(blocks));
    m_window = std::make_unique<sfSync>(*m_review, *m_execution, *m_desk);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
}

void tst_sfSync::spaceTogglesSelectedRows()
{
    open();
    QVERIFY(grid().hasFocus());
    QCOMPARE(grid().currentIndex().row(), 0);
    // The root has no box; the two root files below it have.
    QTest::keyClick(&grid(), Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(&grid(), Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(&grid(), Qt::Key_Space);
    QVERIFY(!ticked("/added.html"));
    QVERIFY(!ticked("/gone.html"));
    QVERIFY(ticked("/both/newer.html"));
    QTest::keyClick(&grid(), Qt::Key_Space);
    QVERIFY(ticked("/added.html"));
    QVERIFY(ticked("/gone.html"));
    QCOMPARE(grid().selectionModel()->selectedRows().size(), 3);
}

void tst_sfSync::clickOnTheBoxToggles()
{
    open();
    clickCell(grid(), place("/added.html"), TickColumn);
    QVERIFY(!ticked("/added.html"));
    clickCell(grid(), place("/added.html"), NameColumn);
    QVERIFY(!ticked("/added.html"));
    clickCell(grid(), place("/added.html"), TickColumn);
    QVERIFY(ticked("/added.html"));
    clickCell(grid(), place("/new/a.css"), TickColumn);
    QVERIFY(m_review->included(place("/new/a.css")));
}

void tst_sfSync::comparisonBoxes()
{
    open();
    auto *counts = child<QLabel>("lbCount");
    QVERIFY2(counts->text().contains(QStringLiteral("上書 1 件")), qPrintable(counts->text()));
    clickCell(grid(), place("/gone.html"), TickColumn);
    QTest::mouseClick(child<QCheckBox>("chCmp0"), Qt::LeftButton);
    QVERIFY(ticked("/both/same.html"));
    QVERIFY2(counts->text().contains(QStringLiteral("上書 2 件")), qPrintable(counts->text()));
    QVERIFY2(!ticked("/gone.html"), "a tick made by hand survives");
    QTest::mouseClick(child<QCheckBox>("chCmp1"), Qt::LeftButton);
    QVERIFY(!ticked("/new/"));
    QVERIFY(!ticked("/old/"));
}

void tst_sfSync::displayBoxes()
{
    open();
    QVERIFY(child<QCheckBox>("chDsp0")->isChecked());
    QVERIFY(child<QCheckBox>("chDsp1")->isChecked());
    const int all = grid().model()->rowCount();
    QTest::mouseClick(child<QCheckBox>("chDsp1"), Qt::LeftButton);
    QCOMPARE(grid().model()->rowCount(), all - 3);
    QTest::mouseClick(child<QCheckBox>("chDsp0"), Qt::LeftButton);
    QCOMPARE(grid().model()->rowCount(), all - 4);
    QTest::mouseClick(child<QCheckBox>("chDsp1"), Qt::LeftButton);
    QTest::mouseClick(child<QCheckBox>("chDsp0"), Qt::LeftButton);
    QCOMPARE(grid().model()->rowCount(), all);
}

void tst_sfSync::allOrNone()
{
    open();
    QTest::mouseClick(child<QPushButton>("cmRemoveNone"), Qt::LeftButton);
    QVERIFY(!ticked("/gone.html"));
    QVERIFY(!ticked("/old/"));
    QVERIFY(ticked("/new/"));
    QTest::mouseClick(child<QPushButton>("cmRemoveAll"), Qt::LeftButton);
    QVERIFY(ticked("/gone.html"));
    QTest::mouseClick(child<QPushButton>("cmAddNone"), Qt::LeftButton);
    QTest::mouseClick(child<QPushButton>("cmOverwriteNone"), Qt::LeftButton);
    QVERIFY(!ticked("/added.html"));
    QVERIFY(!ticked("/both/newer.html"));
    QVERIFY(ticked("/old/"));
}

void tst_sfSync::headingsSort()
{
    open();
    QHeaderView *headings = grid().horizontalHeader();
    const auto click = [&] {
        const int x = headings->sectionViewportPosition(NameColumn) + 30;
        QTest::mouseClick(headings->viewport(), Qt::LeftButton, {}, {x, headings->height() - 6});
        QTest::qWait(QApplication::doubleClickInterval() / 4);
    };
    const QString first = nameAt(0);
    const QString print = m_review->print();
    click();
    QCOMPARE(nameAt(grid().model()->rowCount() - 1), QStringLiteral("same.html  (/both)"));
    click();
    QCOMPARE(nameAt(0), QStringLiteral("same.html  (/both)"));
    click();
    QCOMPARE(nameAt(0), first);
    QCOMPARE(nameAt(1), QStringLiteral("added.html"));
    QCOMPARE(m_review->print(), print);
}

void tst_sfSync::enterDoesNotExecute()
{
    open();
    QTest::keyClick(&grid(), Qt::Key_Return);
    child<QCheckBox>("chCmp0")->setFocus();
    QTest::keyClick(child<QCheckBox>("chCmp0"), Qt::Key_Enter);
    QVERIFY(m_worker->worked.isEmpty());
    QVERIFY(m_window->isVisible());
}

void tst_sfSync::enterPressesTheFocusedButton()
{
    open();
    auto *none = child<QPushButton>("cmAddNone");
    none->setFocus();
    QTest::keyClick(none, Qt::Key_Return);
    QVERIFY(!ticked("/added.html"));
    QVERIFY(m_worker->worked.isEmpty());
}

void tst_sfSync::heldBackRowsAreListed()
{
    SyncBlocks blocks;
    blocks.add(QStringLiteral("/old/c.css"), QStringLiteral("一覧が途中で切れました"));
    open(blocks);
    const QString text = child<QPlainTextEdit>("txMsg")->toPlainText();
    QVERIFY2(text.contains(QStringLiteral("/old [ﾌｫﾙﾀﾞ]: 一覧が途中で切れました")),
             qPrintable(text));
    QCOMPARE(grid().model()->index(place("/old/"), ActionColumn).data().toString(),
             QStringLiteral("対象外"));
    clickCell(grid(), place("/old/"), TickColumn);
    QVERIFY(!ticked("/old/"));
    QVERIFY(child<QLabel>("lbCount")->text().contains(QStringLiteral("保留 1 件")));
}

void tst_sfSync::earlierWarningsAreListed()
{
    m_desk->warn(QStringLiteral("/www/x は同期しません: 一覧を信用できません"));
    open();
    QVERIFY(child<QPlainTextEdit>("txMsg")->toPlainText().startsWith(QStringLiteral("/www/x は")));
    m_desk->warn(QStringLiteral("後から"));
    QVERIFY(child<QPlainTextEdit>("txMsg")->toPlainText().endsWith(QStringLiteral("後から")));
    QVERIFY(m_streams->messageText().contains(QStringLiteral("後から")));
}

void tst_sfSync::statusListIsCleared()
{
    open();
    auto *list = child<QListWidget>("ltMsg");
    for (int i = 1; i <= 51; ++i)
        m_window->addLine(QString::number(i));
    QCOMPARE(list->count(), 51);
    m_window->addLine(QStringLiteral("52"));
    QCOMPARE(list->count(), 1);
    m_window->addLine(QStringLiteral("53"));
    QCOMPARE(list->count(), 2);
    QCOMPARE(list->currentItem()->text(), QStringLiteral("53"));
}

void tst_sfSync::statusLinesComeHere()
{
    open();
    m_desk->addStatus(QStringLiteral("host へ接続しました"));
    QCOMPARE(child<QListWidget>("ltMsg")->count(), 1);
    m_window->hide();
    m_desk->addStatus(QStringLiteral("nobody sees this"));
    QCOMPARE(child<QListWidget>("ltMsg")->count(), 1);
}

void tst_sfSync::keyboardReachesEverything()
{
    open();
    QStringList reached;
    for (int i = 0; i < 30 && QApplication::focusWidget() != nullptr; ++i) {
        reached += QApplication::focusWidget()->objectName();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    for (const char *name : {"vCmp", "chCmp0", "chCmp1", "chDsp0", "chDsp1", "cmAddAll",
                             "cmAddNone", "cmRemoveAll", "cmRemoveNone", "cmOverwriteAll",
                             "cmOverwriteNone", "ltMsg", "txMsg", "cmRet", "cmCancel"})
        QVERIFY2(reached.contains(QLatin1String(name)), name);
    const auto at = [&](const char *name) { return reached.indexOf(QLatin1String(name)); };
    QVERIFY(at("vCmp") < at("ltMsg"));
    QVERIFY(at("ltMsg") < at("cmRet"));
    QVERIFY(at("cmRet") < at("cmCancel"));
    QVERIFY(at("chCmp0") < at("chCmp1"));
}

void tst_sfSync::everythingHasAName()
{
    open();
    for (const char *name : {"vCmp", "chCmp0", "chDsp1", "cmAddAll", "cmOverwriteNone", "ltMsg",
                             "txMsg", "pgSync", "cmRet", "cmCancel"}) {
        const auto *widget = child<QWidget>(name);
        QVERIFY2(widget != nullptr, name);
        QVERIFY2(!widget->accessibleName().isEmpty(), name);
    }
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_sfSync)
#include "tst_sfSync.moc"
