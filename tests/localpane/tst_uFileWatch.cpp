// How the local pane keeps itself current with the disk.
#include "localpane/LocalListFill.h"
#include "localpane/PaneFixture.h"

#include <QDragEnterEvent>
#include <QFile>
#include <QHeaderView>
#include <QMenu>
#include <QMimeData>
#include <QScrollBar>
#include <QSignalSpy>
#include <QUrl>

using namespace venlo;
using venlo::test::makeTree;
using venlo::test::PaneFixture;
using venlo::test::ScriptedPerson;

namespace
{
struct Fixture : PaneFixture {
    Fixture()
    {
        made = makeTree(here(), {{"sub/deep/er/", ""}, {"sub/in.txt", "1"}, {"a.txt", "1"}});
        pane->cOn(here());
    }
    [[nodiscard]] QString sub() const { return at(QStringLiteral("sub")); }
    void add(const char *name) const { QVERIFY(makeTree(here(), {{name, "1"}})); }
    bool made = false;
};

const QString gone = QStringLiteral(" が存在しません");
} // namespace

class tst_uFileWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsWhatIsNewByItself();
    void leavesAloneWhatDidNotChange();
    void readsABareDriveOnceMore();
    void keepsSelectionAndScrollPosition();
    void keepsExpandedNodes();
    void showsWhatArrivesDuringAnOperation();
    void asksNothingDuringAnOperation();
    void makesGoodWhatItLeftOutDuringAnOperation();
    void beginsAnewOnlyBehindAnOperation();
    void takesLittleOfAnOperationsTime();
    void leavesAFolderThatTakesTooLong();
    void waitsWhileANameIsEdited();
    void waitsWhileAMenuIsOpen();
    void goesUpFromAFolderThatVanished();
    void goesUpFromARootThatVanished();
    void opensHoveredNodes();
    void updatesInPlace();
    void updatesInTheMiddleOfAFill();
    void keepsTheSelectionOfAFillThatIsEnded();
    void keepsWhatIsSelectedInOnePiece();
    void tellsNamesApartThatLookTheSame();
    void takesOutWhatTheFilterNoLongerPasses();
    void putsARefreshOffWhileANameIsEdited();
    void followsTheTreesSelection();
    void sortsBySizeOnceAllAreThere();
    void measuresNothingDuringFileOperations();
};

void tst_uFileWatch::showsWhatIsNewByItself()
{
    Fixture f;
    f.timer()->setInterval(20);
    f.add("new.txt");
    f.add("newer/");
    QTRY_VERIFY(f.names().contains(QStringLiteral("new.txt")));
    QTRY_VERIFY(f.childrenOf(f.here()).contains(QStringLiteral("newer")));
    QVERIFY(QFile::remove(f.at(QStringLiteral("new.txt"))));
    QTRY_VERIFY(!f.names().contains(QStringLiteral("new.txt")));
}

void tst_uFileWatch::leavesAloneWhatDidNotChange()
{
    Fixture f;
    const QString row = f.rowKey(QStringLiteral("a.txt"));
    const QString node = f.tree().key(f.node(f.sub()));
    f.tick();
    QCOMPARE(f.rowKey(QStringLiteral("a.txt")), row);
    QCOMPARE(f.tree().key(f.node(f.sub())), node);
}

void tst_uFileWatch::readsABareDriveOnceMore()
{
    Fixture f;
    f.pane->cOn(Fixture::top());
    const int rows = f.rows().count();
    const QString first = f.rows().row(0).key;
    f.tick();
    const QString second = f.rows().row(0).key;
    QVERIFY2(first != second, "its stamp was the clock's");
    QCOMPARE(f.rows().count(), rows);
    f.tick();
    QCOMPARE(f.rows().row(0).key, second);
}

void tst_uFileWatch::keepsSelectionAndScrollPosition()
{
    Fixture f;
    for (int i = 0; i < 200; ++i)
        QVERIFY(makeTree(f.sub(), {{QByteArray("f") + QByteArray::number(1000 + i), "1"}}));
    f.pane->SetRr(f.sub(), {}, 0);
    f.click(QStringLiteral("f1100"));
    f.click(QStringLiteral("f1102"), Qt::ControlModifier);
    const int scroll = f.listView().verticalScrollBar()->value();
    QVERIFY(scroll > 0);
    QVERIFY(makeTree(f.sub(), {{"z new", "1"}}));
    f.tick();
    QVERIFY(f.names().contains(QStringLiteral("z new")));
    QStringList selected;
    for (const QModelIndex &index : f.listView().selectionModel()->selectedRows())
        selected << f.rows().text(index.row(), 0);
    selected.sort();
    QCOMPARE(selected, (QStringList{QStringLiteral("f1100"), QStringLiteral("f1102")}));
    QCOMPARE(f.rows().text(f.listView().currentIndex().row(), 0), QStringLiteral("f1102"));
    QCOMPARE(f.listView().verticalScrollBar()->value(), scroll);
    QVERIFY(f.listView().updatesEnabled());
}

void tst_uFileWatch::keepsExpandedNodes()
{
    Fixture f;
    f.treeView().expand(f.node(f.sub()));
    f.treeView().expand(f.node(f.at(QStringLiteral("sub/deep"))));
    f.clickNode(f.at(QStringLiteral("sub/deep/er")));
    f.add("new/");
    f.tick();
    QVERIFY(f.childrenOf(f.here()).contains(QStringLiteral("new")));
    QVERIFY(f.treeView().isExpanded(f.node(f.at(QStringLiteral("sub/deep")))));
    QCOMPARE(f.pane->NodePath(), f.at(QStringLiteral("sub/deep/er")));
    f.treeView().setCurrentIndex(f.tree().root());
    f.pane->ReFresh();
    QVERIFY(f.treeView().isExpanded(f.node(f.at(QStringLiteral("sub/deep")))));
    QCOMPARE(f.pane->NodePath(), f.here());
}

void tst_uFileWatch::showsWhatArrivesDuringAnOperation()
{
    Fixture f;
    f.click(QStringLiteral("a.txt"));
    f.listView().setFocus();
    const QString key = f.rowKey(QStringLiteral("a.txt"));
    const auto turn = f.gate.begin();
    f.add("new.txt");
    f.add("newer/");
    f.add(".venlo-0123abcd.part");
    f.tick();
    QCOMPARE(f.names(), (QStringList{QStringLiteral("newer"), QStringLiteral("sub"),
                                     QStringLiteral("a.txt"), QStringLiteral("new.txt")}));
    QVERIFY(f.childrenOf(f.here()).contains(QStringLiteral("newer")));
    QCOMPARE(f.rowKey(QStringLiteral("a.txt")), key);
    QVERIFY(f.listView().selectionModel()->isRowSelected(f.rowOf(QStringLiteral("a.txt")), {}));
    QCOMPARE(f.listView().selectionModel()->selectedRows().size(), 1);
    QCOMPARE(f.pane->NodePath(), f.here());
    QVERIFY(f.listView().hasFocus());
}

void tst_uFileWatch::asksNothingDuringAnOperation()
{
    Fixture f;
    const QString deep = f.at(QStringLiteral("sub/deep/er"));
    f.pane->SetRr(deep, {}, 0);
    QVERIFY(QDir(f.at(QStringLiteral("sub/deep"))).removeRecursively());
    {
        const auto turn = f.gate.begin();
        f.tick();
        QVERIFY(f.person.messages().isEmpty());
        QCOMPARE(f.pane->NodePath(), deep);
    }
    f.person.expectMessage(deep + gone);
    f.tick();
    QCOMPARE(f.pane->NodePath(), f.sub());
    QVERIFY(f.person.verify());
}

void tst_uFileWatch::makesGoodWhatItLeftOutDuringAnOperation()
{
    Fixture f;
    {
        const auto turn = f.gate.begin();
        f.add("aa/in.txt");
        QVERIFY(QDir(f.sub()).removeRecursively());
        f.tick();
        QCOMPARE(f.names(), (QStringList{QStringLiteral("aa"), QStringLiteral("a.txt")}));
        QCOMPARE(f.childrenOf(f.here()),
                 (QStringList{QStringLiteral("sub"), QStringLiteral("aa")}));
        QCOMPARE(f.cell(QStringLiteral("aa"), LocalListFill::Size), QString());
    }
    f.tick();
    QCOMPARE(f.childrenOf(f.here()), QStringList{QStringLiteral("aa")});
    QTRY_COMPARE(f.cell(QStringLiteral("aa"), LocalListFill::Size), QStringLiteral("1B"));
}

void tst_uFileWatch::beginsAnewOnlyBehindAnOperation()
{
    Fixture f;
    f.tick();
    f.rows().keys().restart(KeyCounter::last);
    QSignalSpy out(f.pane.get(), &uFile::keysRanOut);
    {
        const auto turn = f.gate.begin();
        f.add("new1");
        f.add("new2");
        f.tick();
        QCOMPARE(f.rows().count(), 3);
        QTest::qWait(0);
        QVERIFY(out.isEmpty());
        QVERIFY(f.person.messages().isEmpty());
    }
    f.tick();
    QTRY_COMPARE(out.size(), 1);
    QVERIFY(f.person.verify());
}

void tst_uFileWatch::takesLittleOfAnOperationsTime()
{
    Fixture f;
    for (int i = 0; i < 400; ++i)
        QVERIFY(makeTree(f.here(), {{QByteArray("f") + QByteArray::number(i), "1"}}));
    const auto turn = f.gate.begin();
    f.tick();
    f.add("new.txt");
    f.tick();
    QVERIFY2(!f.names().contains(QStringLiteral("new.txt")), "right behind a look");
    f.timer()->setInterval(20);
    QTRY_VERIFY(f.names().contains(QStringLiteral("new.txt")));
}

void tst_uFileWatch::leavesAFolderThatTakesTooLong()
{
    Fixture f;
    RowList rows(LocalListFill::layout());
    PaneView view(PaneView::Kind::List);
    view.setModel(&rows);
    LocalListFill fill(rows, view, f.person);
    fill.FillList(f.here());
    QTest::qWait(30); // ms: past the tick of the clock that folders are dated by
    f.add("new.txt");
    fill.updateQuietly(QDeadlineTimer(0));
    QCOMPARE(rows.count(), 2);
    QVERIFY2(fill.changed(), "the next look reads it");
    fill.updateQuietly(QDeadlineTimer(QDeadlineTimer::Forever));
    QCOMPARE(rows.count(), 3);
    QVERIFY(!fill.changed());
}

void tst_uFileWatch::waitsWhileANameIsEdited()
{
    Fixture f;
    f.listView().editName(f.rows().index(f.rowOf(QStringLiteral("a.txt")), 0));
    QVERIFY(f.listView().editingName());
    f.add("new.txt");
    f.tick();
    QVERIFY(f.listView().editingName());
    QVERIFY(!f.names().contains(QStringLiteral("new.txt")));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    QTRY_VERIFY(!f.listView().editingName());
    f.tick();
    QVERIFY(f.names().contains(QStringLiteral("new.txt")));
}

void tst_uFileWatch::waitsWhileAMenuIsOpen()
{
    Fixture f;
    f.click(QStringLiteral("a.txt"));
    f.add("new.txt");
    bool seen = true;
    QTimer::singleShot(0, f.menus.menu(pfFtp::TREE), [&] {
        f.tick();
        seen = f.names().contains(QStringLiteral("new.txt"));
        f.menus.menu(pfFtp::TREE)->close();
    });
    QTest::keyClick(&f.listView(), Qt::Key_Menu);
    QVERIFY(!seen);
    f.tick();
    QVERIFY(f.names().contains(QStringLiteral("new.txt")));
}

void tst_uFileWatch::goesUpFromAFolderThatVanished()
{
    Fixture f;
    const QString deep = f.at(QStringLiteral("sub/deep/er"));
    f.pane->SetRr(deep, {}, 0);
    QVERIFY(QDir(f.at(QStringLiteral("sub/deep"))).removeRecursively());
    f.person.expectMessage(deep + gone);
    f.tick();
    QCOMPARE(f.pane->NodePath(), f.sub());
    QCOMPARE(f.names(), QStringList{QStringLiteral("in.txt")});
    QCOMPARE(f.childrenOf(f.sub()), QStringList());
    f.tick();
    QVERIFY2(f.person.verify(), "said once");
}

void tst_uFileWatch::goesUpFromARootThatVanished()
{
    Fixture f;
    const QString root = f.at(QStringLiteral("sub/deep"));
    f.pane->cOn(root);
    f.pane->SetRr(f.at(QStringLiteral("sub/deep/er")), {}, 0);
    QVERIFY(QDir(root).removeRecursively());
    f.person.expectMessage(root + gone);
    // A tick inside the message must not say it again.
    f.person.onYield([&] { f.tick(); });
    f.tick();
    f.person.onYield({});
    QCOMPARE(f.pane->Root(), f.sub());
    QCOMPARE(f.pane->NodePath(), f.sub());
    QCOMPARE(f.names(), QStringList{QStringLiteral("in.txt")});
    f.tick();
    QVERIFY(f.person.verify());
}

void tst_uFileWatch::opensHoveredNodes()
{
    Fixture f;
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(f.at(QStringLiteral("a.txt")))});
    const QPoint at = f.treeView().visualRect(f.node(f.sub())).center();
    QWidget &target = *f.treeView().viewport();
    QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&target, &enter);
    QDragMoveEvent move(at, Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&target, &move);
    QVERIFY(!f.treeView().isExpanded(f.node(f.sub())));
    f.tick();
    QVERIFY2(f.treeView().isExpanded(f.node(f.sub())), "while the drag is on");
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(&target, &leave);
    f.treeView().collapse(f.node(f.sub()));
    f.tick();
    QVERIFY(!f.treeView().isExpanded(f.node(f.sub())));
}

void tst_uFileWatch::updatesInPlace()
{
    Fixture f;
    RowList rows(LocalListFill::layout());
    const QAbstractItemModelTester tester(&rows);
    PaneView view(PaneView::Kind::List);
    view.setModel(&rows);
    rows.sort(LocalListFill::SortKey, Qt::AscendingOrder);
    LocalListFill fill(rows, view, f.person);
    QVERIFY(makeTree(f.here(), {{"gone.txt", "1"}, {"same", "1"}}));
    fill.setFilter(QStringLiteral("txt"));
    fill.FillList(f.here());
    const QString key = rows.row(rows.rowOf(EntryTag::FL, QStringLiteral("a.txt"))).key;
    // A folder in place of a file of the same name is another entry.
    QVERIFY(QFile::remove(f.at(QStringLiteral("gone.txt"))));
    const QDateTime then(QDate(2020, 1, 2), QTime(3, 4, 5));
    QVERIFY(makeTree(f.here(), {{"a.txt", QByteArray(3000, 'x'), then},
                                {"b.txt", "1"},
                                {"b.css", "1"},
                                {"gone.txt/", ""}}));
    fill.UpdateList();
    QStringList shown;
    for (int row = 0; row < rows.count(); ++row)
        shown << rows.text(row, LocalListFill::SortKey);
    QCOMPARE(shown, (QStringList{QStringLiteral("Dgone.txt"), QStringLiteral("Dsub"),
                                 QStringLiteral("La.txt"), QStringLiteral("Lb.txt"),
                                 QStringLiteral("Lsame")}));
    const int row = rows.rowOfKey(key);
    QCOMPARE(rows.text(row, LocalListFill::Name), QStringLiteral("a.txt"));
    QCOMPARE(rows.text(row, LocalListFill::Modified), QStringLiteral("20/01/02 03:04:05"));
    QCOMPARE(rows.text(row, LocalListFill::Size), QStringLiteral("3KB"));
    QVERIFY(rows.row(row).toolTip.endsWith(QStringLiteral(" 作成:2020/01/02 ｻｲｽﾞ:3KB")));
    QVERIFY2(!fill.changed(), "the watch has nothing left to do");
    QTRY_COMPARE(rows.text(0, LocalListFill::Size), QStringLiteral("B"));
}

void tst_uFileWatch::updatesInTheMiddleOfAFill()
{
    Fixture f;
    RowList rows(LocalListFill::layout());
    PaneView view(PaneView::Kind::List);
    view.setModel(&rows);
    LocalListFill fill(rows, view, f.person);
    fill.FillList(f.here());
    bool first = true;
    f.person.onYield([&] {
        if (std::exchange(first, false))
            fill.UpdateList();
    });
    fill.FillList(f.here());
    f.person.onYield({});
    QCOMPARE(rows.count(), 2);
    QVERIFY(view.updatesEnabled());
}

void tst_uFileWatch::keepsTheSelectionOfAFillThatIsEnded()
{
    Fixture f;
    f.click(QStringLiteral("a.txt"));
    int yields = 0;
    f.person.onYield([&] {
        if (++yields <= 2)
            f.pane->ReFresh();
    });
    f.pane->ReFresh();
    f.person.onYield({});
    QCOMPARE(f.names(), (QStringList{QStringLiteral("sub"), QStringLiteral("a.txt")}));
    QVERIFY(f.listView().selectionModel()->isRowSelected(f.rowOf(QStringLiteral("a.txt")), {}));
    QCOMPARE(f.listView().selectionModel()->selectedRows().size(), 1);
    QVERIFY(f.listView().updatesEnabled());
}

void tst_uFileWatch::keepsWhatIsSelectedInOnePiece()
{
    Fixture f;
    QVERIFY(makeTree(f.here(), {{"b", "1"}, {"c", "1"}, {"d", "1"}}));
    f.pane->ReFresh();
    f.listView().setFocus();
    QTest::keyClick(&f.listView(), Qt::Key_A, Qt::ControlModifier);
    f.click(QStringLiteral("b"), Qt::ControlModifier);
    f.pane->ReFresh();
    const QItemSelection selection = f.listView().selectionModel()->selection();
    QCOMPARE(f.listView().selectionModel()->selectedRows().size(), 4);
    QVERIFY(!f.listView().selectionModel()->isRowSelected(f.rowOf(QStringLiteral("b")), {}));
    QCOMPARE(selection.size(), 2);
}

void tst_uFileWatch::tellsNamesApartThatLookTheSame()
{
    if (venlo::test::onWindows)
        QSKIP("every name that Windows holds is text");
    const Fixture f;
    RowList rows(LocalListFill::layout());
    PaneView view(PaneView::Kind::List);
    view.setModel(&rows);
    ScriptedPerson person;
    LocalListFill fill(rows, view, person);
    QVERIFY(makeTree(f.here(), {{"\x83", "1"}, {"\x84", "1"}}));
    fill.FillList(f.here());
    QCOMPARE(rows.count(), 4);
    fill.UpdateList();
    fill.UpdateList();
    QCOMPARE(rows.count(), 4);
    QCOMPARE(person.statusLines().size(), 1);
    fill.FillList(f.sub());
    fill.FillList(f.here());
    QCOMPARE(person.statusLines().size(), 2);
}

void tst_uFileWatch::takesOutWhatTheFilterNoLongerPasses()
{
    Fixture f;
    f.typeInto(f.child<QLineEdit>("txFilter"), QStringLiteral("txt"));
    f.listView().setFocus();
    f.click(QStringLiteral("a.txt"));
    QTest::keyClick(&f.listView(), Qt::Key_F2);
    auto *editor = f.listView().findChild<QLineEdit *>(QStringLiteral("nameEditor"));
    QVERIFY(editor != nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, QStringLiteral("a.css"));
    QTest::keyClick(editor, Qt::Key_Return);
    QVERIFY(QFile::exists(f.at(QStringLiteral("a.css"))));
    QTRY_COMPARE(f.names(), QStringList{QStringLiteral("sub")});
}

void tst_uFileWatch::putsARefreshOffWhileANameIsEdited()
{
    Fixture f;
    f.listView().editName(f.rows().index(f.rowOf(QStringLiteral("a.txt")), 0));
    QVERIFY(f.listView().editingName());
    f.add("new.txt");
    f.pane->ReFresh();
    QVERIFY(f.listView().editingName());
    f.listView().viewport()->findChild<QLineEdit *>()->setText(QStringLiteral("kept"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    QTRY_VERIFY(!f.listView().editingName());
    f.tick();
    QVERIFY(f.names().contains(QStringLiteral("new.txt")));
    QVERIFY(f.names().contains(QStringLiteral("a.txt")));
}

void tst_uFileWatch::followsTheTreesSelection()
{
    Fixture f;
    f.pane->SetRr(f.sub(), {}, 0);
    QVERIFY(f.names().contains(QStringLiteral("in.txt")));
    f.tree().remove(f.node(f.sub())); // as a folder that could not be read loses its nodes
    QCOMPARE(f.pane->NodePath(), f.here());
    f.tick();
    QVERIFY2(f.names().contains(QStringLiteral("a.txt")), "rows are those of the selected folder");
}

void tst_uFileWatch::sortsBySizeOnceAllAreThere()
{
    Fixture f;
    QVERIFY(
        makeTree(f.here(), {{"x/file", QByteArray(9000, 'x')}, {"y/file", QByteArray(2, 'x')}}));
    QHeaderView &header = *f.listView().header();
    QTest::mouseClick(
        header.viewport(), Qt::LeftButton, {},
        {header.sectionViewportPosition(LocalListFill::Size) + 10, header.height() / 2});
    f.pane->ReFresh();
    // "1B" (twice), "2B", "9KB".
    QTRY_COMPARE(f.names(), (QStringList{QStringLiteral("sub"), QStringLiteral("a.txt"),
                                         QStringLiteral("y"), QStringLiteral("x")}));
}

void tst_uFileWatch::measuresNothingDuringFileOperations()
{
    Fixture f;
    RowList rows(LocalListFill::layout());
    PaneView view(PaneView::Kind::List);
    view.setModel(&rows);
    LocalListFill fill(rows, view, f.person);
    fill.setMeasuring(false);
    fill.FillList(f.here());
    QTest::qWait(20);
    const int row = rows.rowOf(EntryTag::FD, QStringLiteral("sub"));
    QCOMPARE(rows.text(row, LocalListFill::Size), QString());
    fill.setMeasuring(true);
    QTRY_COMPARE(rows.text(row, LocalListFill::Size), QStringLiteral("1B"));
}

QTEST_MAIN(tst_uFileWatch)
#include "tst_uFileWatch.moc"
