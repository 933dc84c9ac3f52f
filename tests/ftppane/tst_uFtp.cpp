#include "ftppane/FtpPaneFixture.h"

#include <QHeaderView>
#include <QListWidget>

#ifdef Q_OS_UNIX
#include "support/DaemonTests.h"
#endif

namespace venlo::test
{

class tst_uFtp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m = std::make_unique<FtpPaneFixture>(); }
    void cleanup()
    {
        const bool clean = m->person.verify();
        m.reset();
        QVERIFY(clean);
    }
    void unconnected();
    void tabOrderAndNames();
    void selectingASite();
    void indexPastTheEnd();
    void withoutServer();
    void withoutSite();
    void refusedLogin();
    void connects();
    void tabsInNames();
    void startDirectory();
    void anotherSiteDisconnects();
    void wheelOverTheSites();
    void disconnect();
    void expandTwice();
    void clicksAndEnter();
    void goesToPaths();
    void pathOutsideTheRoot();
    void missingPath();
    void synchronisedPattern();
    void threeClicksOnAHeading();
    void sameNameSorts();
    void widthsAndHeight();
    void headerWidens();
    void siteDeletedInTheDialog();
    void deletedSitesPatternsLeaveTheMenu();
#ifdef Q_OS_UNIX
    void realDaemons_data();
    void realDaemons();
#endif

private:
    std::unique_ptr<FtpPaneFixture> m;
};

void tst_uFtp::unconnected()
{
    QVERIFY(m->begin());
    QVERIFY(!m->pane->cOn());
    QCOMPARE(m->caption(), QStringLiteral("接続先を指定して下さい"));
    QVERIFY(!m->imOpn().isEnabled());
    QVERIFY(!m->treeView().isEnabled());
    QVERIFY(!m->listView().isEnabled());
    QCOMPARE(m->pane->iCbSvr(), -1);
    QCOMPARE(m->pane->FsSvr(), QString());
    QCOMPARE(m->pane->FsFllPh(), QString());
    QStringList sites;
    for (int i = 0; i < m->cbSvr().count(); ++i)
        sites << m->cbSvr().itemText(i);
    QCOMPARE(sites, words("another,empty,web"));
}

void tst_uFtp::tabOrderAndNames()
{
    QVERIFY(m->open());
    m->cbSvr().setFocus();
    QStringList order;
    for (int i = 0; i < 5; ++i) {
        order << QApplication::focusWidget()->objectName();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    QCOMPARE(order, words("cbSvr,imOpn,imElse,TrView,LsView"));
    for (const char *name :
         {"cbSvr", "imOpn", "imElse", "Label1", "Frame1", "TrView", "LsView", "Splitter"})
        QVERIFY2(!m->child<QWidget>(name).accessibleName().isEmpty(), name);
    QVERIFY(m->pane->findChild<QWidget *>(QStringLiteral("pTrv")));
}

void tst_uFtp::selectingASite()
{
    QVERIFY(m->begin());
    m->pick(QStringLiteral("web"));
    QCOMPARE(m->caption(), QStringLiteral("[未接続]web"));
    QVERIFY(m->imOpn().isEnabled());
    QCOMPARE(m->pane->FsSvr(), QStringLiteral("web"));
    QCOMPARE(m->server.connections(), 0);
}

void tst_uFtp::indexPastTheEnd()
{
    QVERIFY(m->begin());
    m->pane->setICbSvr(2);
    QCOMPARE(m->pane->FsSvr(), QStringLiteral("web"));
    m->pane->setICbSvr(3);
    QCOMPARE(m->pane->iCbSvr(), -1);
    QCOMPARE(m->caption(), QStringLiteral("接続先を指定して下さい"));
    QVERIFY(!m->imOpn().isEnabled());
}

void tst_uFtp::withoutServer()
{
    QVERIFY(m->begin());
    m->person.expectMessage(QStringLiteral("FTP ｻｰﾊﾞｰ･ﾕｰｻﾞｰ･ﾊﾟｽﾜｰﾄﾞを確認して下さい"));
    m->connectBy(QStringLiteral("empty"));
    QVERIFY(!m->pane->cOn());
    QCOMPARE(m->caption(), QStringLiteral("未接続"));
}

void tst_uFtp::withoutSite()
{
    QVERIFY(m->begin());
    QVERIFY(!m->pane->SetSync(QStringLiteral("nobody"), QStringLiteral("/")));
    QCOMPARE(m->pane->iCbSvr(), -1);
    QCOMPARE(m->caption(), QStringLiteral("未接続"));
    QCOMPARE(m->server.connections(), 0);
}

void tst_uFtp::refusedLogin()
{
    m->server.on("PASS").reply(530, "no");
    QVERIFY(m->begin());
    m->person.expectMessage(m->server.server() +
                            QStringLiteral(" へ接続できません 設定を確認して下さい"));
    m->connectBy(QStringLiteral("web"));
    QVERIFY(!m->pane->cOn());
    QCOMPARE(m->caption(), QStringLiteral("未接続"));
    QCOMPARE(m->tree().rowCount({}), 0);
    // The session is open now, not closed: it connects all the same.
    m->server.script().clear();
    QTest::mouseClick(&m->imOpn(), Qt::LeftButton);
    QVERIFY(m->pane->cOn());
}

void tst_uFtp::connects()
{
    QVERIFY(m->open());
    QCOMPARE(m->caption(), m->server.server());
    QVERIFY(m->treeView().isEnabled());
    QVERIFY(m->listView().isEnabled());
    const QModelIndex root = m->tree().root();
    QCOMPARE(m->tree().key(root), QStringLiteral("N0000"));
    QCOMPARE(m->tree().text(root), m->server.server());
    QVERIFY(m->treeView().isExpanded(root));
    QCOMPARE(m->childrenOf({}), words("docs,img"));
    // "docs" has a folder, which takes a key for the placeholder; "img" has none.
    QCOMPARE(m->tree().key(m->node(QStringLiteral("docs"))), QStringLiteral("N0001"));
    QCOMPARE(m->childrenOf(QStringLiteral("docs")), words("?"));
    QCOMPARE(m->tree().key(m->node(QStringLiteral("img"))), QStringLiteral("N0003"));
    QCOMPARE(m->childrenOf(QStringLiteral("img")), QStringList());
    QCOMPARE(m->names(), words("docs,img,index.html,news.txt"));
    QCOMPARE(m->rows().row(0).key, QStringLiteral("L000"));
    QCOMPARE(m->rows().row(3).key, QStringLiteral("L003"));
    QCOMPARE(m->rows().row(0).tag, EntryTag::FD);
    QCOMPARE(m->rows().text(0, 2), QString());
    QCOMPARE(m->rows().text(0, 3), QStringLiteral("docsD"));
    QCOMPARE(m->rows().row(3).tag, EntryTag::FL);
    QCOMPARE(m->rows().text(3, 1), QStringLiteral("24/05/06 16:08:09"));
    QCOMPARE(m->rows().text(3, 2), QStringLiteral("1KB"));
    QCOMPARE(m->rows().text(3, 3), QStringLiteral("news.txtL"));
    QCOMPARE(m->rows().headerData(0, Qt::Horizontal, Qt::DisplayRole).toString(),
             QStringLiteral("名前"));
    QCOMPARE(m->rows().headerData(1, Qt::Horizontal, Qt::DisplayRole).toString(),
             QStringLiteral("更新日時"));
    QCOMPARE(m->rows().headerData(2, Qt::Horizontal, Qt::DisplayRole).toString(),
             QStringLiteral("ｻｲｽﾞ"));
    QVERIFY(m->listView().isColumnHidden(3));
    QCOMPARE(m->pane->FsFllPh(), m->server.server());
    QCOMPARE(m->pane->remotePath(), QStringLiteral("/"));
    QCOMPARE(m->note(), QString());
    // Who connected by the button goes on in the tree.
    QCOMPARE(QApplication::focusWidget(), &m->treeView());
}

void tst_uFtp::tabsInNames()
{
    // A command on such a row must not reach the entry whose name ends before the tab.
    m->server.put("/img/keep.txt", "1");
    m->server.put("/img/keep.txt\tx", "2");
    m->server.put("/img/old\tone/a", "3");
    QVERIFY(m->open());
    m->clickNode(QStringLiteral("img"));
    QTRY_COMPARE(m->names(),
                 QStringList({QStringLiteral("old\tone"), QStringLiteral("keep.txt"),
                              QStringLiteral("keep.txt\tx"), QStringLiteral("logo.png")}));
    QCOMPARE(m->rows().text(2, 2), QStringLiteral("2B"));
}

void tst_uFtp::startDirectory()
{
    m->server.options().home = "/docs";
    QVERIFY(m->open());
    QCOMPARE(m->tree().text(m->tree().root()), m->server.server() + QStringLiteral("/docs"));
    QCOMPARE(m->pane->remotePath(), QStringLiteral("/docs"));
    QCOMPARE(m->names(), words("deep,a.txt"));
}

void tst_uFtp::anotherSiteDisconnects()
{
    QVERIFY(m->open());
    m->pick(QStringLiteral("empty"));
    QVERIFY(!m->pane->cOn());
    QCOMPARE(m->session.state(), Session::Closed);
    QCOMPARE(m->caption(), QStringLiteral("[未接続]empty"));
    QCOMPARE(m->tree().rowCount({}), 0);
    QCOMPARE(m->rows().count(), 0);
    QVERIFY(!m->treeView().isEnabled());
    QCOMPARE(m->status().constLast(), m->server.server() + QStringLiteral(" へ接続を切断しました"));
}

void tst_uFtp::wheelOverTheSites()
{
    QVERIFY(m->open());
    const QPointF at = m->cbSvr().rect().center();
    QWheelEvent wheel(at, m->cbSvr().mapToGlobal(at), {}, QPoint(0, 120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&m->cbSvr(), &wheel);
    QVERIFY(m->pane->cOn());
    QCOMPARE(m->pane->FsSvr(), QStringLiteral("web"));
}

void tst_uFtp::disconnect()
{
    QVERIFY(m->open());
    m->pane->disconnectSite();
    QVERIFY(!m->pane->cOn());
    QCOMPARE(m->session.state(), Session::Closed);
    QCOMPARE(m->caption(), QStringLiteral("未接続"));
    QTest::mouseClick(&m->imOpn(), Qt::LeftButton);
    QVERIFY(m->pane->cOn());
}

void tst_uFtp::expandTwice()
{
    QVERIFY(m->open());
    m->clickArrow(QStringLiteral("docs"));
    QTRY_COMPARE(m->childrenOf(QStringLiteral("docs")), words("deep"));
    QVERIFY(m->treeView().isExpanded(m->node(QStringLiteral("docs"))));
    const QString key = m->tree().key(m->node(QStringLiteral("docs/deep")));
    m->clickArrow(QStringLiteral("docs"));
    QTRY_VERIFY(!m->treeView().isExpanded(m->node(QStringLiteral("docs"))));
    m->clickArrow(QStringLiteral("docs"));
    QTRY_VERIFY(m->treeView().isExpanded(m->node(QStringLiteral("docs"))));
    QTest::qWait(50);
    QCOMPARE(m->childrenOf(QStringLiteral("docs")), words("deep"));
    QCOMPARE(m->tree().key(m->node(QStringLiteral("docs/deep"))), key);
}

void tst_uFtp::clicksAndEnter()
{
    QVERIFY(m->open());
    m->clickNode(QStringLiteral("docs"));
    QTRY_COMPARE(m->names(), words("deep,a.txt"));
    QCOMPARE(m->pane->FsFllPh(), m->server.server() + QStringLiteral("/docs"));
    m->doubleClick(QStringLiteral("deep"));
    QTRY_COMPARE(m->pane->remotePath(), QStringLiteral("/docs/deep"));
    QCOMPARE(m->treeView().currentIndex(), m->node(QStringLiteral("docs/deep")));
    m->listView().setFocus();
    QTest::keyClick(&m->listView(), Qt::Key_Backspace);
    QCOMPARE(m->pane->remotePath(), QStringLiteral("/docs"));
    // Enter is a double click; a file does nothing.
    m->click(QStringLiteral("a.txt"));
    QTest::keyClick(&m->listView(), Qt::Key_Return);
    QCOMPARE(m->pane->remotePath(), QStringLiteral("/docs"));
    m->click(QStringLiteral("deep"));
    QTest::keyClick(&m->listView(), Qt::Key_Return);
    QCOMPARE(m->pane->remotePath(), QStringLiteral("/docs/deep"));
    QCOMPARE(m->names(), words("b.txt"));
    m->doubleClick(QStringLiteral("b.txt"));
    QCOMPARE(m->pane->remotePath(), QStringLiteral("/docs/deep"));
}

void tst_uFtp::goesToPaths()
{
    QVERIFY(m->open());
    m->pane->setFsFllPh(m->server.server() + QStringLiteral("/DOCS/Deep"));
    QCOMPARE(m->pane->FsFllPh(), m->server.server() + QStringLiteral("/docs/deep"));
    QCOMPARE(m->names(), words("b.txt"));
    m->pane->setFsFllPh(m->server.server());
    QCOMPARE(m->pane->remotePath(), QStringLiteral("/"));
}

void tst_uFtp::pathOutsideTheRoot()
{
    m->server.options().home = "/docs";
    QVERIFY(m->open());
    // Below the root its own path is not walked twice.
    QVERIFY(m->pane->SetSync(QStringLiteral("web"), QStringLiteral("/docs/deep")));
    QCOMPARE(m->tree().text(m->tree().root()), m->server.server() + QStringLiteral("/docs"));
    QCOMPARE(m->pane->FsFllPh(), m->server.server() + QStringLiteral("/docs/deep"));
    QVERIFY(m->pane->SetSync(QStringLiteral("web"), QStringLiteral("/img")));
    QCOMPARE(m->tree().text(m->tree().root()), m->server.server());
    QCOMPARE(m->pane->remotePath(), QStringLiteral("/img"));
}

void tst_uFtp::missingPath()
{
    QVERIFY(m->open());
    m->person.expectMessage(QStringLiteral("/docs/none/x  が存在しません"));
    QVERIFY(!m->pane->SetSync(QStringLiteral("web"), QStringLiteral("/docs/none/x")));
    QCOMPARE(m->pane->remotePath(), QStringLiteral("/docs"));
    QCOMPARE(m->names(), words("deep,a.txt"));
}

void tst_uFtp::synchronisedPattern()
{
    QVERIFY(m->begin());
    QVERIFY(m->pane->SetSync(QStringLiteral("WEB"), QStringLiteral("/docs")));
    QCOMPARE(m->pane->FsSvr(), QStringLiteral("web"));
    QCOMPARE(m->pane->remotePath(), QStringLiteral("/docs"));
    QVERIFY(m->pane->SetSync(QStringLiteral("web"), QStringLiteral("/img")));
    QCOMPARE(m->server.logins(), 1);
    m->pane->disconnectSite();
    QVERIFY(m->pane->SetSync(QStringLiteral("web"), QString()));
    QCOMPARE(m->server.logins(), 2);
    QVERIFY(m->pane->SetSync(QStringLiteral("another"), QStringLiteral("/img")));
    QCOMPARE(m->server.logins(), 3);
    QCOMPARE(m->session.currentSite(), QStringLiteral("another"));
}

void tst_uFtp::threeClicksOnAHeading()
{
    QVERIFY(m->open());
    const auto clickHeading = [this](int column) {
        QHeaderView *header = m->listView().header();
        QTest::mouseClick(
            header->viewport(), Qt::LeftButton, {},
            QPoint(header->sectionViewportPosition(column) + 20, header->height() / 2));
    };
    const QStringList up = words("docs,img,index.html,news.txt");
    const QStringList down = words("news.txt,index.html,img,docs");
    clickHeading(0);
    QCOMPARE(m->names(), up);
    clickHeading(0);
    QCOMPARE(m->names(), down);
    clickHeading(0);
    QCOMPARE(m->names(), up);
    clickHeading(0);
    QCOMPARE(m->names(), down);
    // Another column ascends, and a filled list keeps the order.
    clickHeading(2);
    QCOMPARE(m->rows().sortColumn(), 2);
    QCOMPARE(m->rows().sortOrder(), Qt::AscendingOrder);
    clickHeading(0);
    QCOMPARE(m->names(), up);
    clickHeading(0);
    m->pane->setFsFllPh(m->server.server() + QStringLiteral("/docs"));
    QCOMPARE(m->names(), words("deep,a.txt"));
}

void tst_uFtp::sameNameSorts()
{
    QVERIFY(m->open());
    RowList::Row file;
    file.tag = EntryTag::FL;
    file.texts = words("docs,,1B,docsL");
    m->rows().sort(0, Qt::AscendingOrder);
    QVERIFY(m->rows().append({file}));
    QCOMPARE(m->rows().text(0, 3), QStringLiteral("docsD"));
    QCOMPARE(m->rows().text(1, 3), QStringLiteral("docsL"));
}

void tst_uFtp::widthsAndHeight()
{
    QVERIFY(m->begin());
    m->pane->setLsClsWd(QStringLiteral("120,90.4,61"));
    QCOMPARE(m->pane->LsClsWd(), QStringLiteral("120,90,61"));
    m->pane->setLsClsWd(QStringLiteral("150"));
    QCOMPARE(m->pane->LsClsWd(), QStringLiteral("150,90,61"));
    m->pane->setLsClsWd(QStringLiteral("x,-4,,9,9,9"));
    QCOMPARE(m->pane->LsClsWd(), QStringLiteral("150,90,61"));
    // A share of the height at first, then what was set.
    const int all = m->child<QSplitter>("Splitter").height();
    QVERIFY(std::abs(m->pane->TrvHi() - all * 40 / 100) < 10);
    m->pane->setTrvHi(300);
    QTRY_COMPARE(m->pane->TrvHi(), 300);
    m->pane->setTrvHi(-5);
    QCOMPARE(m->pane->TrvHi(), 300);
}

void tst_uFtp::headerWidens()
{
    QVERIFY(m->begin());
    const int before = m->cbSvr().width();
    m->pane->resize(800, 620);
    QTRY_COMPARE(m->cbSvr().width(), before + 200);
    QCOMPARE(m->cbSvr().geometry().right(), m->child<QWidget>("Frame1").rect().right());
    QCOMPARE(m->child<QLabel>("Label1").geometry().right(), m->cbSvr().geometry().right());
}

void tst_uFtp::siteDeletedInTheDialog()
{
    QVERIFY(m->open());
    m->person.expectMessage(QStringLiteral("現在の接続は削除されています 一旦切断します"));
    QTimer closer;
    connect(&closer, &QTimer::timeout, &closer, [&] {
        QWidget *dialog = QApplication::activeModalWidget();
        if (dialog == nullptr)
            return;
        closer.stop();
        bool ok = false;
        m->database.ExecSql(QStringLiteral("Delete From msSite Where sName='web'"), ok);
        QTest::keyClick(dialog, Qt::Key_Escape);
    });
    closer.start(20);
    m->pickElse(0);
    QVERIFY(!m->pane->cOn());
    QCOMPARE(m->session.state(), Session::Closed);
    QCOMPARE(m->caption(), QStringLiteral("未接続"));
    QCOMPARE(m->cbSvr().count(), 2);
}

void tst_uFtp::deletedSitesPatternsLeaveTheMenu()
{
    QVERIFY(m->begin());
    bool ok = false;
    m->database.ExecSql(QStringLiteral("Insert Into msSync (sSync, sLph, sName, sFph) Values "
                                       "('p', '/tmp', 'web', '/docs')"),
                        ok);
    QVERIFY(ok);
    m->menus.SetSyncMn();
    QVERIFY(m->menus.entry(pfFtp::ELSE, 4)->isEnabled());
    QTimer person;
    connect(&person, &QTimer::timeout, &person, [&] {
        QWidget *dialog = QApplication::activeModalWidget();
        if (dialog == nullptr)
            return;
        person.stop();
        auto *names = dialog->findChild<QListWidget *>(QStringLiteral("lsSite"));
        const auto found = names->findItems(QStringLiteral("web"), Qt::MatchExactly);
        QTest::mouseClick(names->viewport(), Qt::LeftButton, {},
                          names->visualItemRect(found.value(0)).center());
        auto *remove = dialog->findChild<QPushButton *>(QStringLiteral("cmSite2"));
        QTest::mouseClick(remove, Qt::LeftButton);
        QTest::keyClick(dialog, Qt::Key_Escape);
    });
    person.start(20);
    m->pickElse(0);
    QVERIFY(!m->menus.entry(pfFtp::ELSE, 4)->isEnabled());
    QVERIFY(!m->menus.mnSync()->actions().constFirst()->isVisible());
}

#ifdef Q_OS_UNIX
void tst_uFtp::realDaemons_data()
{
    addDaemons();
}

void tst_uFtp::realDaemons()
{
    QFETCH(FtpDaemon::Kind, kind);
    if (skippedWithout(kind))
        return;
    FtpDaemon daemon(kind);
    QVERIFY(daemon.put("docs/deep/b.txt", "bbb"));
    QVERIFY(daemon.put("x.txt", "x"));
    daemon.own();
    QVERIFY(daemon.start());
    QVERIFY(m->begin());
    m->registerSite(QStringLiteral("daemon"), daemon.server(), daemon.user(), daemon.password());
    m->pane->fillSites();
    m->connectBy(QStringLiteral("daemon"));
    QVERIFY(m->pane->cOn());
    m->pane->setFsFllPh(daemon.server() + QStringLiteral("/docs/deep"));
    QCOMPARE(m->names(), words("b.txt"));
    m->person.expectQuestion(daemon.server() + QStringLiteral("/docs/deep を削除します"), true);
    m->pickForNode(QStringLiteral("docs/deep"), 6);
    QVERIFY(!daemon.exists("docs/deep"));
    QCOMPARE(m->pane->remotePath(), QStringLiteral("/docs"));
    m->treeView().setFocus();
    QTest::keyClick(&m->treeView(), Qt::Key_Delete);
    m->type(m->treeView(), QStringLiteral("新しい"));
    QVERIFY(daemon.exists("docs/新しい"));
    m->pane->disconnectSite();
}
#endif

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_uFtp)
#include "tst_uFtp.moc"
