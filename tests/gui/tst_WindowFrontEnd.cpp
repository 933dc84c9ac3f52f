#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QMainWindow>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>
#include <QWindow>

#include "gui/WindowDriver.h"
#include "localpane/sfOwt.h"
#include "mainwin/WindowFrontEnd.h"
#include "shared/ConsolePrinter.h"
#include "shared/Flags.h"
#include "support/CaughtStreams.h"

namespace venlo::test
{

namespace
{
using namespace std::chrono_literals;

class Window : public StatusTarget, public OperationView, public MessageLineSink
{
public:
    [[nodiscard]] bool isShowing() const override { return showing; }
    void addLines(const QStringList &added) override
    {
        ++shows;
        lines += added;
    }
    void showProgress(const TransferProgress &progress) override { lines += progress.name; }
    void showOutcome(const Outcome &outcome) override { lines += outcome.from; }
    void showWarning(const QString &line) override { lines += line; }
    void showMessageLine(const QString &text) override { lines += text; }

    bool showing = true;
    int shows = 0;
    QStringList lines;
};

QRect secondScreen()
{
    return {800, 0, 1000, 900};
}
} // namespace

class tst_WindowFrontEnd : public QObject
{
    Q_OBJECT

public:
    /// Two screens side by side.
    static void initMain();

private Q_SLOTS:
    void init();
    void answers_data();
    void answers();
    void boxesCloseByThemselves_data();
    void boxesCloseByThemselves();
    void boxesStayWithoutTheFlag();
    void boxesBelongToTheMainWindow();
    void anInterruptIsCancel();
    void overwriteUnderTheFlag();
    void waitWindow();
    void waitingBelongsToTheMainWindow();
    void closingTheWaitWindowCancels();
    void statusGoesToTheFirstShowingWindow();
    void fastStatusLinesAreShownTogether();
    void waitingStatusLinesComeBeforeWhatFollows();
    void messageLineIsKept();
    void warnings();
    void outcomesArePrinted();
    void cancelLastsUntilTheNextOperation();
    void stopLetsTheFileInHandEnd();
    void yieldDoesNotNest();

private:
    std::unique_ptr<CaughtStreams> m_streams;
    std::unique_ptr<ConsolePrinter> m_printer;
    Flags m_flags;
    bool m_interrupted = false;
    std::unique_ptr<WindowFrontEnd> m_desk;
};

void tst_WindowFrontEnd::initMain()
{
    static const QTemporaryDir folder;
    const auto screen = [](const QRect &at) {
        return QStringLiteral(R"({"name": "%1", "x": %1, "y": %2, "width": %3, "height": %4,)"
                              R"( "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1})")
            .arg(at.x())
            .arg(at.y())
            .arg(at.width())
            .arg(at.height())
            .toLatin1();
    };
    // Named without its folder, whose path may hold the colon that parts the options.
    QFile file(folder.filePath(QStringLiteral("screens")));
    const QByteArray screens =
        R"({"screens": [)" + screen({0, 0, 800, 800}) + ", " + screen(secondScreen()) + "]}";
    if (!file.open(QIODevice::WriteOnly) || file.write(screens) != screens.size() ||
        !QDir::setCurrent(folder.path()))
        qFatal("the screens cannot be described");
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=screens");
}

void tst_WindowFrontEnd::init()
{
    m_streams = std::make_unique<CaughtStreams>();
    m_printer = std::make_unique<ConsolePrinter>(m_streams->results(), m_streams->messages());
    m_flags = {};
    m_interrupted = false;
    m_desk = std::make_unique<WindowFrontEnd>(
        *m_printer, m_flags, WindowFrontEnd::Options{200ms, [this] { return m_interrupted; }});
}

void tst_WindowFrontEnd::answers_data()
{
    QTest::addColumn<bool>("retry");
    QTest::addColumn<int>("key");
    QTest::addColumn<bool>("yes");
    QTest::newRow("Enter is OK") << false << int(Qt::Key_Return) << true;
    QTest::newRow("Escape is Cancel") << false << int(Qt::Key_Escape) << false;
    QTest::newRow("Enter is Retry") << true << int(Qt::Key_Return) << true;
    QTest::newRow("Escape is Cancel of Retry") << true << int(Qt::Key_Escape) << false;
}

void tst_WindowFrontEnd::answers()
{
    QFETCH(bool, retry);
    QFETCH(int, key);
    QFETCH(bool, yes);
    QString title;
    QString text;
    whenShown(QStringLiteral("messageBox"), [&](QWidget &box) {
        title = box.windowTitle();
        text = qobject_cast<QMessageBox *>(&box)->text();
        QTest::keyClick(&box, static_cast<Qt::Key>(key));
    });
    const QString asked = QStringLiteral("<b>x</b> を削除します");
    QCOMPARE(retry ? m_desk->retryOrCancel(asked) : m_desk->question(asked), yes);
    QCOMPARE(title, QStringLiteral("Venlo FTP"));
    QCOMPARE(text, asked);
    QVERIFY(m_streams->messageText().isEmpty());
}

void tst_WindowFrontEnd::boxesCloseByThemselves_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<bool>("yes");
    QTest::newRow("a message") << 0 << true;
    QTest::newRow("a question is OK") << 1 << true;
    QTest::newRow("a failure is not retried for ever") << 2 << false;
}

void tst_WindowFrontEnd::boxesCloseByThemselves()
{
    QFETCH(int, kind);
    QFETCH(bool, yes);
    m_flags.batch = true;
    m_flags.unattendedRun = true;
    QElapsedTimer time;
    time.start();
    bool answer = true;
    const QString text = QStringLiteral("host へ接続できません\r設定を確認して下さい");
    if (kind == 0)
        m_desk->message(text);
    else
        answer = kind == 1 ? m_desk->question(text) : m_desk->retryOrCancel(text);
    QCOMPARE(answer, yes);
    QVERIFY(time.elapsed() >= 190);
    QCOMPARE(m_streams->messageText(),
             QStringLiteral("host へ接続できません\n設定を確認して下さい\n"));
}

void tst_WindowFrontEnd::boxesStayWithoutTheFlag()
{
    m_flags.batch = true; // as a window that was opened under "/b" has it
    QElapsedTimer time;
    time.start();
    whenShown(QStringLiteral("messageBox"), [](QWidget &box) {
        QTest::qWait(600);
        QVERIFY(box.isVisible());
        press(box, QStringLiteral("OK"));
    });
    m_desk->message(QStringLiteral("x"));
    QVERIFY(time.elapsed() >= 600);
}

/// Also while the person works in another program, where no window of ours is active.
void tst_WindowFrontEnd::boxesBelongToTheMainWindow()
{
    QMainWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QApplication::setActiveWindow(nullptr);
    const QWidget *owner = nullptr;
    whenShown(QStringLiteral("messageBox"), [&](QWidget &box) {
        owner = box.parentWidget();
        QTest::keyClick(&box, Qt::Key_Return);
    });
    m_desk->message(QStringLiteral("終わりました"));
    QCOMPARE(owner, &window);
}

void tst_WindowFrontEnd::anInterruptIsCancel()
{
    whenShown(QStringLiteral("messageBox"), [this](QWidget &) { m_interrupted = true; });
    QVERIFY(!m_desk->question(QStringLiteral("x")));
    QVERIFY(m_desk->cancelled());
}

void tst_WindowFrontEnd::overwriteUnderTheFlag()
{
    m_flags.batch = true;
    m_flags.unattendedRun = true;
    const OverwriteAnswer answer = m_desk->askOverwrite({QStringLiteral("a.html"), {}, {}, {}, {}});
    QVERIFY2(!answer.overwrite, "nobody said so");
    QCOMPARE(answer.mode, OverwriteMode::CancelAll);
    QVERIFY(m_streams->messageText().startsWith(QStringLiteral("a.html")));
}

void tst_WindowFrontEnd::waitWindow()
{
    const auto shown = [] {
        int count = 0;
        for (const QWidget *window : QApplication::topLevelWidgets())
            count += window->objectName() == QLatin1String("sfWait") && window->isVisible() ? 1 : 0;
        return count;
    };
    m_desk->showWait(QStringLiteral("一つ目"));
    m_desk->showWait(QStringLiteral("二つ目"));
    QCOMPARE(shown(), 1);
    QVERIFY(QApplication::overrideCursor() != nullptr);
    m_desk->closeWait();
    QCOMPARE(shown(), 0);
    QVERIFY(QApplication::overrideCursor() == nullptr);
    m_desk->closeWait();
    QVERIFY(QApplication::overrideCursor() == nullptr);
}

void tst_WindowFrontEnd::waitingBelongsToTheMainWindow()
{
    const auto waiting = [] {
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (window->objectName() == QLatin1String("sfWait") && window->isVisible())
                return window;
        }
        qFatal("no wait window shows");
    };
    m_desk->showWait(QStringLiteral("起動中です"));
    QVERIFY2(waiting()->windowHandle()->transientParent() == nullptr, "nothing else shows yet");
    m_desk->closeWait();
    {
        QMainWindow main;
        main.setGeometry({secondScreen().center(), QSize(300, 200)});
        main.show();
        QVERIFY(QTest::qWaitForWindowActive(&main));
        QCOMPARE(main.screen()->geometry(), secondScreen());
        m_desk->showWait(QStringLiteral("比較しています"));
        QVERIFY(QTest::qWaitForWindowActive(waiting()));
        m_desk->showWait(QStringLiteral("更新しています"));
        QCOMPARE(waiting()->windowHandle()->transientParent(), main.windowHandle());
        QVERIFY(secondScreen().contains(waiting()->geometry()));
        m_desk->closeWait();
    }
    // Its owner has gone, the window has not.
    m_desk->showWait(QStringLiteral("終了中です"));
    QVERIFY(waiting()->windowHandle()->transientParent() == nullptr);
    m_desk->closeWait();
}

void tst_WindowFrontEnd::closingTheWaitWindowCancels()
{
    m_desk->showWait(QString());
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->objectName() == QLatin1String("sfWait"))
            QTest::keyClick(window, Qt::Key_Escape);
    }
    QVERIFY(m_desk->cancelled());
    m_desk->closeWait();
}

void tst_WindowFrontEnd::statusGoesToTheFirstShowingWindow()
{
    Window main;
    Window sync;
    m_desk->addStatusTarget(main, StatusRank::MainWindow);
    m_desk->addStatusTarget(sync, StatusRank::SyncWindow);
    m_desk->addStatus(QStringLiteral("1"));
    QCOMPARE(sync.lines, QStringList{QStringLiteral("1")});
    sync.showing = false;
    m_desk->addStatus(QStringLiteral("2"));
    main.showing = false;
    m_desk->addStatus(QStringLiteral("3"));
    m_desk->removeStatusTarget(sync);
    main.showing = true;
    sync.showing = true;
    m_desk->addStatus(QStringLiteral("4"));
    QTRY_COMPARE(main.lines.size(), 2);
    m_desk->removeStatusTarget(main);
    QCOMPARE(sync.lines, QStringList{QStringLiteral("1")});
    QCOMPARE(main.lines, (QStringList{QStringLiteral("2"), QStringLiteral("4")}));
}

void tst_WindowFrontEnd::fastStatusLinesAreShownTogether()
{
    Window main;
    m_desk->addStatusTarget(main, StatusRank::MainWindow);
    QStringList said;
    for (int line = 0; line < 1000; ++line) {
        said += QString::number(line);
        m_desk->addStatus(said.constLast());
    }
    QVERIFY2(main.shows < 1000, qPrintable(QString::number(main.shows)));
    QTRY_COMPARE(main.lines, said);
    m_desk->removeStatusTarget(main);
}

void tst_WindowFrontEnd::waitingStatusLinesComeBeforeWhatFollows()
{
    Window main;
    Window sync;
    sync.showing = false;
    m_desk->addStatusTarget(main, StatusRank::MainWindow);
    m_desk->addStatusTarget(sync, StatusRank::SyncWindow);
    m_desk->addOperationView(main);
    m_desk->addStatus(QStringLiteral("1"));
    m_desk->addStatus(QStringLiteral("2"));
    m_desk->warn(QStringLiteral("warning"));
    m_desk->addStatus(QStringLiteral("3"));
    m_desk->addStatus(QStringLiteral("4"));
    sync.showing = true;
    m_desk->addStatus(QStringLiteral("5"));
    QCOMPARE(main.lines,
             (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("warning"),
                          QStringLiteral("3"), QStringLiteral("4")}));
    QCOMPARE(sync.lines, QStringList{QStringLiteral("5")});
    m_desk->addStatus(QStringLiteral("6"));
    sync.showing = false; // closed before it could show
    m_desk->addStatus(QStringLiteral("7"));
    QTRY_COMPARE(main.lines.size(), 6);
    QCOMPARE(sync.lines.size(), 1);
    m_desk->removeOperationView(main);
    m_desk->removeStatusTarget(sync);
    m_desk->removeStatusTarget(main);
}

void tst_WindowFrontEnd::messageLineIsKept()
{
    m_desk->setMessageLine(QStringLiteral("早い"));
    Window window;
    m_desk->setMessageLineSink(&window);
    m_desk->setMessageLine(QString());
    QCOMPARE(window.lines, (QStringList{QStringLiteral("早い"), QString()}));
    m_desk->setMessageLineSink(nullptr);
    m_desk->setMessageLine(QStringLiteral("後"));
    QCOMPARE(window.lines.size(), 2);
}

void tst_WindowFrontEnd::warnings()
{
    m_desk->warn(QStringLiteral("一"));
    Window window;
    m_desk->addOperationView(window);
    m_desk->warn(QStringLiteral("二"));
    QCOMPARE(window.lines, QStringList{QStringLiteral("二")});
    QCOMPARE(m_desk->takeWarnings(), QStringList{QStringLiteral("一")});
    QVERIFY(m_desk->takeWarnings().isEmpty());
    QCOMPARE(m_streams->messageText(), QStringLiteral("一\n二\n"));
}

void tst_WindowFrontEnd::outcomesArePrinted()
{
    Window window;
    m_desk->addOperationView(window);
    m_desk->outcome(
        {Outcome::Kind::Uploaded, QStringLiteral("C:\\x\\y"), QStringLiteral("/site/y"), {}});
    m_desk->progress({QStringLiteral("y"), 1, 2});
    m_desk->printResult(QStringLiteral("結果"));
    QCOMPARE(m_streams->resultText(), QStringLiteral("ｱｯﾌﾟﾛｰﾄﾞ  C:\\x\\y → /site/y\n結果\n"));
    QCOMPARE(window.lines, (QStringList{QStringLiteral("C:\\x\\y"), QStringLiteral("y")}));
}

void tst_WindowFrontEnd::cancelLastsUntilTheNextOperation()
{
    QVERIFY(!m_desk->cancelled());
    m_desk->requestCancel();
    QVERIFY(m_desk->cancelled());
    m_desk->beginOperation();
    QVERIFY(!m_desk->cancelled());
    m_interrupted = true;
    m_desk->beginOperation();
    QVERIFY2(m_desk->cancelled(), "nothing begins anew once the program is to end");
}

void tst_WindowFrontEnd::stopLetsTheFileInHandEnd()
{
    m_desk->requestStop();
    QVERIFY(m_desk->stopWanted());
    QVERIFY(!m_desk->cancelled());
    m_desk->outcome({Outcome::Kind::Uploaded, QStringLiteral("a"), QStringLiteral("/a"), {}});
    QVERIFY2(m_desk->cancelled(), "the next file of a folder must not begin");
    m_desk->beginOperation();
    QVERIFY(!m_desk->stopWanted());
    m_desk->outcome({Outcome::Kind::Uploaded, QStringLiteral("b"), QStringLiteral("/b"), {}});
    QVERIFY(!m_desk->cancelled());
    m_desk->requestCancel();
    QVERIFY(m_desk->stopWanted());
}

void tst_WindowFrontEnd::yieldDoesNotNest()
{
    int depth = 0;
    int deepest = 0;
    int runs = 0;
    std::function<void()> step = [&] {
        deepest = std::max(deepest, ++depth);
        if (++runs < 5)
            QMetaObject::invokeMethod(this, step, Qt::QueuedConnection);
        m_desk->yield();
        --depth;
    };
    QMetaObject::invokeMethod(this, step, Qt::QueuedConnection);
    for (int i = 0; i < 20 && runs < 5; ++i)
        m_desk->yield();
    QCOMPARE(runs, 5);
    QCOMPARE(deepest, 1);
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_WindowFrontEnd)
#include "tst_WindowFrontEnd.moc"
