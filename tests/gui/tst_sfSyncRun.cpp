#include <stdexcept>

#include <QCheckBox>
#include <QLabel>
#include <QMainWindow>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QTimer>

#include "gui/ReviewFixture.h"
#include "gui/WindowDriver.h"
#include "mainwin/WindowFrontEnd.h"
#include "shared/ConsolePrinter.h"
#include "shared/Flags.h"
#include "support/CaughtStreams.h"
#include "sync/Execution.h"
#include "sync/windows/ReviewSort.h"
#include "sync/windows/WindowReviewHost.h"

namespace venlo::test
{

/// The review window while and after it executes.
class tst_sfSyncRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void executesAndCloses();
    void sortingDoesNotChangeTheOrder();
    void standsBeforeTheMainWindow();
    void closedUnexecuted();
    void nothingTicked();
    void unattendedClosesByItself();
    void unattendedLeavesHeldRowsAlone();
    void aCancelBeforeAnUnattendedRunCounts();
    void cancelLetsTheFileInHandEnd();
    void cancelKeepsTheRest();
    void escapeCancelsAndStays();
    void closingCancelsFirst();
    void onlyCancelWorksWhileRunning();
    void progressIsShown();
    void leftRowsAreTold();
    void aFailureReachesTheCaller();
    void anInterruptClosesTheWindow();

private:
    [[nodiscard]] int act(bool unattended = false);
    void inWindow(std::function<void(QWidget &)> action)
    {
        whenShown(QStringLiteral("sfSync"), std::move(action));
    }
    static void click(QWidget &window, const char *name)
    {
        auto *button = window.findChild<QPushButton *>(QString::fromLatin1(name));
        QVERIFY2(button != nullptr, name);
        QTest::mouseClick(button, Qt::LeftButton);
    }
    void confirmFinish();
    static QWidget &window() { return *QApplication::activeModalWidget(); }

    std::unique_ptr<CaughtStreams> m_streams;
    std::unique_ptr<ConsolePrinter> m_printer;
    Flags m_flags;
    bool m_interrupted = false;
    std::unique_ptr<WindowFrontEnd> m_desk;
    std::unique_ptr<ReviewTables> m_tables;
    std::unique_ptr<SyncReview> m_review;
    std::unique_ptr<ScriptedWorker> m_worker;
    QStringList m_boxes;
};

namespace
{
const QStringList &everyStep()
{
    static const QStringList steps{QStringLiteral("/new/"), QStringLiteral("/old/"),
                                   QStringLiteral("/added.html"), QStringLiteral("/gone.html"),
                                   QStringLiteral("/both/newer.html")};
    return steps;
}
} // namespace

void tst_sfSyncRun::init()
{
    m_streams = std::make_unique<CaughtStreams>();
    m_printer = std::make_unique<ConsolePrinter>(m_streams->results(), m_streams->messages());
    m_flags = {};
    m_interrupted = false;
    m_boxes.clear();
    WindowFrontEnd::Options options;
    options.interrupted = [this] { return m_interrupted; };
    m_desk = std::make_unique<WindowFrontEnd>(*m_printer, m_flags, options);
    m_tables = std::make_unique<ReviewTables>();
    fillEveryKind(*m_tables);
    m_review = m_tables->review();
    m_worker = std::make_unique<ScriptedWorker>();
}

void tst_sfSyncRun::cleanup()
{
    QVERIFY2(QApplication::activeModalWidget() == nullptr, "a window was left open");
}

int tst_sfSyncRun::act(bool unattended)
{
    Execution execution(*m_worker, *m_desk, m_flags);
    WindowReviewHost host(*m_desk, [this] { return m_desk->windowInFront(); });
    return host.act(*m_review, execution, unattended);
}

void tst_sfSyncRun::confirmFinish()
{
    whenShown(QStringLiteral("messageBox"), [this](QWidget &box) {
        m_boxes += qobject_cast<QMessageBox *>(&box)->text();
        press(box, QStringLiteral("OK"));
    });
}

void tst_sfSyncRun::executesAndCloses()
{
    inWindow([this](QWidget &window) {
        confirmFinish();
        click(window, "cmRet");
    });
    QCOMPARE(act(), 1);
    QCOMPARE(m_boxes, QStringList{QStringLiteral("同期が終了しました この画面は閉じます")});
    QCOMPARE(m_worker->worked, everyStep());
    QVERIFY(m_flags.unattendedTransfer);
}

void tst_sfSyncRun::sortingDoesNotChangeTheOrder()
{
    inWindow([this](QWidget &window) {
        window.findChild<QTableView *>()->sortByColumn(NameColumn, Qt::DescendingOrder);
        confirmFinish();
        click(window, "cmRet");
    });
    QCOMPARE(act(), 1);
    QCOMPARE(m_worker->worked, everyStep());
}

/// The wait window of the comparison, which was the active one, has just gone.
void tst_sfSyncRun::standsBeforeTheMainWindow()
{
    QMainWindow main;
    main.show();
    QVERIFY(QTest::qWaitForWindowActive(&main));
    m_desk->showWait(QStringLiteral("比較しています"));
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->objectName() == QLatin1String("sfWait"))
            QVERIFY(QTest::qWaitForWindowActive(window));
    }
    m_desk->closeWait();
    const QWidget *owner = nullptr;
    inWindow([&owner](QWidget &window) {
        owner = window.parentWidget();
        QTest::keyClick(&window, Qt::Key_Escape);
    });
    QCOMPARE(act(), -1);
    QCOMPARE(owner, &main);
}

void tst_sfSyncRun::closedUnexecuted()
{
    inWindow([](QWidget &window) { QTest::keyClick(&window, Qt::Key_Escape); });
    QCOMPARE(act(), -1);
    QVERIFY(m_worker->worked.isEmpty());
    QVERIFY(!m_flags.unattendedTransfer);
}

void tst_sfSyncRun::nothingTicked()
{
    inWindow([this](QWidget &window) {
        for (const char *name : {"cmAddNone", "cmRemoveNone", "cmOverwriteNone"})
            click(window, name);
        confirmFinish();
        click(window, "cmRet");
    });
    QCOMPARE(act(), -1);
    QVERIFY(m_worker->worked.isEmpty());
}

void tst_sfSyncRun::unattendedClosesByItself()
{
    m_flags.batch = true;
    QString seen;
    m_worker->onRow = [&](const QString &) {
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (window->isVisible())
                seen = window->objectName();
        }
    };
    QCOMPARE(act(true), 1);
    QCOMPARE(m_worker->worked, everyStep());
    QCOMPARE(seen, QStringLiteral("sfSync"));
    QVERIFY(m_streams->messageText().isEmpty());
}

void tst_sfSyncRun::unattendedLeavesHeldRowsAlone()
{
    SyncBlocks blocks;
    blocks.add(QStringLiteral("/old/c.css"), QStringLiteral("一覧が途中で切れました"));
    m_review = m_tables->review(false, blocks);
    QCOMPARE(act(true), 1);
    QVERIFY(!m_worker->worked.contains(QStringLiteral("/old/")));
    QVERIFY(m_review->leftOver());
}

void tst_sfSyncRun::aCancelBeforeAnUnattendedRunCounts()
{
    m_desk->requestCancel();
    QCOMPARE(act(true), 0);
    QVERIFY(m_worker->worked.isEmpty());
}

void tst_sfSyncRun::cancelLetsTheFileInHandEnd()
{
    bool cutShort = true;
    m_worker->onRow = [&](const QString &) {
        click(window(), "cmCancel");
        cutShort = m_desk->cancelled();
    };
    inWindow([](QWidget &window) {
        click(window, "cmRet");
        QTest::keyClick(&window, Qt::Key_Escape);
    });
    QCOMPARE(act(), 0);
    QVERIFY(!cutShort);
    QCOMPARE(m_worker->worked.size(), 1);
}

void tst_sfSyncRun::cancelKeepsTheRest()
{
    m_worker->onRow = [](const QString &path) {
        if (path == QLatin1String("/old/"))
            click(window(), "cmCancel");
    };
    inWindow([this](QWidget &window) {
        click(window, "cmRet");
        QVERIFY(window.isVisible());
        QCOMPARE(m_worker->worked.size(), 2);
        QCOMPARE(m_review->row(rowOf(*m_review, QStringLiteral("/old/"))).state, RowState::Done);
        QCOMPARE(m_review->pendingCount(), 3);
        m_worker->onRow = {};
        confirmFinish();
        click(window, "cmRet");
    });
    QCOMPARE(act(), 1);
    QCOMPARE(m_worker->worked, everyStep());
}

void tst_sfSyncRun::escapeCancelsAndStays()
{
    m_worker->onRow = [](const QString &) { QTest::keyClick(&window(), Qt::Key_Escape); };
    inWindow([this](QWidget &window) {
        click(window, "cmRet");
        QVERIFY(window.isVisible());
        QCOMPARE(m_worker->worked.size(), 1);
        QTest::keyClick(&window, Qt::Key_Escape);
    });
    QCOMPARE(act(), 0);
    QCOMPARE(m_worker->worked.size(), 1);
}

void tst_sfSyncRun::closingCancelsFirst()
{
    m_worker->onRow = [](const QString &) {
        QVERIFY2(!window().close(), "still unwinding");
        QVERIFY(window().isVisible());
    };
    inWindow([](QWidget &window) { click(window, "cmRet"); });
    QCOMPARE(act(), 0);
    QCOMPARE(m_worker->worked.size(), 1);
    QCOMPARE(m_review->pendingCount(), 4);
    QVERIFY(m_boxes.isEmpty());
}

void tst_sfSyncRun::onlyCancelWorksWhileRunning()
{
    int looked = 0;
    m_worker->onRow = [&](const QString &) {
        ++looked;
        for (const char *name : {"cmRet", "cmAddAll", "cmRemoveNone"})
            QVERIFY2(!window().findChild<QPushButton *>(QString::fromLatin1(name))->isEnabled(),
                     name);
        QVERIFY(!window().findChild<QCheckBox *>(QStringLiteral("chCmp0"))->isEnabled());
        QVERIFY(window().findChild<QPushButton *>(QStringLiteral("cmCancel"))->isEnabled());
        auto &grid = *window().findChild<QTableView *>();
        const QString before = m_review->print();
        clickCell(grid, rowOf(*m_review, QStringLiteral("/both/newer.html")), TickColumn);
        QTest::keyClick(&grid, Qt::Key_Space);
        QCOMPARE(m_review->print(), before);
    };
    inWindow([this](QWidget &window) {
        confirmFinish();
        click(window, "cmRet");
    });
    QCOMPARE(act(), 1);
    QCOMPARE(looked, 5);
}

void tst_sfSyncRun::progressIsShown()
{
    QList<int> values;
    m_worker->onRow = [&](const QString &) {
        QTest::qWait(110);
        m_desk->progress({QStringLiteral("頁.html"), 1500, 3000});
        values += window().findChild<QProgressBar *>()->value();
        const QString text = window().findChild<QLabel *>(QStringLiteral("lbFile"))->text();
        QCOMPARE(text, QStringLiteral("頁.html  2KB / 3KB"));
        const QString counts = window().findChild<QLabel *>(QStringLiteral("lbCount"))->text();
        const QString done = QStringLiteral("済 %1 件").arg(m_worker->worked.size() - 1);
        QVERIFY2(counts.contains(done), qPrintable(counts));
    };
    inWindow([this](QWidget &window) {
        confirmFinish();
        click(window, "cmRet");
        QCOMPARE(window.findChild<QProgressBar *>()->value(), 1000);
    });
    QCOMPARE(act(), 1);
    QCOMPARE(values.size(), 5);
    QVERIFY(std::is_sorted(values.cbegin(), values.cend()));
    QVERIFY(values.last() > values.first());
    QVERIFY(values.last() < 1000);
}

void tst_sfSyncRun::leftRowsAreTold()
{
    m_worker->end = [this](const QString &path) {
        const bool refused = path == QLatin1String("/gone.html");
        if (refused)
            m_desk->outcome({Outcome::Kind::GivenUp,
                             QStringLiteral("/www/gone.html"),
                             {},
                             QStringLiteral("550 denied")});
        return RowEnd{true, refused, {}};
    };
    QString state;
    QString messages;
    inWindow([&](QWidget &window) {
        whenShown(QStringLiteral("messageBox"), [&, this](QWidget &box) {
            state = m_review->stateText(rowOf(*m_review, QStringLiteral("/gone.html")));
            messages = window.findChild<QPlainTextEdit *>()->toPlainText();
            m_boxes += qobject_cast<QMessageBox *>(&box)->text();
            QTimer::singleShot(0, this, [this] { confirmFinish(); });
            press(box, QStringLiteral("OK"));
        });
        click(window, "cmRet");
    });
    QCOMPARE(act(), 1);
    QCOMPARE(state, QStringLiteral("r"));
    QVERIFY(messages.contains(QStringLiteral("550 denied")));
    QCOMPARE(m_boxes.size(), 2);
    QCOMPARE(m_boxes.first(), QStringLiteral("1 件を実行できませんでした\n/www/gone.html"));
}

void tst_sfSyncRun::aFailureReachesTheCaller()
{
    m_worker->onRow = [](const QString &) { throw std::runtime_error("disk"); };
    inWindow([](QWidget &window) { click(window, "cmRet"); });
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, (void)act());
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, (void)act(true));
}

void tst_sfSyncRun::anInterruptClosesTheWindow()
{
    inWindow([this](QWidget &) { m_interrupted = true; });
    QCOMPARE(act(), -1);
    QVERIFY(m_worker->worked.isEmpty());
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_sfSyncRun)
#include "tst_sfSyncRun.moc"
