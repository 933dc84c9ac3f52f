// How a person goes about in the local pane, and what the pane tells its host.
#include "localpane/PaneFixture.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QFile>
#include <QHeaderView>
#include <QMenu>
#include <QMimeData>
#include <QSignalSpy>
#include <QUrl>

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
    /// Drops a file list on a widget as the window system would.
    bool drop(QWidget &on, const QString &path)
    {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path)});
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&on, &enter);
        if (!enter.isAccepted())
            return false;
        QDropEvent event({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&on, &event);
        return event.isAccepted();
    }
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
    void showsATypedRoot();
    void showsARootOfTheList();
    void asksForARoot();
    void takesDroppedFolders();
    void showsAFolderOfTheRoot();
    void showsAPattern();
    void refusesAPatternThatIsGone();
    void givesBackItsLayout();
    void leavesColumnsThatAreNotNamed();
    void leavesTheRootWhenTheFolderLiesElsewhere();
    void remembersRoots();
    void runsMenuCommands();
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

void tst_uFileBrowse::showsATypedRoot()
{
    Fixture f;
    f.typeInto(f.cbRoot(), f.sub() + QLatin1Char('/'));
    QCOMPARE(f.pane->Root(), f.sub());
    QCOMPARE(f.tree().text(f.tree().root()), f.sub());
    QCOMPARE(f.names().size(), 2);
    QCOMPARE(f.cbRoot().currentText(), f.sub());
    const QString missing = f.at(QStringLiteral("no such"));
    f.person.expectMessage(missing + gone);
    f.typeInto(f.cbRoot(), missing);
    QCOMPARE(f.pane->Root(), f.sub());
    QCOMPARE(f.cbRoot().currentText(), f.sub());
    QTest::keyClicks(f.cbRoot().lineEdit(), QStringLiteral("xyz"));
    QTest::keyClick(f.cbRoot().lineEdit(), Qt::Key_Escape);
    QCOMPARE(f.cbRoot().currentText(), f.sub());
    f.typeInto(f.cbRoot(), QStringLiteral("/"));
    QCOMPARE(f.pane->Root(), QStringLiteral("/"));
    QCOMPARE(f.pane->NodePath(), QStringLiteral("/"));
    QVERIFY(f.person.verify());
}

void tst_uFileBrowse::showsARootOfTheList()
{
    Fixture f;
    f.pane->cOn(f.sub());
    QCOMPARE(f.cbRoot().count(), 2);
    QCOMPARE(f.cbRoot().currentIndex(), 0);
    f.cbRoot().setFocus();
    QTest::keyClick(&f.cbRoot(), Qt::Key_Down);
    QCOMPARE(f.pane->Root(), f.here());
    QCOMPARE(f.cbRoot().count(), 2);
    QCOMPARE(f.cbRoot().itemText(0), f.here());
    QCOMPARE(f.cbRoot().currentIndex(), 0);
}

void tst_uFileBrowse::asksForARoot()
{
    Fixture f;
    const QString title = QStringLiteral("ﾌｫﾙﾀﾞの指定");
    auto &button = f.child<QToolButton>("imFnd");
    f.person.expectPickFolder(title, QString());
    QTest::mouseClick(&button, Qt::LeftButton);
    QCOMPARE(f.person.proposal(), f.here());
    QCOMPARE(f.pane->Root(), f.here());
    f.person.expectPickFolder(title, f.sub());
    QTest::mouseClick(&button, Qt::LeftButton);
    QCOMPARE(f.pane->Root(), f.sub());
    f.build();
    f.person.expectPickFolder(title, QString());
    QTest::mouseClick(&f.child<QToolButton>("imFnd"), Qt::LeftButton);
    QCOMPARE(f.person.proposal(), QStringLiteral("/"));
    QVERIFY(f.person.verify());
}

void tst_uFileBrowse::takesDroppedFolders()
{
    Fixture f;
    QVERIFY(f.drop(f.cbRoot(), f.sub()));
    QCOMPARE(f.pane->Root(), f.sub());
    QVERIFY(f.drop(f.child<QToolButton>("imFnd"), f.here()));
    QCOMPARE(f.pane->Root(), f.here());
    QMimeData text;
    text.setText(f.sub());
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &text, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&f.cbRoot(), &enter);
    QVERIFY(!enter.isAccepted());
}

void tst_uFileBrowse::showsAFolderOfTheRoot()
{
    Fixture f;
    f.pane->cOn(f.here() + QLatin1Char('\r') + f.sub());
    QCOMPARE(f.pane->Root(), f.here());
    QVERIFY(f.treeView().isExpanded(f.tree().root()));
    QCOMPARE(f.names(), (QStringList{QStringLiteral("deep"), QStringLiteral("in.txt")}));
    // What the rows stand for is what their folder is called.
    QCOMPARE(f.pane->NodePath(), f.sub());
}

void tst_uFileBrowse::showsAPattern()
{
    Fixture f;
    QVERIFY(f.pane->SetSync(f.sub()));
    QCOMPARE(f.pane->Root(), f.here());
    QCOMPARE(f.pane->NodePath(), f.sub());
    QCOMPARE(f.pane->syncMark(), f.sub());
    f.pane->cOn(f.at(QStringLiteral("sub/deep")));
    QVERIFY(f.pane->SetSync(f.sub()));
    QCOMPARE(f.pane->Root(), QStringLiteral("/"));
    QCOMPARE(f.pane->NodePath(), f.sub());
    QCOMPARE(f.names(), (QStringList{QStringLiteral("deep"), QStringLiteral("in.txt")}));
}

void tst_uFileBrowse::refusesAPatternThatIsGone()
{
    Fixture f;
    const QString missing = f.at(QStringLiteral("missing"));
    f.person.expectMessage(missing + gone);
    QVERIFY(!f.pane->SetSync(missing));
    QCOMPARE(f.pane->NodePath(), f.here());
    QCOMPARE(f.pane->syncMark(), missing);
    QVERIFY(f.person.verify());
}

void tst_uFileBrowse::givesBackItsLayout()
{
    Fixture f;
    QString folder;
    QString widths;
    int height = 0;
    f.pane->GetRr(folder, widths, height);
    QCOMPARE(widths.count(QLatin1Char(',')), 6);
    // The tree has two fifths of the height at first.
    const int all = f.child<QSplitter>("Splitter").height();
    QVERIFY(qAbs(height - all * 2 / 5) < 10);
    const QString other = QStringLiteral("111,112,113,114,115,116,0");
    f.pane->SetRr(f.sub(), other, 150);
    f.pane->GetRr(folder, widths, height);
    QCOMPARE(folder, f.sub());
    QCOMPARE(widths, other);
    QCOMPARE(height, 150);
    QCOMPARE(f.child<QWidget>("pTrv").height(), 150);
    const QString key = f.rowKey(QStringLiteral("in.txt"));
    f.pane->SetRr(folder, widths, height);
    QString folder2;
    QString widths2;
    int height2 = 0;
    f.pane->GetRr(folder2, widths2, height2);
    QCOMPARE(folder2, folder);
    QCOMPARE(widths2, widths);
    QCOMPARE(height2, height);
    QCOMPARE(f.rowKey(QStringLiteral("in.txt")), key);
    // A pane that was never shown gives back what it was given.
    uFile unseen({f.person, f.flags, f.gate, f.session, f.operations, f.menus, f.window});
    unseen.cOn(f.here());
    unseen.SetRr(f.sub(), other, 222);
    unseen.GetRr(folder, widths, height);
    QCOMPARE(folder, f.sub());
    QCOMPARE(widths, other);
    QCOMPARE(height, 222);
}

void tst_uFileBrowse::leavesColumnsThatAreNotNamed()
{
    Fixture f;
    f.pane->SetRr({}, QStringLiteral("101,102,103,104,105,106"), 0);
    f.pane->SetRr({}, QStringLiteral("120,130"), 0);
    QCOMPARE(f.listView().columnWidth(0), 120);
    QCOMPARE(f.listView().columnWidth(1), 130);
    QCOMPARE(f.listView().columnWidth(2), 103);
    f.pane->SetRr({}, QString(), 0);
    f.pane->SetRr({}, QStringLiteral(",x,0,99999,1,2,3,4,5,6"), 0);
    QCOMPARE(f.listView().columnWidth(0), 120);
    QCOMPARE(f.listView().columnWidth(1), 130);
    QVERIFY2(f.listView().columnWidth(2) > 0, "a column of no width could not be found again");
    QVERIFY(f.listView().columnWidth(3) < 5000);
    QVERIFY(f.listView().isColumnHidden(6));
}

void tst_uFileBrowse::leavesTheRootWhenTheFolderLiesElsewhere()
{
    Fixture f;
    f.pane->cOn(f.sub());
    f.pane->SetRr(f.here(), {}, 0);
    QCOMPARE(f.pane->NodePath(), f.sub());
    f.pane->SetRr(f.at(QStringLiteral("sub/gone")), {}, 0);
    QCOMPARE(f.pane->NodePath(), f.sub());
    QVERIFY2(f.person.verify(), "silently");
}

void tst_uFileBrowse::remembersRoots()
{
    Fixture f;
    f.pane->cOn(f.sub());
    const QString history = QLatin1Char(',') + f.sub() + QLatin1Char(',') + f.here();
    QCOMPARE(f.pane->rootHistory(), history);
    f.build();
    f.pane->setRootHistory(history);
    f.pane->cOn(f.here());
    QCOMPARE(f.pane->rootHistory(), QLatin1Char(',') + f.here() + QLatin1Char(',') + f.sub());
    QCOMPARE(f.cbRoot().count(), 2);
    // The other way about, as hosts may do it.
    f.build();
    f.pane->cOn(f.here());
    f.pane->setRootHistory(history);
    QCOMPARE(f.pane->rootHistory(), QLatin1Char(',') + f.here() + QLatin1Char(',') + f.sub());
    QCOMPARE(f.cbRoot().currentText(), f.here());
}

void tst_uFileBrowse::runsMenuCommands()
{
    Fixture f;
    QSignalSpy asked(f.pane.get(), &uFile::eBfrPut);
    QMenu &menu = *f.menus.menu(pfFtp::TREE);
    QObject::connect(&menu, &QMenu::aboutToShow, &menu, [&] {
        QTimer::singleShot(0, &menu, [&] {
            menu.setActiveAction(f.menus.entry(pfFtp::TREE, 9));
            QTest::keyClick(&menu, Qt::Key_Return);
        });
    });
    f.click(QStringLiteral("a.txt"));
    QTest::keyClick(&f.listView(), Qt::Key_Menu);
    QCOMPARE(asked.size(), 1);
    const QPoint at = f.treeView().visualRect(f.node(f.sub())).center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, f.treeView().viewport()->mapToGlobal(at));
    QCoreApplication::sendEvent(f.treeView().viewport(), &event);
    QCOMPARE(asked.size(), 2);
    QCOMPARE(f.pane->NodePath(), f.sub());
}

void tst_uFileBrowse::hasNoMenuWhileAnOperationRuns()
{
    Fixture f;
    QSignalSpy asked(f.pane.get(), &uFile::eBfrPut);
    QSignalSpy shown(f.menus.menu(pfFtp::TREE), &QMenu::aboutToShow);
    const auto turn = f.gate.begin();
    f.click(QStringLiteral("a.txt"));
    QTest::keyClick(&f.listView(), Qt::Key_Menu);
    QCOMPARE(shown.size(), 0);
    QCOMPARE(asked.size(), 0);
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
