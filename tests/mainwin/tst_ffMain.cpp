#include "mainwin/ffMain.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QProgressBar>
#include <QScreen>
#include <QSignalSpy>
#include <QSplitter>
#include <QStatusBar>
#include <QTest>
#include <QTimer>
#include <QTreeView>

#include "ftp/DirectoryCache.h"
#include "ftppane/uFtp.h"
#include "localpane/uFile.h"
#include "mainwin/MainStatusBar.h"
#include "mainwin/MainWorld.h"
#include "mainwin/StatusList.h"
#include "mainwin/popup/pfFtp.h"
#include "support/RawFiles.h"
#include "support/ScriptedServer.h"
#include "support/ShownToolTip.h"
#include "views/PaneView.h"

namespace venlo::test
{

/// The window itself: layout, settings, menus, closing.
class tst_ffMain : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void designedSizeWithoutSettings();
    void settingsComeBack();
    void launchRecordSavesOnlyItsOwnKeys();
    void neverShownSavesNoLayout();
    void offEveryScreenMovesIn();
    void maximisedSavesItsNormalGeometry();
    void missingFoldersFallBack();
    void messageLineJoinsLines();
    void messageLineEndsWithTheOperation();
    void statusListIsClearedBeyondFifty();
    void toolTipsShowNamesAsTheyAre();
    void menuDisconnectsFirst_data();
    void menuDisconnectsFirst();
    void disconnectingIsATurnOfItsOwn();
    void quittingWaitsForNobody();
    void quittingLeavesARunningOperationItsSession();
    void showsBeforeItLists();
    void closingCancelsFirst();
    void closingNamesUnsentWork();
    void commandsAreDisabledWhileOneRuns();
    void lostConnectionIsNotClaimed();
    void keysRanOutBuildsThePaneAnew();
    void aPaneBuiltAnewKeepsItsPlaceInTheTabOrder_data();
    void aPaneBuiltAnewKeepsItsPlaceInTheTabOrder();
    void aPaneBuiltAnewKeepsItsSort();
    void paneStaysUnderAnOpenMenu();
    void givenUpFilesAreTold();
    void copyEntryIsNeverDisabled();

private:
    [[nodiscard]] uFile &file() { return *m_world->window->findChild<uFile *>(); }
    [[nodiscard]] uFtp &ftp() { return *m_world->window->findChild<uFtp *>(); }
    [[nodiscard]] static QWidget &part(const QWidget &pane, const char *name)
    {
        return *pane.findChild<QWidget *>(QLatin1String(name));
    }
    [[nodiscard]] QAction *entry(int index);
    void connectSite();

    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<MainWorld> m_world;
};

void tst_ffMain::init()
{
    m_server = std::make_unique<ScriptedServer>();
    m_server->put("/pub/a.txt", "a");
    m_world = std::make_unique<MainWorld>();
}

void tst_ffMain::cleanup()
{
    QVERIFY(m_world->person.verify());
    QVERIFY(!m_world->gate.busy());
    m_world.reset();
    m_server.reset();
}

QAction *tst_ffMain::entry(int index)
{
    const auto menus = m_world->window->menuBar()->actions();
    return menus.at(0)->menu()->actions().at(index);
}

void tst_ffMain::connectSite()
{
    QVERIFY(m_server->start());
    m_world->registerSite(m_server->server(), m_server->user(), m_server->password());
    m_world->open();
    QVERIFY(ftp().SetSync(QStringLiteral("site"), QStringLiteral("/pub")));
    QVERIFY(ftp().cOn());
}

void tst_ffMain::designedSizeWithoutSettings()
{
    const ffMain &window = m_world->open();
    QCOMPARE(window.size(), QSize(1100, 720).boundedTo(window.screen()->availableSize()));
    QCOMPARE(window.windowTitle(), QStringLiteral("Venlo FTP"));
    QCOMPARE(file().Root(), fallbackFolder());
    const int width = window.findChild<QWidget *>(QStringLiteral("pFile"))->width();
    QVERIFY2(qAbs(width * 100 / window.width() - 45) <= 2, qPrintable(QString::number(width)));
    QVERIFY(window.menuBar()->actions().at(0)->text().remove(QLatin1Char('&')) ==
            QLatin1String("FTP"));
}

void tst_ffMain::settingsComeBack()
{
    m_world->open();
    file().cOn(m_world->local());
    m_world->window->setGeometry(QRect(QPoint(20, 30), QSize(700, 500)));
    auto *split = m_world->window->findChild<QSplitter *>(QStringLiteral("PaneSplitter"));
    split->setSizes({250, 440});
    const int width = m_world->window->findChild<QWidget *>(QStringLiteral("pFile"))->width();
    m_world->close();
    QCOMPARE(m_world->setting(QStringLiteral("Width")), QStringLiteral("700"));

    m_world->open();
    QCOMPARE(m_world->window->size(), QSize(700, 500));
    QCOMPARE(file().Root(), QDir::toNativeSeparators(m_world->local()));
    QVERIFY(qAbs(m_world->window->findChild<QWidget *>(QStringLiteral("pFile"))->width() - width) <=
            2);
}

void tst_ffMain::launchRecordSavesOnlyItsOwnKeys()
{
    m_world->writeSetting(QStringLiteral("Width"), 640);
    m_world->writeSetting(QStringLiteral("WdFL"), 222);
    m_world->flags.launchLayout = true;
    m_world->open(true, {QRect(10, 10, 800, 600), m_world->local(), m_world->local()});
    QCOMPARE(m_world->window->size(),
             QSize(800, 600).boundedTo(m_world->window->screen()->availableSize()));
    QCOMPARE(file().Root(), QDir::toNativeSeparators(m_world->local()));
    m_world->close();
    QCOMPARE(m_world->setting(QStringLiteral("Width")), QStringLiteral("640"));
    QCOMPARE(m_world->setting(QStringLiteral("WdFL")), QStringLiteral("222"));
    QVERIFY(!m_world->setting(QStringLiteral("WdFL_R")).isEmpty());
    QVERIFY(m_world->setting(QStringLiteral("Root")).isEmpty());
    QCOMPARE(m_world->setting(QStringLiteral("CbSvr")), QStringLiteral("-1"));
}

void tst_ffMain::neverShownSavesNoLayout()
{
    m_world->open(false);
    m_world->close();
    QVERIFY(m_world->setting(QStringLiteral("Width")).isEmpty());
    QVERIFY(m_world->setting(QStringLiteral("WdFL_R")).isEmpty());
    QCOMPARE(m_world->setting(QStringLiteral("CbSvr")), QStringLiteral("-1"));
}

void tst_ffMain::offEveryScreenMovesIn()
{
    m_world->writeSetting(QStringLiteral("Left"), 20'000);
    m_world->writeSetting(QStringLiteral("Top"), -5000);
    m_world->writeSetting(QStringLiteral("Width"), 700);
    m_world->writeSetting(QStringLiteral("Height"), 400);
    const ffMain &window = m_world->open();
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    QVERIFY2(area.contains(window.frameGeometry().center()), "reachable");
    QCOMPARE(window.size(), QSize(700, 400));
}

void tst_ffMain::maximisedSavesItsNormalGeometry()
{
    m_world->open();
    m_world->window->resize(640, 480);
    QCoreApplication::processEvents();
    m_world->window->showMaximized();
    QVERIFY(until([&] { return m_world->window->isMaximized(); }));
    m_world->close();
    QCOMPARE(m_world->setting(QStringLiteral("Width")), QStringLiteral("640"));
    QCOMPARE(m_world->setting(QStringLiteral("Height")), QStringLiteral("480"));
}

void tst_ffMain::missingFoldersFallBack()
{
    m_world->writeSetting(QStringLiteral("Root"), m_world->local() + QStringLiteral("/gone"));
    m_world->open();
    QCOMPARE(file().Root(), fallbackFolder());
}

void tst_ffMain::messageLineJoinsLines()
{
    m_world->open();
    m_world->window->SetMsg(QStringLiteral("一\r二\r三"));
    QCOMPARE(m_world->window->findChild<MainStatusBar *>()->text(), QStringLiteral("一 ,二 ,三"));
    m_world->window->SetMsg({});
    QCOMPARE(m_world->window->findChild<MainStatusBar *>()->text(), QString());
}

void tst_ffMain::messageLineEndsWithTheOperation()
{
    m_world->open();
    const auto *bar = m_world->window->findChild<MainStatusBar *>();
    {
        const auto turn = m_world->gate.begin();
        m_world->person.setMessageLine(QStringLiteral("/old RemoveDirectory･･･"));
    }
    QCOMPARE(bar->text(), QString());
    {
        const auto turn = m_world->gate.begin();
        m_world->person.setMessageLine(QStringLiteral("注意"));
        m_world->person.warn(QStringLiteral("注意"));
    }
    QCOMPARE(bar->text(), QStringLiteral("注意"));
    {
        const auto turn = m_world->gate.begin();
    }
    QCOMPARE(bar->text(), QString());
}

void tst_ffMain::statusListIsClearedBeyondFifty()
{
    m_world->open();
    auto *list = m_world->window->findChild<StatusList *>();
    for (int line = 0; line < 51; ++line)
        m_world->person.addStatus(QString::number(line));
    QCOMPARE(list->count(), 51);
    QCOMPARE(list->currentRow(), 50);
    m_world->person.addStatus(QStringLiteral("next"));
    QCOMPARE(list->count(), 1);
    QCOMPARE(list->item(0)->text(), QStringLiteral("next"));
}

void tst_ffMain::toolTipsShowNamesAsTheyAre()
{
    const QString name = QStringLiteral("<img src=\"a\"> R&D > &amp;");
    const ffMain &window = m_world->open();
    m_world->person.addStatus(name);
    QCOMPARE(shownToolTip(window.findChild<StatusList *>()->item(0)->toolTip()), name);
    m_world->person.setMessageLine(name);
    const auto *line = window.findChild<QLabel *>(QStringLiteral("stText"));
    QTRY_COMPARE(shownToolTip(line->toolTip()), name);
    QCOMPARE(line->accessibleDescription(), name);
    m_world->person.progress({name, 1, 2});
    const auto *bar = window.findChild<QProgressBar *>(QStringLiteral("stProgress"));
    QCOMPARE(shownToolTip(bar->toolTip()), name);
}

void tst_ffMain::menuDisconnectsFirst_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("open");
    QTest::newRow("切断") << 0 << true;
    QTest::newRow("ﾃﾞｰﾀｰﾍﾞｰｽの最適化") << 1 << true;
    QTest::newRow("終了") << 3 << false;
}

void tst_ffMain::menuDisconnectsFirst()
{
    QFETCH(int, index);
    connectSite();
    const QSignalSpy closed(m_world->window.get(), &ffMain::closed);
    QCOMPARE(entry(index)->text(), QString::fromUtf8(QTest::currentDataTag()));
    entry(index)->trigger();
    QCOMPARE(m_world->session.state(), Session::Closed);
    QVERIFY(!ftp().cOn());
    QTEST(closed.isEmpty(), "open");
}

/// What disconnecting empties may be what another process works with.
void tst_ffMain::disconnectingIsATurnOfItsOwn()
{
    connectSite();
    m_world->gate.setLock({[] { return false; }, {}});
    for (const int index : {0, 1}) {
        entry(index)->trigger();
        QVERIFY(ftp().cOn());
        QVERIFY(m_world->session.connected());
    }
    Q_EMIT ftp().eAct(QStringLiteral("切断"));
    QVERIFY(ftp().cOn());
    m_world->gate.setLock({});
    Q_EMIT ftp().eAct(QStringLiteral("切断"));
    QVERIFY(!ftp().cOn());
    QCOMPARE(m_world->session.state(), Session::Closed);
}

void tst_ffMain::quittingWaitsForNobody()
{
    connectSite();
    // As a lock does that another process holds: it is waited for until Cancel.
    m_world->gate.setLock(
        {[this] { return !until([this] { return m_world->person.cancelled(); }); }, {}});
    const QSignalSpy closed(m_world->window.get(), &ffMain::closed);
    QElapsedTimer took;
    took.start();
    entry(3)->trigger();
    QCOMPARE(closed.size(), 1);
    QVERIFY(took.elapsed() < 1000);
    QCOMPARE(m_world->session.state(), Session::Closed);
    // The other process still has the listings.
    QString folders;
    QString files;
    m_world->cache.cachedNames(QStringLiteral("/pub"), folders, files);
    QCOMPARE(files, QStringLiteral("a.txt"));
}

void tst_ffMain::quittingLeavesARunningOperationItsSession()
{
    connectSite();
    const QSignalSpy closed(m_world->window.get(), &ffMain::closed);
    {
        const auto turn = m_world->gate.begin();
        entry(3)->trigger();
        QVERIFY(m_world->person.cancelled());
        QVERIFY(m_world->session.connected());
        QVERIFY(ftp().cOn());
        QVERIFY(closed.isEmpty());
    }
    QVERIFY(until([&] { return !closed.isEmpty(); }));
    QCOMPARE(m_world->session.state(), Session::Closed);
}

void tst_ffMain::showsBeforeItLists()
{
    QVERIFY(m_server->start());
    m_world->registerSite(m_server->server(), m_server->user(), m_server->password());
    QVERIFY(m_world->connectToSite());
    m_world->open(false);
    bool seen = false;
    QTimer::singleShot(0, m_world->window.get(), [&] { seen = m_world->window->isVisible(); });
    m_server->on("CWD").delay(200);
    m_world->window->showMainWindow(QStringLiteral("site"));
    QVERIFY(seen);
    QVERIFY(ftp().cOn());
}

void tst_ffMain::closingCancelsFirst()
{
    m_world->open();
    const QSignalSpy closed(m_world->window.get(), &ffMain::closed);
    {
        const auto turn = m_world->gate.begin();
        QVERIFY(turn);
        m_world->close();
        QVERIFY(m_world->person.cancelled());
        QVERIFY(closed.isEmpty());
        QVERIFY(m_world->window->isVisible());
    }
    QVERIFY(until([&] { return !closed.isEmpty(); }));
    QVERIFY(!m_world->setting(QStringLiteral("Width")).isEmpty());
}

/// A remote file that was dragged into an editor, and saved there.
void tst_ffMain::closingNamesUnsentWork()
{
    connectSite();
    const PaneView &rows = *ftp().findChild<PaneView *>(QStringLiteral("LsView"));
    QTest::mouseClick(rows.viewport(), Qt::LeftButton, {},
                      rows.visualRect(rows.model()->index(0, 0)).center());
    const QString given = rows.dragPartner()->dragData(rows)->urls().value(0).toLocalFile();
    QCOMPARE(readFile(rawPath(given)), QByteArray("a"));
    QVERIFY(writeFile(rawPath(given), "hours of work"));
    m_world->person.expectMessage(
        QStringLiteral("ｱｯﾌﾟﾛｰﾄﾞされていない変更は次のﾌｧｲﾙに残っています\n\n") +
        QDir::toNativeSeparators(given));
    m_world->close();
    m_world->window.reset();
    QCOMPARE(readFile(rawPath(given)), QByteArray("hours of work"));
    QVERIFY(QDir(QFileInfo(given).path()).removeRecursively());
}

void tst_ffMain::commandsAreDisabledWhileOneRuns()
{
    m_world->open();
    auto *cancel = m_world->window->findChild<QWidget *>(QStringLiteral("stCancel"));
    QVERIFY(!cancel->isVisible());
    {
        const auto turn = m_world->gate.begin();
        QVERIFY(!entry(0)->isEnabled());
        QVERIFY(!entry(1)->isEnabled());
        QVERIFY(entry(3)->isEnabled());
        QVERIFY(cancel->isVisible());
        QVERIFY(!m_world->gate.begin());
        QTest::mouseClick(cancel, Qt::LeftButton);
        QVERIFY(m_world->person.cancelled());
    }
    QVERIFY(entry(0)->isEnabled());
    QVERIFY(!cancel->isVisible());
}

void tst_ffMain::lostConnectionIsNotClaimed()
{
    connectSite();
    m_world->session.CloseInternet();
    QVERIFY(ftp().cOn());
    {
        const auto turn = m_world->gate.begin();
    }
    QVERIFY(!ftp().cOn());
    QVERIFY(ftp().FsFllPh().isEmpty());
}

void tst_ffMain::keysRanOutBuildsThePaneAnew()
{
    connectSite();
    file().cOn(m_world->local());
    file().findChild<QLineEdit *>(QStringLiteral("txFilter"))->setText(QStringLiteral("htm"));
    const QPointer<uFile> oldFile(&file());
    const QPointer<uFtp> oldFtp(&ftp());
    const QString path = ftp().FsFllPh();
    Q_EMIT file().keysRanOut();
    Q_EMIT ftp().keysRanOut();
    QVERIFY(until([&] { return oldFile.isNull() && oldFtp.isNull(); }));
    QCOMPARE(file().Root(), QDir::toNativeSeparators(m_world->local()));
    QCOMPARE(file().NodePath(), QDir::toNativeSeparators(m_world->local()));
    QCOMPARE(file().findChild<QLineEdit *>(QStringLiteral("txFilter"))->text(),
             QStringLiteral("htm"));
    QVERIFY(ftp().cOn());
    QCOMPARE(ftp().FsFllPh(), path);
    QCOMPARE(m_server->logins(), 1);
}

void tst_ffMain::aPaneBuiltAnewKeepsItsPlaceInTheTabOrder_data()
{
    QTest::addColumn<bool>("local");
    QTest::newRow("local") << true;
    QTest::newRow("FTP") << false;
}

void tst_ffMain::aPaneBuiltAnewKeepsItsPlaceInTheTabOrder()
{
    QFETCH(bool, local);
    connectSite();
    const auto order = [this] {
        QStringList names;
        part(file(), "TrView").setFocus();
        do {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            const QWidget &now = *QApplication::focusWidget();
            QString pane;
            if (file().isAncestorOf(&now))
                pane = QStringLiteral("file ");
            else if (ftp().isAncestorOf(&now))
                pane = QStringLiteral("ftp ");
            names << pane + now.objectName();
        } while (!part(file(), "TrView").hasFocus() && names.size() < 30);
        return names;
    };
    const QStringList before = order();
    QVERIFY(before.indexOf(QStringLiteral("ftp TrView")) >
            before.indexOf(QStringLiteral("file LsView")));
    QVERIFY(before.indexOf(QStringLiteral("ltMsg")) > before.indexOf(QStringLiteral("ftp LsView")));
    const QPointer<QWidget> old(local ? static_cast<QWidget *>(&file()) : &ftp());
    if (local)
        Q_EMIT file().keysRanOut();
    else
        Q_EMIT ftp().keysRanOut();
    QVERIFY(until([&] { return old.isNull() && file().isVisible() && ftp().isVisible(); }));
    QCOMPARE(order(), before);
}

void tst_ffMain::aPaneBuiltAnewKeepsItsSort()
{
    m_server->put("/pub/b.txt", "b");
    connectSite();
    const auto list = [this]() -> QTreeView & {
        return *qobject_cast<QTreeView *>(&part(ftp(), "LsView"));
    };
    const auto header = [&] { return list().header(); };
    const auto names = [&] {
        const QAbstractItemModel &rows = *list().model();
        QStringList all;
        for (int row = 0; row < rows.rowCount(); ++row)
            all << rows.index(row, 0).data().toString();
        return all;
    };
    for (int click = 0; click < 2; ++click)
        QTest::mouseClick(header()->viewport(), Qt::LeftButton, {}, {20, header()->height() / 2});
    const QStringList sorted{QStringLiteral("b.txt"), QStringLiteral("a.txt")};
    QCOMPARE(names(), sorted);
    const QPointer<uFtp> old(&ftp());
    Q_EMIT ftp().keysRanOut();
    QVERIFY(until([&] { return old.isNull() && names().size() == 2; }));
    QCOMPARE(names(), sorted);
    QVERIFY(header()->isSortIndicatorShown());
    QCOMPARE(header()->sortIndicatorSection(), 0);
    QCOMPARE(header()->sortIndicatorOrder(), Qt::DescendingOrder);
    // The next click turns it over.
    QTest::mouseClick(header()->viewport(), Qt::LeftButton, {}, {20, header()->height() / 2});
    QCOMPARE(names().constFirst(), QStringLiteral("a.txt"));
}

void tst_ffMain::paneStaysUnderAnOpenMenu()
{
    connectSite();
    const QPointer<uFtp> oldFtp(&ftp());
    QMenu menu;
    menu.addAction(QStringLiteral("a"));
    menu.popup(m_world->window->geometry().center());
    QVERIFY(until([] { return QApplication::activePopupWidget() != nullptr; }));
    Q_EMIT ftp().keysRanOut();
    QTest::qWait(250);
    QVERIFY(!oldFtp.isNull());
    QTest::keyClick(&menu, Qt::Key_Escape);
    QVERIFY(until([&] { return oldFtp.isNull(); }));
    QVERIFY(ftp().cOn());
}

void tst_ffMain::givenUpFilesAreTold()
{
    m_world->open();
    m_world->person.expectOffer(
        QStringLiteral("7 件を処理できませんでした\n\n/0\n/1\n/2\n/3\n/4\n････"), false);
    {
        const auto turn = m_world->gate.begin();
        for (int number = 0; number < 7; ++number)
            m_world->person.outcome(
                {Outcome::Kind::GivenUp, QStringLiteral("/%1").arg(number), {}, {}});
    }
    QVERIFY(until([&] { return !m_world->person.texts(ScriptedPerson::What::Offer).isEmpty(); }));
}

void tst_ffMain::copyEntryIsNeverDisabled()
{
    connectSite();
    const auto *menus = m_world->window->findChild<pfFtp *>();
    QVERIFY(menus->entry(pfFtp::TREE, 6)->isEnabled());
    ftp().ReFresh();
    file().ReFresh();
    ftp().disconnectSite();
    QVERIFY(menus->entry(pfFtp::TREE, 6)->isEnabled());
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_ffMain)
#include "tst_ffMain.moc"
