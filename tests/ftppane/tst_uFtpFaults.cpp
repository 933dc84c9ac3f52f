#include "ftppane/FtpPaneFixture.h"

#include <atomic>

#include <QElapsedTimer>
#include <QSignalSpy>

#include "db/Recordset.h"
#include "db/Store.h"
#include "views/KeyCounter.h"

namespace venlo::test
{

/// What the pane makes of servers, stores and numbers that give out.
class tst_uFtpFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m = std::make_unique<FtpPaneFixture>(); }
    void cleanup()
    {
        const bool clean = m->person.verify();
        const bool ended = m->isAtRest();
        m.reset();
        QVERIFY(clean);
        QVERIFY(ended);
    }
    void failedListingIsUnread();
    void failedListOfTheShownFolder();
    void newFolderWhereNothingCanBeListed();
    void brokenOffListing();
    void cancelledExpand();
    void cancelledRefresh();
    void newerChoiceEndsAListing();
    void choiceDuringARefresh();
    void openedDuringARefresh();
    void staleMarkerIsClosed();
    void lostInTheMiddleOfAnExpand();
    void lostWhileRenaming();
    void hostFindsTheSessionGone();
    void expandOfAFolderThatWent();
    void unusableProxy();
    void storeFails();
    void tooLargeForTheStore();
    void siteListFails();
    void nameWithAQuote();
    void rowKeysRunOut();
    void nodeKeysRunOut();
    void freshPaneDoesNotAskAgain();
    void manyRows();

private:
    /// Does something once, inside the wait for an answer to CWD with that directory.
    void whileAsked(const QByteArray &dir, int delay, const std::function<void()> &act);

    std::unique_ptr<FtpPaneFixture> m;
    std::atomic<bool> m_asked{false};
};

void tst_uFtpFaults::failedListingIsUnread()
{
    m->server.on("CWD", "/img").reply(550, "keep out");
    QVERIFY(m->open());
    // Whether it has folders is not known.
    QCOMPARE(m->childrenOf(QStringLiteral("img")), words("?"));
    QVERIFY(m->pane->cOn());
    m->clickArrow(QStringLiteral("img"));
    QTRY_VERIFY(!m->treeView().isExpanded(m->node(QStringLiteral("img"))));
    QCOMPARE(m->childrenOf(QStringLiteral("img")), words("?"));
    // Once it can be listed it is what it is.
    m->server.script().clear();
    m->clickArrow(QStringLiteral("img"));
    QTRY_COMPARE(m->childrenOf(QStringLiteral("img")), QStringList());
}

void tst_uFtpFaults::failedListOfTheShownFolder()
{
    QVERIFY(m->open());
    m->server.on("CWD", "/docs/deep").reply(550, "keep out");
    m->person.expectMessage(QStringLiteral("/docs/deep/x の一覧を取得できませんでした"));
    QVERIFY(!m->pane->SetSync(QStringLiteral("web"), QStringLiteral("/docs/deep/x")));
    QCOMPARE(m->pane->remotePath(), QStringLiteral("/docs/deep"));
    QCOMPARE(m->rows().count(), 0);
    QCOMPARE(m->note(), QStringLiteral("一覧を取得できませんでした (F5で再表示)"));
    m->clickNode({});
    QTRY_COMPARE(m->rows().count(), 4);
    QCOMPARE(m->note(), QString());
}

void tst_uFtpFaults::newFolderWhereNothingCanBeListed()
{
    QVERIFY(m->open());
    m->server.on("CWD", "/docs/deep").reply(550, "keep out");
    QVERIFY(m->pane->SetSync(QStringLiteral("web"), QStringLiteral("/docs/deep")));
    m->treeView().setFocus();
    m->person.expectMessage(QStringLiteral("/docs/deep の一覧を取得できませんでした"));
    QTest::keyClick(&m->treeView(), Qt::Key_Delete);
    QVERIFY(m->person.verify());
    QVERIFY(m->editor(m->treeView()) == nullptr);
    QCOMPARE(m->childrenOf(QStringLiteral("docs/deep")), words("?"));
}

void tst_uFtpFaults::brokenOffListing()
{
    QVERIFY(m->open());
    m->server.on("MLSD").truncateAfter(150).completion("426 broken off\r\n");
    m->listView().setFocus();
    QTest::keyClick(&m->listView(), Qt::Key_F5);
    QCOMPARE(m->note(), QStringLiteral("一覧の一部を取得できませんでした (F5で再表示)"));
    QVERIFY(m->rows().count() > 0);
    m->server.script().clear();
    QTest::keyClick(&m->listView(), Qt::Key_F5);
    QCOMPARE(m->names(), words("docs,img,index.html,news.txt"));
    QCOMPARE(m->note(), QString());
}

void tst_uFtpFaults::cancelledExpand()
{
    for (int i = 0; i < 6; ++i)
        m->server.put(QByteArray("/many/sub") + QByteArray::number(i) + "/inside/f", "f");
    QVERIFY(m->open());
    // The third of its folders hangs until Cancel.
    m->server.on("CWD", "/many/sub2").call([this] { m->person.cancelNow(); }).delay(300);
    m->clickArrow(QStringLiteral("many"));
    QTRY_COMPARE(m->childrenOf(QStringLiteral("many")).size(), 6);
    QTRY_VERIFY(!m->gate.busy());
    for (const char *name : {"many/sub0", "many/sub2", "many/sub5"})
        QCOMPARE(m->childrenOf(QLatin1String(name)), words("?"));
    QCOMPARE(m->server.count("CWD", "/many/sub4"), 0);
    QVERIFY(m->pane->cOn());
    m->person.resetCancel();
    m->server.script().clear();
    m->clickArrow(QStringLiteral("many/sub4"));
    QTRY_COMPARE(m->childrenOf(QStringLiteral("many/sub4")), words("inside"));
}

void tst_uFtpFaults::cancelledRefresh()
{
    QVERIFY(m->open());
    m->server.on("CWD", "/img").call([this] { m->person.cancelNow(); }).delay(300);
    m->pickElse(2);
    // What was listed stays, the rest is unread; the connection is still there.
    QCOMPARE(m->childrenOf({}), words("docs,img"));
    QCOMPARE(m->childrenOf(QStringLiteral("img")), words("?"));
    QCOMPARE(m->names(), words("docs,img,index.html,news.txt"));
    QVERIFY(m->pane->cOn());
    QCOMPARE(m->person.openWaits(), 0);
}

void tst_uFtpFaults::whileAsked(const QByteArray &dir, int delay, const std::function<void()> &act)
{
    m_asked = false;
    m->server.on("CWD", dir).call([this] { m_asked = true; }).delay(delay);
    auto *looks = new QTimer(&m->gate);
    connect(looks, &QTimer::timeout, looks, [this, act] {
        if (m_asked.exchange(false))
            act();
    });
    looks->start(10);
    // As the windows' front end does.
    connect(&m->gate, &OperationGate::busyChanged, &m->gate, [this](bool busy) {
        if (busy)
            m->person.resetCancel();
    });
}

void tst_uFtpFaults::newerChoiceEndsAListing()
{
    m->server.on("CWD", "/img").reply(550, "keep out");
    QVERIFY(m->open());
    m->server.script().clear();
    whileAsked("/img", 8000, [this] { m->clickNode(QStringLiteral("docs")); });
    QElapsedTimer took;
    took.start();
    m->clickNode(QStringLiteral("img"));
    QTRY_COMPARE(m->pane->remotePath(), QStringLiteral("/docs"));
    QTRY_VERIFY(!m->gate.busy());
    QVERIFY2(took.elapsed() < 4000, qPrintable(QString::number(took.elapsed())));
    QCOMPARE(m->treeView().currentIndex(), m->node(QStringLiteral("docs")));
    QCOMPARE(m->names(), words("deep,a.txt"));
    QVERIFY(m->pane->cOn());
}

void tst_uFtpFaults::choiceDuringARefresh()
{
    QVERIFY(m->open());
    bool acted = false;
    whileAsked("/img", 400, [&] {
        acted = true;
        m->clickNode(QStringLiteral("docs"));
    });
    QTest::keyClick(&m->listView(), Qt::Key_F5);
    QTRY_VERIFY(acted && !m->gate.busy());
    // A refresh is not given up for a click, and the tree stands on the folder that is shown.
    QTRY_COMPARE(m->treeView().currentIndex(), m->tree().root());
    QCOMPARE(m->pane->remotePath(), QStringLiteral("/"));
    QVERIFY(m->childrenOf(QStringLiteral("img")).isEmpty());
}

void tst_uFtpFaults::openedDuringARefresh()
{
    for (int i = 0; i < 3; ++i)
        m->server.put(QByteArray("/many/sub") + QByteArray::number(i) + "/inside/f", "f");
    QVERIFY(m->open());
    bool acted = false;
    whileAsked("/many/sub1", 400, [&] {
        acted = true;
        m->clickArrow(QStringLiteral("docs"));
    });
    m->clickArrow(QStringLiteral("many"));
    QTRY_COMPARE(m->childrenOf(QStringLiteral("many")).size(), 3);
    QTRY_VERIFY(!m->gate.busy());
    QVERIFY(acted);
    // Nobody sees the marker of a folder that was not read.
    QTRY_VERIFY(!m->treeView().isExpanded(m->node(QStringLiteral("docs"))));
    m->clickArrow(QStringLiteral("docs"));
    QTRY_COMPARE(m->childrenOf(QStringLiteral("docs")), words("deep"));
}

void tst_uFtpFaults::staleMarkerIsClosed()
{
    QVERIFY(m->open());
    m->clickArrow(QStringLiteral("docs"));
    QTRY_COMPARE(m->childrenOf(QStringLiteral("docs")), words("deep"));
    m->clickNode(QStringLiteral("docs"));
    QTRY_COMPARE(m->pane->remotePath(), QStringLiteral("/docs"));
    m->server.on("CWD", "/docs").reply(550, "keep out");
    QTest::keyClick(&m->treeView(), Qt::Key_F5);
    QTRY_VERIFY(!m->gate.busy());
    // What is known of the folder or the marker, but the marker is never to be seen.
    if (m->childrenOf(QStringLiteral("docs")) == words("?"))
        QVERIFY(!m->treeView().isExpanded(m->node(QStringLiteral("docs"))));
}

void tst_uFtpFaults::lostInTheMiddleOfAnExpand()
{
    QVERIFY(m->open());
    m->server.on("CWD", "/docs/deep")
        .call([this] { m->server.script().clear(); })
        .dropBeforeReply();
    m->server.on("CONNECT").reply(421, "no more");
    m->person.expectMessage(m->server.server() +
                            QStringLiteral(" へ接続が切断されました　再度起動後実行して下さい"));
    m->server.on("CWD", "/docs/deep").dropBeforeReply();
    m->clickArrow(QStringLiteral("docs"));
    QTRY_VERIFY(!m->pane->cOn());
    QCOMPARE(m->caption(), QStringLiteral("未接続"));
    QCOMPARE(m->tree().rowCount({}), 0);
    QCOMPARE(m->rows().count(), 0);
    QVERIFY(!m->treeView().isEnabled());
    m->server.script().clear();
    QTRY_VERIFY(m->imOpn().isEnabled());
    QTest::mouseClick(&m->imOpn(), Qt::LeftButton);
    QVERIFY(m->pane->cOn());
}

void tst_uFtpFaults::lostWhileRenaming()
{
    QVERIFY(m->open());
    m->click(QStringLiteral("news.txt"));
    QTest::keyClick(&m->listView(), Qt::Key_F2);
    m->server.stop();
    m->person.allowMessages();
    m->type(m->listView(), QStringLiteral("other.txt"));
    QTRY_VERIFY(!m->pane->cOn());
    QTRY_VERIFY(m->editor(m->listView()) == nullptr);
    QCOMPARE(m->rows().count(), 0);
}

void tst_uFtpFaults::hostFindsTheSessionGone()
{
    QVERIFY(m->open());
    m->pane->lookAtSession();
    QVERIFY(m->pane->cOn());
    m->session.CloseInternet();
    m->pane->lookAtSession();
    QVERIFY(!m->pane->cOn());
    QCOMPARE(m->caption(), QStringLiteral("未接続"));
}

void tst_uFtpFaults::expandOfAFolderThatWent()
{
    QVERIFY(m->open());
    (void)m->server.tree().removeFile("/docs/deep/b.txt");
    (void)m->server.tree().removeFolder("/docs/deep");
    m->clickArrow(QStringLiteral("docs"));
    // The cache still knows it; that it cannot be listed leaves it unread.
    QTRY_COMPARE(m->childrenOf(QStringLiteral("docs/deep")), words("?"));
    m->clickNode(QStringLiteral("docs"));
    QTRY_COMPARE(m->pane->remotePath(), QStringLiteral("/docs"));
    QTest::keyClick(&m->treeView(), Qt::Key_F5);
    QTRY_COMPARE(m->childrenOf(QStringLiteral("docs")), QStringList());
    QCOMPARE(m->names(), words("a.txt"));
}

void tst_uFtpFaults::unusableProxy()
{
    QVERIFY(m->begin());
    bool ok = false;
    m->database.ExecSql(QStringLiteral("Update msSite Set sPxy='gopher://x' Where sName='web'"),
                        ok);
    QVERIFY(ok);
    m->person.expectMessage(QStringLiteral("gopher://x ﾌﾟﾛｷｼの設定を確認して下さい"));
    m->connectBy(QStringLiteral("web"));
    QVERIFY(!m->pane->cOn());
    QCOMPARE(m->caption(), QStringLiteral("未接続"));
    // What a proxy's text holds of a login stays out of the message.
    m->database.ExecSql(
        QStringLiteral("Update msSite Set sPxy='gopher://taro:himitsu@x' Where sName='web'"), ok);
    m->person.expectMessage(QStringLiteral("gopher://****@x ﾌﾟﾛｷｼの設定を確認して下さい"));
    m->connectBy(QStringLiteral("web"));
}

void tst_uFtpFaults::storeFails()
{
    QVERIFY(m->open());
    m->database.store().exec(QStringLiteral("ALTER TABLE \"web\" RENAME TO \"away\""), {});
    m->person.allowMessages();
    m->clickNode(QStringLiteral("docs"));
    QTRY_COMPARE(m->person.messages().size(), 1);
    QVERIFY(m->person.messages().constFirst().contains(QLatin1String("web")));
    QVERIFY(m->pane->cOn());
    m->database.store().exec(QStringLiteral("ALTER TABLE \"away\" RENAME TO \"web\""), {});
    m->clickNode(QStringLiteral("docs"));
    QTRY_COMPARE(m->names(), words("deep,a.txt"));
}

void tst_uFtpFaults::tooLargeForTheStore()
{
    m->server.setRawListing("/img", "type=file;size=4000000000;modify=20240101000000; big.iso\r\n"
                                    "type=file;size=5;modify=20240101000000; small.txt\r\n");
    QVERIFY(m->begin());
    m->person.allowMessages();
    m->connectBy(QStringLiteral("web"));
    QCOMPARE(m->person.messages().size(), 1);
    QVERIFY(m->person.messages().constFirst().contains(QLatin1String("big.iso")));
    m->clickNode(QStringLiteral("img"));
    QTRY_COMPARE(m->names(), words("small.txt"));
    QCOMPARE(m->note(), QStringLiteral("一覧の一部を取得できませんでした (F5で再表示)"));
    QCOMPARE(m->person.messages().size(), 1);
}

void tst_uFtpFaults::siteListFails()
{
    QVERIFY(m->begin());
    m->database.store().exec(QStringLiteral("ALTER TABLE msSite RENAME TO away"), {});
    m->person.allowMessages();
    m->pane->fillSites();
    QCOMPARE(m->person.messages().size(), 1);
    m->database.store().exec(QStringLiteral("ALTER TABLE away RENAME TO msSite"), {});
}

void tst_uFtpFaults::nameWithAQuote()
{
    QVERIFY(m->begin());
    m->registerSite(QStringLiteral("a'b"), QString(), QStringLiteral("u"), QString());
    m->pane->fillSites();
    m->person.expectMessage(QStringLiteral("FTP ｻｰﾊﾞｰ･ﾕｰｻﾞｰ･ﾊﾟｽﾜｰﾄﾞを確認して下さい"));
    m->connectBy(QStringLiteral("a'b"));
    QVERIFY(!m->pane->cOn());
}

void tst_uFtpFaults::rowKeysRunOut()
{
    QVERIFY(m->open());
    QSignalSpy out(m->pane.get(), &uFtp::keysRanOut);
    m->rows().keys().restart(KeyCounter::last);
    m->person.expectMessage(
        QStringLiteral("項目の番号を使い切ったため､表示できない項目があります"));
    m->clickNode(QStringLiteral("docs"));
    QTRY_COMPARE(out.size(), 1);
    // The rows so far stay.
    QCOMPARE(m->names(), words("deep"));
    m->clickNode({});
    QTest::qWait(30);
    QCOMPARE(out.size(), 1);
}

void tst_uFtpFaults::nodeKeysRunOut()
{
    m->server.put("/docs/more/x/y", "y");
    QVERIFY(m->open());
    m->pane->ReFresh(); // someone has gone about in this pane
    QSignalSpy out(m->pane.get(), &uFtp::keysRanOut);
    // The host takes the pane away then: never under an operation.
    connect(m->pane.get(), &uFtp::keysRanOut, m->pane.get(), [this] { QVERIFY(!m->gate.busy()); });
    m->tree().keys().restart(KeyCounter::last);
    m->person.expectMessage(
        QStringLiteral("項目の番号を使い切ったため､表示できない項目があります"));
    {
        const auto turn = m->gate.begin();
        m->pane->setFsFllPh(m->server.server() + QStringLiteral("/docs/deep"));
        QTest::qWait(30);
        QCOMPARE(out.size(), 0);
    }
    QTRY_COMPARE(out.size(), 1);
    QCOMPARE(m->childrenOf(QStringLiteral("docs")), words("deep"));
}

void tst_uFtpFaults::freshPaneDoesNotAskAgain()
{
    QVERIFY(m->open());
    m->pane->setFsFllPh(m->server.server() + QStringLiteral("/docs"));
    m->build();
    QSignalSpy out(m->pane.get(), &uFtp::keysRanOut);
    m->pane->showConnected(QStringLiteral("web"));
    QVERIFY(m->pane->cOn());
    QCOMPARE(m->pane->FsSvr(), QStringLiteral("web"));
    QCOMPARE(m->caption(), m->server.server());
    m->rows().keys().restart(KeyCounter::last);
    m->pane->setFsFllPh(m->server.server() + QStringLiteral("/docs"));
    QCOMPARE(m->pane->remotePath(), QStringLiteral("/docs"));
    QTest::qWait(30);
    QCOMPARE(out.size(), 0);
}

void tst_uFtpFaults::manyRows()
{
    QVERIFY(m->open());
    const auto table = m->database.openTable(QStringLiteral("web"));
    {
        Transaction transaction(m->database);
        for (int i = 0; i < 30'000; ++i)
            table->add(words("sDir,bFd,sName,dDate,nSize"),
                       {QStringLiteral("/img"), 0, QStringLiteral("f%1").arg(i), 45000.0, 5});
        transaction.commit();
    }
    m->clickNode(QStringLiteral("img"));
    QTRY_COMPARE(m->rows().count(), 30'001);
    m->listView().setFocus();
    m->listView().selectAll();
    // What did not change keeps its keys: they last for many refreshes.
    const QString key = m->rows().row(0).key;
    m->pane->ReFresh();
    QCOMPARE(m->rows().row(0).key, key);
    QCOMPARE(m->listView().selectionModel()->selectedRows().size(), 30'001);
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_uFtpFaults)
#include "tst_uFtpFaults.moc"
