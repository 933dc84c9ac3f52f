#include <array>

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>

#include "mainwin/WindowFrontEnd.h"
#include "mainwin/popup/sfMsg.h"
#include "popup/RegistryFixture.h"
#include "shared/ConsolePrinter.h"
#include "shared/Flags.h"
#include "support/CaughtStreams.h"
#include "support/MainList.h"
#include "support/ShownToolTip.h"

namespace venlo::test
{

/// Counts how often a label's text was drawn.
class Repaints : public QObject
{
public:
    explicit Repaints(QWidget &widget) { widget.installEventFilter(this); }
    [[nodiscard]] int count() const { return m_count; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        m_count += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }

private:
    int m_count = 0;
};

/// The message window, at the front end that a run with a display has.
class tst_sfMsg : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void comesUpCentredAndModeless();
    void longTitlesWrap();
    void toolTipsShowNamesAsTheyAre();
    void statusLinesComeHere();
    void listIsClearedAboveFifty();
    void lastingLinesStayBehind();
    void onTwiceIsHarmless();
    void offClearsAndCloses();
    void closingByHandOnlyHides_data();
    void closingByHandOnlyHides();
    void cancelAsksOnce();
    void cancelFromElsewhereShows();
    void progressOfFileAndWhole();
    void longNamesGiveWay();
    void unknownSizes();
    void aFileTriedAgainCountsOnce();
    void hiddenWindowIgnoresProgress();
    void drawsTenTimesASecondAtMost();
    void typingElsewhereGoesOn();
    void enterPressesCancel_data();
    void enterPressesCancel();
    void everythingHasAName();

private:
    [[nodiscard]] QListWidget &list() { return part<QListWidget>(*m_window, "ltMsg"); }
    [[nodiscard]] QString label(const char *name) { return part<QLabel>(*m_window, name).text(); }

    Flags m_flags;
    std::unique_ptr<CaughtStreams> m_streams;
    std::unique_ptr<ConsolePrinter> m_printer;
    std::unique_ptr<WindowFrontEnd> m_desk;
    std::unique_ptr<QWidget> m_main;
    sfMsg *m_window = nullptr;
};

void tst_sfMsg::init()
{
    m_streams = std::make_unique<CaughtStreams>();
    m_printer = std::make_unique<ConsolePrinter>(m_streams->results(), m_streams->messages());
    m_desk = std::make_unique<WindowFrontEnd>(*m_printer, m_flags);
    m_main = std::make_unique<QWidget>();
    new QLineEdit(m_main.get());
    m_window = new sfMsg(*m_desk, m_main.get());
    m_main->resize(600, 400);
    m_main->show();
    m_main->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_main.get()));
}

void tst_sfMsg::cleanup()
{
    m_main.reset(); // takes the window out of the desk, which must outlive it
    m_desk->addStatus(QStringLiteral("nobody"));
    m_desk.reset();
}

void tst_sfMsg::comesUpCentredAndModeless()
{
    m_window->cOn();
    QVERIFY(m_window->isVisible());
    QVERIFY(!m_window->isModal());
    QCOMPARE(m_window->windowTitle(), QStringLiteral("Venlo FTP"));
    const QPoint off =
        m_window->geometry().center() - m_main->screen()->availableGeometry().center();
    QVERIFY(off.manhattanLength() <= 4);
    m_window->setTitleLine(QStringLiteral("/pub > <b>C:\\site Down Loading････"));
    QCOMPARE(label("lbTitle"), QStringLiteral("/pub > <b>C:\\site Down Loading････"));
    QVERIFY(part<QLabel>(*m_window, "lbTitle").textFormat() == Qt::PlainText);
}

void tst_sfMsg::longTitlesWrap()
{
    m_window->cOn();
    const int width = m_window->width();
    const QString title = QStringLiteral("/pub/") + QString(150, u'W') + QStringLiteral(" > C:\\") +
                          QString(150, u'W');
    m_window->setTitleLine(title);
    QTest::qWait(0);
    QCOMPARE(m_window->width(), width);
    QCOMPARE(label("lbTitle").remove(QChar(u'\u200b')), title);
    const auto &line = part<QLabel>(*m_window, "lbTitle");
    QCOMPARE(shownToolTip(line.toolTip()), title);
    QVERIFY(line.height() >= line.heightForWidth(line.width()));
    m_window->setTitleLine(QString(5000, u'W'));
    QTest::qWait(0);
    QCOMPARE(m_window->width(), width);
    QVERIFY(m_window->height() <= m_window->screen()->availableGeometry().height());
}

void tst_sfMsg::toolTipsShowNamesAsTheyAre()
{
    const QString name = QStringLiteral("<img src=\"a\"> R&D > &amp;");
    m_window->cOn();
    m_window->setTitleLine(name);
    QCOMPARE(shownToolTip(part<QLabel>(*m_window, "lbTitle").toolTip()), name);
    m_desk->addStatus(name);
    const auto &lines = part<QListWidget>(*m_window, "ltMsg");
    QCOMPARE(shownToolTip(lines.item(lines.count() - 1)->toolTip()), name);
    m_desk->progress({name, 2'000, 10'000});
    QTRY_COMPARE(shownToolTip(part<QLabel>(*m_window, "lbFile").toolTip()), name);
    QCOMPARE(part<QLabel>(*m_window, "lbFile").accessibleDescription(), name);
}

void tst_sfMsg::statusLinesComeHere()
{
    m_desk->addStatus(QStringLiteral("before"));
    m_window->cOn();
    QVERIFY(m_window->shown());
    QVERIFY(m_window->isShowing());
    m_desk->addStatus(QStringLiteral("1"));
    m_desk->addStatus(QStringLiteral("2"));
    QTRY_COMPARE(list().count(), 2);
    QCOMPARE(list().currentItem()->text(), QStringLiteral("2"));
    m_desk->warn(QStringLiteral("注意"));
    QCOMPARE(list().currentItem()->text(), QStringLiteral("注意"));
}

void tst_sfMsg::listIsClearedAboveFifty()
{
    m_window->cOn();
    for (int i = 1; i <= 51; ++i)
        m_desk->addStatus(QString::number(i));
    QTRY_COMPARE(list().count(), 51);
    m_desk->addStatus(QStringLiteral("52"));
    QTRY_COMPARE(list().count(), 1);
    QCOMPARE(list().item(0)->text(), QStringLiteral("52"));
}

void tst_sfMsg::lastingLinesStayBehind()
{
    MainList behind(*m_desk);
    m_window->cOn();
    m_window->addLastingLine(QStringLiteral("left out"));
    m_desk->addStatus(QStringLiteral("sent"));
    QTRY_COMPARE(list().count(), 2);
    QCOMPARE(list().item(0)->text(), QStringLiteral("left out"));
    QCOMPARE(behind.lines, QStringList());
    m_window->cOff();
    QTRY_COMPARE(behind.lines, QStringList{QStringLiteral("left out")});
    // Once the window was closed by hand there is only the list behind.
    m_window->cOn();
    m_window->addLastingLine(QStringLiteral("before"));
    QTest::keyClick(m_window, Qt::Key_Escape);
    m_window->addLastingLine(QStringLiteral("after"));
    m_window->cOff();
    QTRY_COMPARE(behind.lines.size(), 3);
    QVERIFY(behind.lines.contains(QStringLiteral("before")));
    QVERIFY(behind.lines.contains(QStringLiteral("after")));
    m_window->cOn();
    m_window->cOff();
    QTest::qWait(50);
    QCOMPARE(behind.lines.size(), 3);
}

void tst_sfMsg::onTwiceIsHarmless()
{
    m_window->cOn();
    m_desk->addStatus(QStringLiteral("1"));
    m_window->move(3, 3);
    m_window->cOn();
    QVERIFY(m_window->shown());
    QCOMPARE(list().count(), 0);
    QCOMPARE(m_window->pos(), QPoint(3, 3));
    m_desk->addStatus(QStringLiteral("2"));
    QTRY_COMPARE(list().count(), 1);
    m_window->cOff();
    QVERIFY(!m_window->isVisible());
    m_window->cOff();
    QVERIFY(!m_window->shown());
}

void tst_sfMsg::offClearsAndCloses()
{
    m_window->cOn();
    m_desk->addStatus(QStringLiteral("1"));
    m_window->cOff();
    QCOMPARE(list().count(), 0);
    QVERIFY(!m_window->shown());
    QVERIFY(!m_window->isVisible());
}

void tst_sfMsg::closingByHandOnlyHides_data()
{
    QTest::addColumn<bool>("byKey");
    QTest::newRow("Escape") << true;
    QTest::newRow("close box") << false;
}

void tst_sfMsg::closingByHandOnlyHides()
{
    QFETCH(bool, byKey);
    m_window->cOn();
    if (byKey)
        QTest::keyClick(m_window, Qt::Key_Escape);
    else
        m_window->close();
    QVERIFY(!m_window->isVisible());
    QVERIFY(!m_window->shown());
    QVERIFY(!m_desk->cancelled());
    m_window->cOn();
    QVERIFY(m_window->isVisible());
}

void tst_sfMsg::cancelAsksOnce()
{
    m_window->cOn();
    auto &button = part<QPushButton>(*m_window, "cmCancel");
    QCOMPARE(button.text(), QStringLiteral("ｷｬﾝｾﾙ"));
    QVERIFY(!m_desk->cancelled());
    QTest::mouseClick(&button, Qt::LeftButton);
    QVERIFY(m_desk->cancelled());
    QCOMPARE(button.text(), QStringLiteral("中止しています････"));
    QVERIFY(!button.isEnabled());
    m_window->cOff();
    m_desk->beginOperation();
    m_window->cOn();
    QCOMPARE(button.text(), QStringLiteral("ｷｬﾝｾﾙ"));
    QVERIFY(button.isEnabled());
}

void tst_sfMsg::cancelFromElsewhereShows()
{
    m_window->cOn();
    m_desk->requestCancel();
    QTRY_VERIFY(!part<QPushButton>(*m_window, "cmCancel").isEnabled());
}

void tst_sfMsg::progressOfFileAndWhole()
{
    m_window->cOn();
    m_window->setTotal(40'000);
    m_desk->progress({QStringLiteral("a.txt"), 0, 10'000});
    m_desk->progress({QStringLiteral("a.txt"), 5'000, 10'000});
    QTRY_COMPARE(label("lbFile"), QStringLiteral("a.txt  5KB / 10KB"));
    QCOMPARE(part<QProgressBar>(*m_window, "pgFile").value(), 500);
    QCOMPARE(part<QProgressBar>(*m_window, "pgWhole").value(), 125);
    QVERIFY(label("lbFilePace").contains(QStringLiteral("/秒")));
    QTRY_VERIFY(label("lbWholePace").contains(QStringLiteral("残り ")));
    m_desk->progress({QStringLiteral("a.txt"), 10'000, 10'000});
    m_desk->outcome({Outcome::Kind::Uploaded, QStringLiteral("/a.txt"), {}, {}});
    m_desk->progress({QStringLiteral("b.txt"), 1'000, 30'000});
    QTRY_COMPARE(label("lbWhole"), QStringLiteral("全体  1件  11KB / 40KB"));
    QCOMPARE(part<QProgressBar>(*m_window, "pgWhole").value(), 275);
    QCOMPARE(part<QProgressBar>(*m_window, "pgFile").value(), 33);
}

void tst_sfMsg::longNamesGiveWay()
{
    m_window->cOn();
    m_desk->progress({QString(300, QLatin1Char('x')), 2'000, 10'000});
    QTRY_VERIFY(label("lbFile").endsWith(QStringLiteral("xxx  2KB / 10KB")));
    const auto &line = part<QLabel>(*m_window, "lbFile");
    QVERIFY(line.fontMetrics().horizontalAdvance(line.text()) <= line.width());
    QCOMPARE(shownToolTip(line.toolTip()), QString(300, QLatin1Char('x')));
}

void tst_sfMsg::unknownSizes()
{
    m_window->cOn();
    m_desk->progress({QStringLiteral("x"), 2'000, -1});
    QTRY_COMPARE(label("lbFile"), QStringLiteral("x  2KB"));
    QCOMPARE(part<QProgressBar>(*m_window, "pgFile").maximum(), 0);
    QCOMPARE(part<QProgressBar>(*m_window, "pgWhole").maximum(), 0);
    QVERIFY(!label("lbWholePace").contains(QStringLiteral("残り")));
    m_desk->outcome({Outcome::Kind::Downloaded, QStringLiteral("/x"), {}, {}});
    QTRY_COMPARE(label("lbWhole"), QStringLiteral("全体  1件  2KB"));
    QVERIFY(part<QProgressBar>(*m_window, "pgWhole").maximum() > 0);
}

void tst_sfMsg::aFileTriedAgainCountsOnce()
{
    m_window->cOn();
    m_window->setTotal(20'000);
    m_desk->progress({QStringLiteral("a"), 9'000, 10'000});
    m_desk->progress({QStringLiteral("a"), 2'000, 10'000});
    QTRY_COMPARE(label("lbWhole"), QStringLiteral("全体  0件  2KB / 20KB"));
    QCOMPARE(part<QProgressBar>(*m_window, "pgWhole").value(), 100);
}

void tst_sfMsg::hiddenWindowIgnoresProgress()
{
    m_desk->progress({QStringLiteral("a"), 9'000, 10'000});
    m_desk->outcome({Outcome::Kind::Uploaded, QStringLiteral("/a"), {}, {}});
    m_window->cOn();
    QVERIFY(label("lbFile").isEmpty());
    QCOMPARE(label("lbWhole"), QStringLiteral("全体  0件  0B"));
}

void tst_sfMsg::drawsTenTimesASecondAtMost()
{
    m_window->cOn();
    QVERIFY(QTest::qWaitForWindowExposed(m_window));
    const Repaints repaints(part<QLabel>(*m_window, "lbFile"));
    QElapsedTimer time;
    time.start();
    for (qint64 i = 0; i < 20'000; ++i) {
        m_desk->progress({QStringLiteral("a"), i * 1'000, 20'000'000});
        if (i % 50 == 0)
            QCoreApplication::processEvents();
    }
    const auto periods = time.elapsed() / 100;
    QVERIFY2(repaints.count() <= periods + 2,
             qPrintable(QStringLiteral("%1 in %2").arg(repaints.count()).arg(periods)));
    QTRY_COMPARE(label("lbFile"), QStringLiteral("a  19,999KB / 20,000KB"));
}

void tst_sfMsg::typingElsewhereGoesOn()
{
    auto *box = m_main->findChild<QLineEdit *>();
    box->setFocus();
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("ab"));
    m_window->cOn();
    QVERIFY(m_window->testAttribute(Qt::WA_ShowWithoutActivating));
    QVERIFY(!part<QPushButton>(*m_window, "cmCancel").isDefault());
    QVERIFY(!part<QPushButton>(*m_window, "cmCancel").autoDefault());
    // A key that comes here all the same must not stop the operation.
    QTest::keyClick(m_window, Qt::Key_Return);
    QTest::keyClick(m_window, Qt::Key_Space);
    QVERIFY(!m_desk->cancelled());
    QCOMPARE(box->text(), QStringLiteral("ab"));
}

void tst_sfMsg::enterPressesCancel_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("Return") << int(Qt::Key_Return);
    QTest::newRow("Enter") << int(Qt::Key_Enter);
    QTest::newRow("Space") << int(Qt::Key_Space);
}

void tst_sfMsg::enterPressesCancel()
{
    QFETCH(int, key);
    m_window->cOn();
    m_window->activateWindow();
    QTRY_COMPARE(QApplication::activeWindow(), m_window);
    list().setFocus();
    QTest::keyClick(&list(), static_cast<Qt::Key>(key));
    QVERIFY(!m_desk->cancelled());
    QTest::keyClick(&list(), Qt::Key_Tab);
    auto &button = part<QPushButton>(*m_window, "cmCancel");
    QVERIFY(button.hasFocus());
    QTest::keyClick(&button, static_cast<Qt::Key>(key));
    QVERIFY(m_desk->cancelled());
    QVERIFY(m_window->isVisible());
}

void tst_sfMsg::everythingHasAName()
{
    QCOMPARE(unnamed(*m_window, std::array{"QListWidget", "QPushButton", "QProgressBar"}),
             QString());
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_sfMsg)
#include "tst_sfMsg.moc"
