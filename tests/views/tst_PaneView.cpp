#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMetaEnum>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include "views/PaneFixture.h"

namespace venlo::test
{

class tst_PaneView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void commandKeys_data();
    void commandKeys();
    void listTextIsAListsKey();
    void keysComeBeforeShortcuts();
    void keysWithOtherModifiers();
    void enterKeys();
    void enterWithoutCurrent();
    void selectAll();
    void moveSelectsTheOnlyRow_data();
    void moveSelectsTheOnlyRow();
    void typeAhead();
    void starOpensOneLevel();
    void doubleClick();
    void doubleClickOnTheArrow();
    void headings();
    void columnLetters();
    void sortArrow();
    void sortArrowPointsUpWhenAscending();
    void chosenByClicks();
    void chosenByKeys();
    void chosenSeesTheSelection();
    void notChosenByRemoval();
    void menuByMouse();
    void menuOnEmptySpace();
    void treeKeepsItsFolder();
    void menuKeys_data();
    void menuKeys();
    void menuKeepsAManyRowSelection();
    void viewGoesAwayWithItsMenu();
    void longNamesScroll();

private:
    void rightClick(PaneView &view, const QPoint &at);

    std::unique_ptr<PaneFixture<>> m_pane;
};

void tst_PaneView::init()
{
    m_pane = std::make_unique<PaneFixture<>>();
    QVERIFY(QTest::qWaitForWindowActive(&m_pane->window));
}

void tst_PaneView::cleanup()
{
    m_pane.reset();
}

void tst_PaneView::rightClick(PaneView &view, const QPoint &at)
{
    QTest::mouseClick(view.viewport(), Qt::RightButton, {}, at);
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, view.viewport()->mapToGlobal(at));
    QApplication::sendEvent(view.viewport(), &event);
}

void tst_PaneView::commandKeys_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<PaneKey>("command");
    const Qt::KeyboardModifiers none = Qt::NoModifier;
    const Qt::KeyboardModifiers control = Qt::ControlModifier;
    QTest::newRow("Delete") << Qt::Key_Delete << none << PaneKey::Delete;
    QTest::newRow("F2") << Qt::Key_F2 << none << PaneKey::Rename;
    QTest::newRow("F5") << Qt::Key_F5 << none << PaneKey::Refresh;
    QTest::newRow("Backspace") << Qt::Key_Backspace << none << PaneKey::Parent;
    QTest::newRow("Ctrl+X") << Qt::Key_X << control << PaneKey::Cut;
    QTest::newRow("Ctrl+C") << Qt::Key_C << control << PaneKey::Copy;
    QTest::newRow("Ctrl+V") << Qt::Key_V << control << PaneKey::Paste;
}

void tst_PaneView::commandKeys()
{
    QFETCH(Qt::Key, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QFETCH(PaneKey, command);
    for (PaneView *const view : {m_pane->list, m_pane->tree}) {
        view->setFocus();
        view->setCurrentIndex(view->model()->index(0, 0));
        QSignalSpy wanted(view, &PaneView::keyWanted);
        QTest::keyClick(view, key, modifiers);
        QCOMPARE(wanted.size(), 1);
        QCOMPARE(wanted.constFirst().constFirst().value<PaneKey>(), command);
        QVERIFY(!view->editingName());
    }
}

void tst_PaneView::listTextIsAListsKey()
{
    const Qt::KeyboardModifiers both = Qt::ControlModifier | Qt::ShiftModifier;
    QSignalSpy ofList(m_pane->list, &PaneView::keyWanted);
    QTest::keyClick(m_pane->list, Qt::Key_C, both);
    QCOMPARE(ofList.size(), 1);
    QCOMPARE(ofList.constFirst().constFirst().value<PaneKey>(), PaneKey::CopyText);
    QSignalSpy ofTree(m_pane->tree, &PaneView::keyWanted);
    QTest::keyClick(m_pane->tree, Qt::Key_C, both);
    QCOMPARE(ofTree.size(), 0);
}

void tst_PaneView::keysComeBeforeShortcuts()
{
    QAction action(&m_pane->window);
    action.setShortcut(QKeySequence(Qt::Key_F5));
    m_pane->window.addAction(&action);
    QSignalSpy triggered(&action, &QAction::triggered);
    QSignalSpy wanted(m_pane->list, &PaneView::keyWanted);
    QTest::keyClick(m_pane->list, Qt::Key_F5);
    QCOMPARE(wanted.size(), 1);
    QCOMPARE(triggered.size(), 0);
}

void tst_PaneView::keysWithOtherModifiers()
{
    m_pane->list->setCurrentIndex(m_pane->row(0));
    QSignalSpy wanted(m_pane->list, &PaneView::keyWanted);
    QTest::keyClick(m_pane->list, Qt::Key_Delete, Qt::ShiftModifier);
    QTest::keyClick(m_pane->list, Qt::Key_X, Qt::AltModifier);
    QCOMPARE(wanted.size(), 0);
}

void tst_PaneView::enterKeys()
{
    QSignalSpy entered(m_pane->list, &PaneView::entered);
    m_pane->list->setCurrentIndex(m_pane->rows.index(1, 1));
    QTest::keyClick(m_pane->list, Qt::Key_Return);
    QTest::keyClick(m_pane->list, Qt::Key_Enter, Qt::KeypadModifier);
    QCOMPARE(entered.size(), 2);
    QCOMPARE(entered.constFirst().constFirst().toModelIndex(), m_pane->row(1));
}

void tst_PaneView::enterWithoutCurrent()
{
    QSignalSpy entered(m_pane->list, &PaneView::entered);
    m_pane->list->selectionModel()->clear();
    QTest::keyClick(m_pane->list, Qt::Key_Return);
    QCOMPARE(entered.size(), 0);
}

void tst_PaneView::moveSelectsTheOnlyRow_data()
{
    QTest::addColumn<Qt::Key>("key");
    for (const Qt::Key key : {Qt::Key_Home, Qt::Key_End, Qt::Key_Up, Qt::Key_Down})
        QTest::newRow(QMetaEnum::fromType<Qt::Key>().valueToKey(key)) << key;
}

/// As after the Tab key: the row is current and not selected.
void tst_PaneView::moveSelectsTheOnlyRow()
{
    QFETCH(Qt::Key, key);
    m_pane->rows.remove({1, 2, 3});
    QItemSelectionModel *selection = m_pane->list->selectionModel();
    selection->setCurrentIndex(m_pane->row(0), QItemSelectionModel::Clear);
    QVERIFY(!selection->hasSelection());
    QTest::keyClick(m_pane->list, key, Qt::ControlModifier);
    QVERIFY(!selection->hasSelection());
    QTest::keyClick(m_pane->list, key);
    QVERIFY(selection->isRowSelected(0));
}

void tst_PaneView::selectAll()
{
    QTest::keyClick(m_pane->list, Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(m_pane->list->selectionModel()->selectedRows().size(), 4);
}

void tst_PaneView::typeAhead()
{
    m_pane->list->setCurrentIndex(m_pane->row(0));
    QTest::keyClick(m_pane->list, Qt::Key_B);
    QCOMPARE(m_pane->list->currentIndex().row(), 2);
    m_pane->tree->setCurrentIndex(m_pane->folders.root());
    QTest::keyClick(m_pane->tree, Qt::Key_W);
    QCOMPARE(m_pane->tree->currentIndex(), m_pane->folder(QStringLiteral("web")));
}

void tst_PaneView::starOpensOneLevel()
{
    m_pane->tree->collapseAll();
    m_pane->tree->setCurrentIndex(m_pane->folders.root());
    QTest::keyClick(m_pane->tree, Qt::Key_Asterisk);
    QVERIFY(m_pane->tree->isExpanded(m_pane->folders.root()));
    QVERIFY(!m_pane->tree->isExpanded(m_pane->folder(QStringLiteral("docs"))));
}

void tst_PaneView::doubleClick()
{
    QSignalSpy entered(m_pane->tree, &PaneView::entered);
    const QModelIndex docs = m_pane->folder(QStringLiteral("docs"));
    const QPoint at = PaneFixture<>::middle(*m_pane->tree, docs);
    QTest::mouseClick(m_pane->tree->viewport(), Qt::LeftButton, {}, at);
    QCOMPARE(entered.size(), 0);
    QTest::mouseDClick(m_pane->tree->viewport(), Qt::LeftButton, {}, at);
    QCOMPARE(entered.size(), 1);
    QCOMPARE(entered.constFirst().constFirst().toModelIndex(), docs);
    QVERIFY2(m_pane->tree->isExpanded(docs), "a double click neither opens nor closes a node");
    QVERIFY(!m_pane->tree->editingName());
    // Any column of a row is the row.
    QSignalSpy row(m_pane->list, &PaneView::entered);
    const QPoint size = m_pane->list->visualRect(m_pane->rows.index(1, 1)).center();
    QTest::mouseClick(m_pane->list->viewport(), Qt::LeftButton, {}, size);
    QTest::mouseDClick(m_pane->list->viewport(), Qt::LeftButton, {}, size);
    QCOMPARE(row.size(), 1);
    QCOMPARE(row.constFirst().constFirst().toModelIndex(), m_pane->row(1));
}

void tst_PaneView::doubleClickOnTheArrow()
{
    QSignalSpy entered(m_pane->tree, &PaneView::entered);
    const QRect rect = m_pane->tree->visualRect(m_pane->folder(QStringLiteral("docs")));
    const QPoint arrow(rect.left() - m_pane->tree->indentation() / 2, rect.center().y());
    QTest::mouseDClick(m_pane->tree->viewport(), Qt::LeftButton, {}, arrow);
    QCOMPARE(entered.size(), 0);
}

void tst_PaneView::headings()
{
    QSignalSpy clicked(m_pane->list, &PaneView::headingClicked);
    QHeaderView *const header = m_pane->list->header();
    const QPoint second(header->sectionViewportPosition(1) + 10, header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, second);
    QCOMPARE(clicked.size(), 1);
    QCOMPARE(clicked.constFirst().constFirst().toInt(), 1);
    QCOMPARE(m_pane->rows.sortColumn(), -1);
    QVERIFY(m_pane->tree->isHeaderHidden());
}

void tst_PaneView::columnLetters()
{
    const QFontMetrics metrics = m_pane->list->fontMetrics();
    const int letter = metrics.averageCharWidth();
    m_pane->list->setColumnLetters({30, 40}, 1);
    QCOMPARE(m_pane->list->columnWidth(0), 30 * letter);
    QCOMPARE(m_pane->list->columnWidth(1), 40 * letter);
    // Digits may be wider than the average letter.
    m_pane->list->setColumnLetters({30, 1}, 1);
    QVERIFY(m_pane->list->columnWidth(1) >
            metrics.horizontalAdvance(QStringLiteral("88/88/88 88:88:88")) + 2 * letter);
}

void tst_PaneView::sortArrow()
{
    const QHeaderView *const header = m_pane->list->header();
    m_pane->list->showSort(1, Qt::DescendingOrder);
    QVERIFY(header->isSortIndicatorShown());
    QCOMPARE(header->sortIndicatorSection(), 1);
    QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
    m_pane->list->showSort(-1, Qt::AscendingOrder);
    QVERIFY(!header->isSortIndicatorShown());
    QCOMPARE(m_pane->rows.sortColumn(), -1);
}

void tst_PaneView::sortArrowPointsUpWhenAscending()
{
    QWidget *const header = m_pane->list->header()->viewport();
    m_pane->list->showSort(-1, Qt::AscendingOrder);
    const QImage without = header->grab().toImage();
    // Pixels that the arrow changes in each line of the picture.
    const auto widths = [&](Qt::SortOrder order) {
        m_pane->list->showSort(1, order);
        const QImage with = header->grab().toImage();
        std::vector<int> lines;
        for (int y = 0; y < with.height(); ++y) {
            int width = 0;
            for (int x = 0; x < with.width(); ++x)
                width += with.pixel(x, y) != without.pixel(x, y) ? 1 : 0;
            if (width > 0)
                lines.push_back(width);
        }
        return lines;
    };
    const std::vector<int> up = widths(Qt::AscendingOrder);
    const std::vector<int> down = widths(Qt::DescendingOrder);
    QVERIFY(up.size() > 1 && down.size() > 1);
    QVERIFY(up.front() < up.back());
    QVERIFY(down.front() > down.back());
}

void tst_PaneView::chosenByClicks()
{
    QSignalSpy chosen(m_pane->list, &PaneView::chosen);
    const QPoint at = PaneFixture<>::middle(*m_pane->list, m_pane->row(1));
    QTest::mouseClick(m_pane->list->viewport(), Qt::LeftButton, {}, at);
    QCOMPARE(chosen.size(), 1);
    QCOMPARE(chosen.constFirst().constFirst().toModelIndex(), m_pane->row(1));
    QTest::mouseClick(m_pane->list->viewport(), Qt::LeftButton, {}, at);
    QCOMPARE(chosen.size(), 2);
    // Another cell of the same row is a click on it again, once.
    const QPoint size = m_pane->list->visualRect(m_pane->rows.index(1, 1)).center();
    QTest::mouseClick(m_pane->list->viewport(), Qt::LeftButton, {}, size);
    QCOMPARE(chosen.size(), 3);
    QTest::mouseClick(m_pane->list->viewport(), Qt::LeftButton, {}, m_pane->emptySpace());
    QCOMPARE(chosen.size(), 3);
    QVERIFY(!m_pane->list->selectionModel()->hasSelection());
}

void tst_PaneView::chosenByKeys()
{
    QSignalSpy chosen(m_pane->tree, &PaneView::chosen);
    m_pane->tree->setCurrentIndex(m_pane->folders.root());
    QCOMPARE(chosen.size(), 1);
    QTest::keyClick(m_pane->tree, Qt::Key_Down);
    QCOMPARE(chosen.size(), 2);
    QCOMPARE(chosen.constLast().constFirst().toModelIndex(),
             m_pane->folder(QStringLiteral("docs")));
    m_pane->tree->setCurrentIndex(m_pane->folder(QStringLiteral("docs")));
    QCOMPARE(chosen.size(), 2);
}

void tst_PaneView::chosenSeesTheSelection()
{
    QStringList seen;
    connect(m_pane->list, &PaneView::chosen, this, [this, &seen] {
        QStringList names;
        const QModelIndexList selected = m_pane->list->selectionModel()->selectedRows();
        for (const QModelIndex &index : selected)
            names += index.data().toString();
        names.sort();
        seen += names.join(QLatin1Char('+'));
    });
    const auto click = [this](int row, Qt::KeyboardModifiers modifiers) {
        QTest::mouseClick(m_pane->list->viewport(), Qt::LeftButton, modifiers,
                          PaneFixture<>::middle(*m_pane->list, m_pane->row(row)));
    };
    click(0, {});
    click(2, Qt::ControlModifier);
    click(1, {});
    QTest::keyClick(m_pane->list, Qt::Key_Down, Qt::ShiftModifier);
    QCOMPARE(seen, QStringList({QStringLiteral("docs"), QStringLiteral("b.tar.gz+docs"),
                                QStringLiteral("a.txt"), QStringLiteral("a.txt+b.tar.gz")}));
}

void tst_PaneView::notChosenByRemoval()
{
    m_pane->tree->setCurrentIndex(m_pane->folder(QStringLiteral("web")));
    QSignalSpy chosen(m_pane->tree, &PaneView::chosen);
    m_pane->folders.remove(m_pane->folder(QStringLiteral("web")));
    QCOMPARE(chosen.size(), 0);
    m_pane->tree->setCurrentIndex(m_pane->folders.root());
    QCOMPARE(chosen.size(), 1);
}

void tst_PaneView::menuByMouse()
{
    m_pane->list->setCurrentIndex(m_pane->row(0));
    bool inHand = false;
    connect(m_pane->list, &PaneView::menuWanted, this,
            [this, &inHand] { inHand = m_pane->list->inHand(); });
    QSignalSpy wanted(m_pane->list, &PaneView::menuWanted);
    const QPoint at = PaneFixture<>::middle(*m_pane->list, m_pane->row(2));
    rightClick(*m_pane->list, at);
    QCOMPARE(wanted.size(), 1);
    QCOMPARE(wanted.constFirst().constFirst().toPoint(), m_pane->list->viewport()->mapToGlobal(at));
    QVERIFY(inHand);
    QVERIFY(!m_pane->list->inHand());
    QCOMPARE(m_pane->list->selectionModel()->selectedRows(), QModelIndexList{m_pane->row(2)});
    // Without the press before it, as some systems send it.
    const QPoint other = PaneFixture<>::middle(*m_pane->list, m_pane->row(1));
    QContextMenuEvent event(QContextMenuEvent::Mouse, other,
                            m_pane->list->viewport()->mapToGlobal(other));
    QApplication::sendEvent(m_pane->list->viewport(), &event);
    QCOMPARE(m_pane->list->selectionModel()->selectedRows(), QModelIndexList{m_pane->row(1)});
}

void tst_PaneView::menuOnEmptySpace()
{
    m_pane->list->setCurrentIndex(m_pane->row(0));
    QSignalSpy wanted(m_pane->list, &PaneView::menuWanted);
    rightClick(*m_pane->list, m_pane->emptySpace());
    QCOMPARE(wanted.size(), 1);
    QVERIFY(!m_pane->list->selectionModel()->hasSelection());
}

void tst_PaneView::treeKeepsItsFolder()
{
    const QModelIndex root = m_pane->folders.root();
    m_pane->tree->setCurrentIndex(root);
    const QPoint empty(30, m_pane->tree->viewport()->height() - 5);
    QVERIFY(!m_pane->tree->indexAt(empty).isValid());
    rightClick(*m_pane->tree, empty);
    QTest::mouseClick(m_pane->tree->viewport(), Qt::LeftButton, {}, empty);
    QVERIFY(m_pane->tree->selectionModel()->isSelected(root));
    QTest::mouseClick(m_pane->tree->viewport(), Qt::LeftButton, Qt::ControlModifier,
                      PaneFixture<>::middle(*m_pane->tree, root));
    QTest::keyClick(m_pane->tree, Qt::Key_Space, Qt::ControlModifier);
    QVERIFY(m_pane->tree->selectionModel()->isSelected(root));
}

void tst_PaneView::menuKeys_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::newRow("menu key") << Qt::Key_Menu << Qt::KeyboardModifiers();
    QTest::newRow("Shift+F10") << Qt::Key_F10 << Qt::KeyboardModifiers(Qt::ShiftModifier);
}

void tst_PaneView::menuKeys()
{
    QFETCH(Qt::Key, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QSignalSpy wanted(m_pane->list, &PaneView::menuWanted);
    m_pane->list->setCurrentIndex(m_pane->row(2));
    QTest::keyClick(m_pane->list, key, modifiers);
    QCOMPARE(wanted.size(), 1);
    const QPoint at =
        m_pane->list->viewport()->mapFromGlobal(wanted.constFirst().constFirst().toPoint());
    QVERIFY(m_pane->list->visualRect(m_pane->row(2)).contains(at));
    // Nothing current: the view's own corner.
    m_pane->list->selectionModel()->clear();
    QTest::keyClick(m_pane->list, key, modifiers);
    QCOMPARE(wanted.size(), 2);
    QVERIFY(m_pane->list->viewport()->rect().contains(
        m_pane->list->viewport()->mapFromGlobal(wanted.constLast().constFirst().toPoint())));
}

void tst_PaneView::menuKeepsAManyRowSelection()
{
    m_pane->list->selectAll();
    rightClick(*m_pane->list, PaneFixture<>::middle(*m_pane->list, m_pane->row(1)));
    QCOMPARE(m_pane->list->selectionModel()->selectedRows().size(), 4);
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
    QSignalSpy wanted(m_pane->list, &PaneView::menuWanted);
    QApplication::sendEvent(m_pane->list->viewport(), &event);
    QCOMPARE(wanted.size(), 1);
    QCOMPARE(m_pane->list->selectionModel()->selectedRows().size(), 4);
}

void tst_PaneView::viewGoesAwayWithItsMenu()
{
    auto *const view = new PaneView(PaneView::Kind::List);
    view->setModel(&m_pane->rows);
    const QPointer<PaneView> guard = view;
    // A menu entry may end the program and its windows before the menu's call is back.
    connect(view, &PaneView::menuWanted, this, [view] { delete view; });
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
    QApplication::sendEvent(view, &event);
    QVERIFY(!guard);
}

void tst_PaneView::longNamesScroll()
{
    const QScrollBar *const bar = m_pane->tree->horizontalScrollBar();
    QCOMPARE(bar->maximum(), 0);
    const QModelIndex web = m_pane->folder(QStringLiteral("web"));
    QCOMPARE(m_pane->tree->visualRect(web).right(), m_pane->tree->viewport()->width() - 1);
    m_pane->folders.setText(web, QString(200, QLatin1Char('w')));
    QTRY_VERIFY(bar->maximum() > 0);
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_PaneView)
#include "tst_PaneView.moc"
