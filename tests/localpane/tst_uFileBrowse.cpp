// How a person goes about in the local pane, and what the pane tells its host.
#include "localpane/PaneFixture.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QMenu>
#include <QSignalSpy>

using namespace venlo;
using venlo::test::makeTree;
using venlo::test::PaneFixture;

namespace
{
struct Fixture : PaneFixture {
    explicit Fixture(const std::vector<venlo::test::TreeRow> &what = {
                         {"sub/deep/", ""}, {"sub/in.txt", "1"}, {"a.txt", "1"}, {"b.txt", "1"}})
    {
        made = makeTree(here(), what);
        pane->cOn(here());
    }
    [[nodiscard]] QString sub() const { return at(QStringLiteral("sub")); }
    bool made = false;
};

const QString gone = QStringLiteral(" が存在しません");
} // namespace

class tst_uFileBrowse : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsOfClicksOnFiles();
    void tellsNothingOfFolders();
    void tellsNothingWhileBusy();
    void entersAFolder_data();
    void entersAFolder();
    void goesToTheParent();
    void readsAgain();
    void saysOnceThatAFolderIsGone();
    void runsMenuCommands();
    void runsNothingForAMenuDismissed();
    void hasNoMenuWhileAnOperationRuns();
    void namesItsParts();
    void goesRoundByTab();
};

void tst_uFileBrowse::tellsOfClicksOnFiles()
{
    Fixture f;
    QSignalSpy told(f.pane.get(), &uFile::eSlcFL);
    f.click(QStringLiteral("a.txt"));
    QCOMPARE(told.size(), 1);
    QCOMPARE(told.at(0), (QVariantList{false, f.at(QStringLiteral("a.txt"))}));
    f.doubleClick(QStringLiteral("b.txt"));
    QCOMPARE(told.size(), 3);
    QCOMPARE(told.at(1), (QVariantList{false, f.at(QStringLiteral("b.txt"))}));
    QCOMPARE(told.at(2), (QVariantList{true, f.at(QStringLiteral("b.txt"))}));
    QTest::keyClick(&f.listView(), Qt::Key_Return);
    QCOMPARE(told.size(), 4);
    QCOMPARE(told.at(3), told.at(2));
}

void tst_uFileBrowse::tellsNothingOfFolders()
{
    Fixture f;
    QSignalSpy told(f.pane.get(), &uFile::eSlcFL);
    f.click(QStringLiteral("sub"));
    f.doubleClick(QStringLiteral("sub"));
    QCOMPARE(told.size(), 0);
}

void tst_uFileBrowse::tellsNothingWhileBusy()
{
    Fixture f;
    QSignalSpy told(f.pane.get(), &uFile::eSlcFL);
    {
        const auto turn = f.gate.begin();
        f.doubleClick(QStringLiteral("a.txt"));
        QCOMPARE(told.size(), 0);
    }
    f.click(QStringLiteral("a.txt"));
    QCOMPARE(told.size(), 1);
}

void tst_uFileBrowse::entersAFolder_data()
{
    QTest::addColumn<bool>("byKey");
    QTest::newRow("double click") << false;
    QTest::newRow("Enter") << true;
}

void tst_uFileBrowse::entersAFolder()
{
    QFETCH(const bool, byKey);
    Fixture f;
    if (byKey) {
        f.click(QStringLiteral("sub"));
        QTest::keyClick(&f.listView(), Qt::Key_Return);
    } else {
        f.doubleClick(QStringLiteral("sub"));
    }
    QCOMPARE(f.pane->NodePath(), f.sub());
    QVERIFY(f.treeView().isExpanded(f.node(f.sub())));
    QCOMPARE(f.names(), (QStringList{QStringLiteral("deep"), QStringLiteral("in.txt")}));
}

void tst_uFileBrowse::goesToTheParent()
{
    Fixture f;
    f.doubleClick(QStringLiteral("sub"));
    QTest::keyClick(&f.listView(), Qt::Key_Backspace);
    QCOMPARE(f.pane->NodePath(), f.here());
    QCOMPARE(f.listView().currentIndex().row(), f.rowOf(QStringLiteral("sub")));
    QTest::keyClick(&f.listView(), Qt::Key_Backspace);
    QCOMPARE(f.pane->NodePath(), f.here());
    f.clickNode(f.sub());
    QCOMPARE(f.names().size(), 2);
    QTest::keyClick(&f.treeView(), Qt::Key_Backspace);
    QCOMPARE(f.pane->NodePath(), f.here());
    QCOMPARE(f.names().size(), 3);
}

void tst_uFileBrowse::readsAgain()
{
    Fixture f;
    QVERIFY(makeTree(f.here(), {{"new/", ""}, {"new.txt", "1"}}));
    QTest::keyClick(&f.listView(), Qt::Key_F5);
    QVERIFY(f.names().contains(QStringLiteral("new.txt")));
    QVERIFY(f.childrenOf(f.here()).contains(QStringLiteral("new")));
}

void tst_uFileBrowse::saysOnceThatAFolderIsGone()
{
    Fixture f;
    QVERIFY(QDir(f.sub()).removeRecursively());
    f.person.expectMessage(f.sub() + gone);
    f.doubleClick(QStringLiteral("sub"));
    QCOMPARE(f.pane->NodePath(), f.here());
    QVERIFY(!f.names().contains(QStringLiteral("sub")));
    QCOMPARE(f.childrenOf(f.here()), QStringList());
    f.tick();
    QVERIFY(f.person.verify());
}

void tst_uFileBrowse::runsMenuCommands()
{
    Fixture f;
    int asked = 0;
    QObject::connect(f.pane.get(), &uFile::eBfrPut, f.pane.get(),
                     [&](bool &, QString &) { ++asked; });
    QMenu &menu = *f.menus.menu(pfFtp::TREE);
    QObject::connect(&menu, &QMenu::aboutToShow, &menu, [&] {
        QTimer::singleShot(0, &menu, [&] {
            menu.setActiveAction(f.menus.entry(pfFtp::TREE, 9));
            QTest::keyClick(&menu, Qt::Key_Return);
        });
    });
    f.click(QStringLiteral("a.txt"));
    QTest::keyClick(&f.listView(), Qt::Key_Menu);
    QCOMPARE(asked, 1);
    const QPoint at = f.treeView().visualRect(f.node(f.sub())).center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, f.treeView().viewport()->mapToGlobal(at));
    QCoreApplication::sendEvent(f.treeView().viewport(), &event);
    QCOMPARE(asked, 2);
    QCOMPARE(f.pane->NodePath(), f.sub());
}

void tst_uFileBrowse::runsNothingForAMenuDismissed()
{
    Fixture f;
    int asked = 0;
    QObject::connect(f.pane.get(), &uFile::eBfrPut, f.pane.get(),
                     [&](bool &, QString &) { ++asked; });
    f.click(QStringLiteral("a.txt"));
    f.menus.setPickIndex(9); // an upload, as if picked before
    QMenu &menu = *f.menus.menu(pfFtp::TREE);
    int shown = 0;
    QObject::connect(&menu, &QMenu::aboutToShow, &menu, [&] {
        ++shown;
        QTimer::singleShot(0, &menu, [&] { QTest::keyClick(&menu, Qt::Key_Escape); });
    });
    QTest::keyClick(&f.listView(), Qt::Key_Menu);
    QCOMPARE(shown, 1);
    QCOMPARE(f.menus.pickIndex(), -1);
    QCOMPARE(asked, 0);
}

void tst_uFileBrowse::hasNoMenuWhileAnOperationRuns()
{
    Fixture f;
    int asked = 0;
    QObject::connect(f.pane.get(), &uFile::eBfrPut, f.pane.get(),
                     [&](bool &, QString &) { ++asked; });
    QSignalSpy shown(f.menus.menu(pfFtp::TREE), &QMenu::aboutToShow);
    const auto turn = f.gate.begin();
    f.click(QStringLiteral("a.txt"));
    QTest::keyClick(&f.listView(), Qt::Key_Menu);
    QCOMPARE(shown.size(), 0);
    QCOMPARE(asked, 0);
    QVERIFY(!f.treeView().inHand());
}

void tst_uFileBrowse::namesItsParts()
{
    const Fixture f;
    for (const char *name : {"pRoot", "pFnd", "pTrv", "pLsV", "Splitter", "TrView", "LsView",
                             "cbRoot", "imFnd", "txFilter"})
        QVERIFY2(f.pane->findChild<QWidget *>(QLatin1String(name)) != nullptr, name);
    for (const char *name : {"TrView", "LsView", "cbRoot", "imFnd", "txFilter", "Splitter"})
        QVERIFY2(!f.child<QWidget>(name).accessibleName().isEmpty(), name);
    QCOMPARE(f.timer()->interval(), 1000);
    QVERIFY(f.timer()->isActive());
}

void tst_uFileBrowse::goesRoundByTab()
{
    Fixture f;
    f.pane->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(f.pane.get()));
    f.treeView().setFocus();
    QStringList order;
    for (int i = 0; i < 5; ++i) {
        order << QApplication::focusWidget()->objectName();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    QCOMPARE(order, (QStringList{QStringLiteral("TrView"), QStringLiteral("LsView"),
                                 QStringLiteral("cbRoot"), QStringLiteral("imFnd"),
                                 QStringLiteral("txFilter")}));
}

QTEST_MAIN(tst_uFileBrowse)
#include "tst_uFileBrowse.moc"
