#include "ftppane/FtpPaneFixture.h"

#include <QSignalSpy>

namespace venlo::test
{

/// Making, renaming and deleting what lies on the server, by menus and keys.
class tst_uFtpChanges : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m = std::make_unique<FtpPaneFixture>();
        QVERIFY(m->open());
    }
    void cleanup()
    {
        const bool clean = m->person.verify();
        const bool ended = !m->window.shown() && QGuiApplication::overrideCursor() == nullptr;
        m.reset();
        QVERIFY(clean);
        QVERIFY(ended);
    }
    void deleteKeyNeverDeletes_data();
    void deleteKeyNeverDeletes();
    void newFolderInTheList();
    void newFolderInTheTree();
    void newFolderUnderAnUnreadNode();
    void escapeRemovesTheNewEntry_data();
    void escapeRemovesTheNewEntry();
    void refusedNameKeepsTheEditor();
    void renameRow();
    void renameRowWithDots();
    void renameFolderRow();
    void renameNode();
    void renameRoot();
    void renameOntoAnother();
    void deleteRoot();
    void deleteNode();
    void deleteRows();
    void deleteRefusedByThePerson();
    void deleteRefusedByTheServer();
    void nothingSelected();
    void filesAndFoldersInTheMenu();
    void menuActions_data();
    void rootInTheMenuOpensNothing();
    void menuActions();
    void menuDismissed();
    void elseMenuUnconnected();
    void elseActions_data();
    void elseActions();
    void patternNamedLikeAGroup();
    void refreshByKey();
    void updateAll();
    void otherCommandsWhileBusy();

private:
    [[nodiscard]] PaneView &view(bool tree) const { return tree ? m->treeView() : m->listView(); }
    std::unique_ptr<FtpPaneFixture> m;
};

void tst_uFtpChanges::deleteKeyNeverDeletes_data()
{
    QTest::addColumn<bool>("tree");
    QTest::newRow("tree") << true;
    QTest::newRow("list") << false;
}

void tst_uFtpChanges::deleteKeyNeverDeletes()
{
    QFETCH(bool, tree);
    m->clickNode(QStringLiteral("img"));
    QTRY_COMPARE(m->names(), words("logo.png"));
    if (!tree)
        m->click(QStringLiteral("logo.png"));
    view(tree).setFocus();
    QTest::keyClick(&view(tree), Qt::Key_Delete);
    QVERIFY(m->editor(view(tree)) != nullptr);
    QCOMPARE(m->editor(view(tree))->text(), QStringLiteral("_Directry"));
    // Unchanged text counts as entered.
    QTest::keyClick(m->editor(view(tree)), Qt::Key_Return);
    QTRY_VERIFY(m->editor(view(tree)) == nullptr);
    QVERIFY(m->server.exists("/img/_Directry"));
    QVERIFY(m->server.exists("/img/logo.png"));
    QCOMPARE(m->server.count("DELE") + m->server.count("RMD"), 0);
}

void tst_uFtpChanges::newFolderInTheList()
{
    m->click(QStringLiteral("news.txt"));
    m->pickForRow(QStringLiteral("news.txt"), 9);
    const int row = m->rows().rowOf(EntryTag::NW, QStringLiteral("_Directry"));
    QVERIFY(row >= 0);
    QCOMPARE(m->rows().text(row, 2), QString());
    QCOMPARE(m->rows().text(row, 3), QStringLiteral("_DirectryD"));
    QCOMPARE(m->listView().selectionModel()->selectedRows().size(), 1);
    QCOMPARE(m->listView().currentIndex().row(), row);
    m->type(m->listView(), QStringLiteral("新しいﾌｫﾙﾀﾞ"));
    QVERIFY(m->server.exists("/新しいﾌｫﾙﾀﾞ"));
    QCOMPARE(m->rows().row(row).tag, EntryTag::FD);
    QCOMPARE(m->rows().text(row, 0), QStringLiteral("新しいﾌｫﾙﾀﾞ"));
    QVERIFY(!m->rows().text(row, 1).isEmpty());
    QCOMPARE(m->rows().text(row, 3), QStringLiteral("新しいﾌｫﾙﾀﾞD"));
    QVERIFY(m->node(QStringLiteral("新しいﾌｫﾙﾀﾞ")).isValid());
    // It can be entered at once.
    m->doubleClick(QStringLiteral("新しいﾌｫﾙﾀﾞ"));
    QTRY_COMPARE(m->pane->remotePath(), QStringLiteral("/新しいﾌｫﾙﾀﾞ"));
    QCOMPARE(m->names(), QStringList());
    QCOMPARE(m->note(), QString());
}

void tst_uFtpChanges::newFolderInTheTree()
{
    m->pickForNode({}, 9);
    const QModelIndex made = m->treeView().currentIndex();
    QCOMPARE(m->tree().tag(made), EntryTag::NW);
    QCOMPARE(m->names().size(), 4); // still the parent's list
    m->type(m->treeView(), QStringLiteral("neu"));
    QVERIFY(m->server.exists("/neu"));
    QCOMPARE(m->tree().tag(made), EntryTag::FD);
    QCOMPARE(m->pane->remotePath(), QStringLiteral("/neu"));
    QCOMPARE(m->names(), QStringList());
}

void tst_uFtpChanges::newFolderUnderAnUnreadNode()
{
    m->clickNode(QStringLiteral("docs"));
    QTRY_COMPARE(m->pane->remotePath(), QStringLiteral("/docs"));
    m->treeView().setFocus();
    QTest::keyClick(&m->treeView(), Qt::Key_Delete);
    QCOMPARE(m->childrenOf(QStringLiteral("docs")), words("deep,_Directry"));
    m->type(m->treeView(), QStringLiteral("two"));
    QCOMPARE(m->childrenOf(QStringLiteral("docs")), words("deep,two"));
    QVERIFY(m->server.exists("/docs/two"));
}

void tst_uFtpChanges::escapeRemovesTheNewEntry_data()
{
    deleteKeyNeverDeletes_data();
}

void tst_uFtpChanges::escapeRemovesTheNewEntry()
{
    QFETCH(bool, tree);
    view(tree).setFocus();
    QTest::keyClick(&view(tree), Qt::Key_Delete);
    QTest::keyClick(m->editor(view(tree)), Qt::Key_Escape);
    QTRY_COMPARE(m->names(), words("docs,img,index.html,news.txt"));
    QCOMPARE(m->childrenOf({}), words("docs,img"));
    QCOMPARE(m->treeView().currentIndex(), m->tree().root());
    QCOMPARE(m->server.count("MKD"), 0);
}

void tst_uFtpChanges::refusedNameKeepsTheEditor()
{
    m->server.on("MKD").once().reply(550, "not here");
    m->person.expectMessage(QStringLiteral("x は処理できませんでした\n550 not here"));
    m->listView().setFocus();
    QTest::keyClick(&m->listView(), Qt::Key_Delete);
    m->type(m->listView(), QStringLiteral("x"));
    QVERIFY(m->editor(m->listView()) != nullptr);
    QVERIFY(!m->pane->tellsRefusals());
    m->type(m->listView(), QStringLiteral("y"));
    QTRY_VERIFY(m->editor(m->listView()) == nullptr);
    QVERIFY(m->server.exists("/y"));
}

void tst_uFtpChanges::renameRow()
{
    m->click(QStringLiteral("news.txt"));
    QTest::keyClick(&m->listView(), Qt::Key_F2);
    m->type(m->listView(), QStringLiteral("old.txt"));
    QVERIFY(m->server.exists("/old.txt"));
    QVERIFY(!m->server.exists("/news.txt"));
    QCOMPARE(m->names(), words("docs,img,index.html,old.txt"));
    QCOMPARE(m->rows().text(3, 3), QStringLiteral("old.txtL"));
}

void tst_uFtpChanges::renameRowWithDots()
{
    // Leading dots are dropped on the way: the row shows what the entry is called now.
    m->click(QStringLiteral("news.txt"));
    QTest::keyClick(&m->listView(), Qt::Key_F2);
    m->type(m->listView(), QStringLiteral("..hidden"));
    QVERIFY(m->server.exists("/hidden"));
    QCOMPARE(m->names(), words("docs,img,index.html,hidden"));
    QTest::keyClick(&m->listView(), Qt::Key_F2);
    m->type(m->listView(), QStringLiteral("..."));
    QCOMPARE(m->names(), words("docs,img,index.html,hidden"));
}

void tst_uFtpChanges::renameFolderRow()
{
    m->pickForRow(QStringLiteral("docs"), 7);
    m->type(m->listView(), QStringLiteral("papers"));
    QVERIFY(m->server.exists("/papers/a.txt"));
    QCOMPARE(m->childrenOf({}), words("papers,img"));
    QCOMPARE(m->rows().text(0, 3), QStringLiteral("papersD"));
    m->doubleClick(QStringLiteral("papers"));
    QTRY_COMPARE(m->names(), words("deep,a.txt"));
}

void tst_uFtpChanges::renameNode()
{
    m->pickForNode(QStringLiteral("img"), 7);
    m->type(m->treeView(), QStringLiteral("pics"));
    QVERIFY(m->server.exists("/pics/logo.png"));
    QTRY_COMPARE(m->pane->FsFllPh(), m->server.server() + QStringLiteral("/pics"));
}

void tst_uFtpChanges::renameRoot()
{
    m->person.expectMessage(QStringLiteral("ﾙｰﾄﾊﾟｽの名前は変更できません"));
    m->treeView().setFocus();
    QTest::keyClick(&m->treeView(), Qt::Key_F2);
    QVERIFY(m->editor(m->treeView()) == nullptr);
}

void tst_uFtpChanges::renameOntoAnother()
{
    m->person.expectMessage(
        QStringLiteral("index.html は処理できませんでした\n同じ名前が既にあります"));
    m->click(QStringLiteral("news.txt"));
    QTest::keyClick(&m->listView(), Qt::Key_F2);
    m->type(m->listView(), QStringLiteral("index.html"));
    QVERIFY(m->editor(m->listView()) != nullptr);
    QTest::keyClick(m->editor(m->listView()), Qt::Key_Escape);
    QTRY_COMPARE(m->names(), words("docs,img,index.html,news.txt"));
    QVERIFY(m->server.exists("/news.txt"));
}

void tst_uFtpChanges::deleteRoot()
{
    m->person.expectMessage(QStringLiteral("ﾙｰﾄﾊﾟｽは削除できません"));
    m->pickForNode({}, 6);
    QCOMPARE(m->server.count("DELE") + m->server.count("RMD"), 0);
}

void tst_uFtpChanges::deleteNode()
{
    m->person.expectQuestion(m->server.server() + QStringLiteral("/docs を削除します"), true);
    m->pickForNode(QStringLiteral("docs"), 6);
    QVERIFY(!m->server.exists("/docs"));
    QCOMPARE(m->childrenOf({}), words("img"));
    QCOMPARE(m->pane->remotePath(), QStringLiteral("/"));
    QCOMPARE(m->names(), words("img,index.html,news.txt"));
}

void tst_uFtpChanges::deleteRows()
{
    m->person.expectQuestion(QStringLiteral("指定したﾌｫﾙﾀﾞ･ﾌｧｲﾙを削除します"), true);
    m->click(QStringLiteral("docs"));
    m->click(QStringLiteral("news.txt"), Qt::ControlModifier);
    m->pickForRow(QStringLiteral("news.txt"), 6);
    QVERIFY(!m->server.exists("/docs"));
    QVERIFY(!m->server.exists("/news.txt"));
    QCOMPARE(m->names(), words("img,index.html"));
    QCOMPARE(m->childrenOf({}), words("img"));
}

void tst_uFtpChanges::deleteRefusedByThePerson()
{
    m->person.expectQuestion(QStringLiteral("指定したﾌｫﾙﾀﾞ･ﾌｧｲﾙを削除します"), false);
    m->click(QStringLiteral("news.txt"));
    m->pickForRow(QStringLiteral("news.txt"), 6);
    m->person.expectQuestion(m->server.server() + QStringLiteral("/img を削除します"), false);
    m->pickForNode(QStringLiteral("img"), 6);
    QVERIFY(m->server.exists("/news.txt"));
    QVERIFY(m->server.exists("/img"));
    QCOMPARE(m->childrenOf({}), words("docs,img"));
}

void tst_uFtpChanges::deleteRefusedByTheServer()
{
    m->server.on("RMD").reply(550, "no");
    m->person.expectQuestion(m->server.server() + QStringLiteral("/img を削除します"), true);
    m->pickForNode(QStringLiteral("img"), 6);
    // Its file is gone, the folder is not: tree and list say so.
    QCOMPARE(m->childrenOf({}), words("docs,img"));
    QCOMPARE(m->names(), QStringList());
    QCOMPARE(m->person.outcomes(Outcome::Kind::GivenUp).size(), size_t(1));
}

void tst_uFtpChanges::nothingSelected()
{
    m->listView().clearSelection();
    m->pickForRow({}, -1);
    for (const int index : {0, 1, 3, 4, 6, 7})
        QVERIFY(!m->menus.entry(pfFtp::FTP, index)->isEnabled());
    QVERIFY(m->menus.entry(pfFtp::FTP, 9)->isEnabled());
}

void tst_uFtpChanges::filesAndFoldersInTheMenu()
{
    m->pickForRow(QStringLiteral("docs"), -1);
    QVERIFY(!m->menus.entry(pfFtp::FTP, 0)->isEnabled());
    QVERIFY(m->menus.entry(pfFtp::FTP, 3)->isEnabled());
    m->pickForRow(QStringLiteral("news.txt"), -1);
    QVERIFY(m->menus.entry(pfFtp::FTP, 0)->isEnabled());
    QVERIFY(m->menus.entry(pfFtp::FTP, 1)->isEnabled());
}

void tst_uFtpChanges::menuActions_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("editor");
    QTest::newRow("open") << 0 << false;
    QTest::newRow("open text") << 1 << true;
    QTest::newRow("synchronise") << 4 << false;
}

void tst_uFtpChanges::rootInTheMenuOpensNothing()
{
    // The root stands for the files in it too, but a selected one is another menu's matter.
    m->click(QStringLiteral("news.txt"));
    m->pickForNode({}, -1);
    for (const int index : {0, 1})
        QVERIFY(!m->menus.entry(pfFtp::FTP, index)->isEnabled());
    m->pickForRow(QStringLiteral("news.txt"), -1);
    for (const int index : {0, 1})
        QVERIFY(m->menus.entry(pfFtp::FTP, index)->isEnabled());
}

void tst_uFtpChanges::menuActions()
{
    QFETCH(int, index);
    QFETCH(bool, editor);
    QSignalSpy opened(m->pane.get(), &uFtp::eOpnFL);
    QSignalSpy acted(m->pane.get(), &uFtp::eAct);
    m->clickNode(QStringLiteral("docs"));
    QTRY_COMPARE(m->names(), words("deep,a.txt"));
    // The host takes its own turn.
    connect(m->pane.get(), &uFtp::eAct, m->pane.get(), [this] { QVERIFY(m->gate.begin()); });
    m->pickForRow(QStringLiteral("a.txt"), index);
    if (index == 4) {
        QCOMPARE(acted.size(), 1);
        QCOMPARE(acted.at(0).at(0).toString(), QStringLiteral("同期"));
        return;
    }
    QCOMPARE(opened.size(), 1);
    QCOMPARE(opened.at(0),
             QVariantList({QStringLiteral("/docs"), QStringLiteral("a.txt"), editor}));
}

void tst_uFtpChanges::menuDismissed()
{
    QSignalSpy acted(m->pane.get(), &uFtp::eAct);
    QSignalSpy opened(m->pane.get(), &uFtp::eOpnFL);
    m->menus.setPickIndex(4);
    m->pickForRow(QStringLiteral("news.txt"), -1);
    QCOMPARE(m->menus.pickIndex(), -1);
    QCOMPARE(acted.size() + opened.size(), 0);
}

void tst_uFtpChanges::elseMenuUnconnected()
{
    m->pane->disconnectSite();
    m->whenMenu(nullptr);
    QTest::mouseClick(&m->imElse(), Qt::LeftButton);
    for (const int index : {2, 5, 8})
        QVERIFY(!m->menus.entry(pfFtp::ELSE, index)->isEnabled());
    QVERIFY(m->menus.entry(pfFtp::ELSE, 0)->isEnabled());
    QVERIFY(m->menus.entry(pfFtp::ELSE, 6)->isEnabled());
}

void tst_uFtpChanges::elseActions_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("word");
    QTest::newRow("register") << 5 << QStringLiteral("登録");
    QTest::newRow("edit") << 6 << QStringLiteral("編集");
    QTest::newRow("disconnect") << 8 << QStringLiteral("切断");
}

void tst_uFtpChanges::elseActions()
{
    QFETCH(int, index);
    QFETCH(QString, word);
    QSignalSpy acted(m->pane.get(), &uFtp::eAct);
    m->pickElse(index);
    QCOMPARE(acted.size(), 1);
    QCOMPARE(acted.at(0).at(0).toString(), word);
}

void tst_uFtpChanges::patternNamedLikeAGroup()
{
    bool ok = false;
    m->database.ExecSql(QStringLiteral("Insert Into msSync (sSync, sLph, sName, sFph) Values "
                                       "('Else', '/tmp', 'web', '/docs')"),
                        ok);
    QVERIFY(ok);
    m->menus.SetSyncMn();
    QSignalSpy synced(m->pane.get(), &uFtp::eSync);
    auto *timer = new QTimer(m->pane.get());
    connect(timer, &QTimer::timeout, timer, [this, timer] {
        if (QApplication::activePopupWidget() == nullptr)
            return;
        timer->stop();
        QAction *first = m->menus.mnSync()->actions().constFirst();
        m->menus.menu(pfFtp::ELSE)->setActiveAction(m->menus.entry(pfFtp::ELSE, 4));
        QTest::keyClick(m->menus.menu(pfFtp::ELSE), Qt::Key_Right);
        QTRY_VERIFY(m->menus.mnSync()->isVisible());
        QTest::mouseClick(m->menus.mnSync(), Qt::LeftButton, {},
                          m->menus.mnSync()->actionGeometry(first).center());
    });
    timer->start(20);
    QTest::mouseClick(&m->imElse(), Qt::LeftButton);
    QCOMPARE(synced.size(), 1);
    QCOMPARE(synced.at(0).at(0).toString(), QStringLiteral("Else"));
}

void tst_uFtpChanges::refreshByKey()
{
    m->click(QStringLiteral("news.txt"));
    m->server.put("/fresh/f.txt", "f");
    m->server.put("/zzz.txt", "z");
    (void)m->server.tree().removeFile("/index.html");
    QTest::keyClick(&m->listView(), Qt::Key_F5);
    QCOMPARE(m->names(), words("docs,fresh,img,news.txt,zzz.txt"));
    QCOMPARE(m->childrenOf({}), words("docs,img,fresh"));
    // The selection stays.
    QCOMPARE(m->listView().selectionModel()->selectedRows().size(), 1);
    QCOMPARE(m->listView().currentIndex().row(), 3);
    QVERIFY(m->person.texts(ScriptedPerson::What::ShowWait)
                .contains(QStringLiteral("FTP側のﾃﾞｨﾚｸﾄﾘ情報を更新しています")));
    QCOMPARE(m->person.openWaits(), 0);
}

void tst_uFtpChanges::updateAll()
{
    m->clickNode(QStringLiteral("docs"));
    QTRY_COMPARE(m->pane->remotePath(), QStringLiteral("/docs"));
    m->server.put("/late/l.txt", "l");
    QString counted;
    m->person.onYield([&] { counted = m->note().isEmpty() ? counted : m->note(); });
    m->pickElse(2);
    QCOMPARE(m->childrenOf({}), words("docs,img,late"));
    QCOMPARE(m->pane->remotePath(), QStringLiteral("/"));
    // "/", docs, docs/deep, img, late.
    QCOMPARE(counted, QStringLiteral("5 個のﾌｫﾙﾀﾞの情報を取得しました"));
    QCOMPARE(m->note(), QString());
}

void tst_uFtpChanges::otherCommandsWhileBusy()
{
    const auto turn = m->gate.begin();
    QVERIFY(turn);
    m->clickNode(QStringLiteral("docs"));
    QTest::qWait(30);
    QCOMPARE(m->pane->remotePath(), QStringLiteral("/"));
    QCOMPARE(m->treeView().currentIndex(), m->tree().root());
    m->clickArrow(QStringLiteral("docs"));
    QTest::qWait(30);
    QVERIFY(!m->treeView().isExpanded(m->node(QStringLiteral("docs"))));
    m->doubleClick(QStringLiteral("docs"));
    QTest::keyClick(&m->listView(), Qt::Key_Delete);
    QVERIFY(m->editor(m->listView()) == nullptr);
    // The head shows it, but not for a moment's work.
    QTRY_VERIFY(!m->cbSvr().isEnabled());
    QVERIFY(!m->imOpn().isEnabled());
    QVERIFY(!m->imElse().isEnabled());
    QVERIFY(m->treeView().isEnabled());
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_uFtpChanges)
#include "tst_uFtpChanges.moc"
