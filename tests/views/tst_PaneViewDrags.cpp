#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QTest>

#include "views/PaneFixture.h"

namespace venlo::test
{

namespace
{

/// Answers as it is told and writes down what it was asked.
class TestPartner final : public DragPartner
{
public:
    std::unique_ptr<QMimeData> dragData(const QTreeView &from) override
    {
        calls += QStringLiteral("data %1").arg(from.selectionModel()->selectedRows().size());
        if (nothing)
            return nullptr;
        auto data = std::make_unique<QMimeData>();
        data->setText(QStringLiteral("carried"));
        return data;
    }
    Qt::DropActions dragActions() const override { return Qt::CopyAction | Qt::MoveAction; }
    void dragEnded(Qt::DropAction action) override
    {
        calls += QStringLiteral("ended %1").arg(action);
    }
    Qt::DropAction dragOver(const QTreeView & /*view*/, const QModelIndex &under,
                            const QDropEvent & /*event*/) override
    {
        calls += QStringLiteral("over ") + under.data().toString();
        column = under.column();
        return answer;
    }
    void dragLeft(const QTreeView & /*view*/) override { calls += QStringLiteral("left"); }
    Qt::DropAction dropped(const QTreeView &view, const QModelIndex &under,
                           const QDropEvent &event) override
    {
        calls += QStringLiteral("dropped ") + under.data().toString() + QLatin1Char(' ') +
                 event.mimeData()->text();
        inHandAtDrop = static_cast<const PaneView &>(view).inHand();
        return answer;
    }

    QStringList calls;
    Qt::DropAction answer = Qt::CopyAction;
    bool nothing = false;
    bool inHandAtDrop = false;
    int column = -1;
};

/// Ends a drag at once, for there is no pointer to hold.
class DraggedView final : public PaneView
{
public:
    using PaneView::PaneView;

    QString carried;
    Qt::DropActions offered;
    bool inHandWhile = false;

protected:
    Qt::DropAction runDrag(QDrag &drag, Qt::DropActions actions) override
    {
        carried = drag.mimeData()->text();
        offered = actions;
        inHandWhile = inHand();
        drag.deleteLater();
        return Qt::MoveAction;
    }
};

using Fixture = PaneFixture<DraggedView>;

} // namespace

class tst_PaneViewDrags : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void dragStarts();
    void rightButtonDragsNothing();
    void nothingToDrag();
    void viewOnlyRowsStay();
    void noPartner();
    void overEntries();
    void refused();
    void refusedAtTheEdge();
    void leaving();
    void dropping_data();
    void dropping();
    void dropRefused();
    void scrollsAtTheEdge();

private:
    void dragRow(int row, Qt::MouseButton button = Qt::LeftButton);
    [[nodiscard]] bool enter(const QPoint &at);
    /// The action that was answered, IgnoreAction when the move was not accepted.
    [[nodiscard]] Qt::DropAction move(const QPoint &at);
    [[nodiscard]] Qt::DropAction drop(const QPoint &at);

    std::unique_ptr<Fixture> m_pane;
    TestPartner m_partner;
    QMimeData m_data;
};

void tst_PaneViewDrags::init()
{
    m_pane = std::make_unique<Fixture>();
    m_partner = TestPartner();
    m_pane->list->setDragPartner(&m_partner);
    m_data.setText(QStringLiteral("from outside"));
    QVERIFY(QTest::qWaitForWindowActive(&m_pane->window));
}

void tst_PaneViewDrags::cleanup()
{
    m_pane.reset();
}

void tst_PaneViewDrags::dragRow(int row, Qt::MouseButton button)
{
    QWidget *const viewport = m_pane->list->viewport();
    const QPoint from = Fixture::middle(*m_pane->list, m_pane->row(row));
    QTest::mousePress(viewport, button, {}, from);
    const QPoint far(from.x() + 3 * QApplication::startDragDistance(), from.y());
    for (const QPoint &at : {far, far + QPoint(2, 0)}) {
        QMouseEvent moved(QEvent::MouseMove, at, viewport->mapToGlobal(at), Qt::NoButton, button,
                          Qt::NoModifier);
        QApplication::sendEvent(viewport, &moved);
    }
    QTest::mouseRelease(viewport, button, {}, far);
}

bool tst_PaneViewDrags::enter(const QPoint &at)
{
    QDragEnterEvent event(at, Qt::CopyAction | Qt::MoveAction, &m_data, Qt::LeftButton,
                          Qt::NoModifier);
    QApplication::sendEvent(m_pane->list->viewport(), &event);
    return event.isAccepted();
}

Qt::DropAction tst_PaneViewDrags::move(const QPoint &at)
{
    QDragMoveEvent event(at, Qt::CopyAction | Qt::MoveAction, &m_data, Qt::LeftButton,
                         Qt::NoModifier);
    QApplication::sendEvent(m_pane->list->viewport(), &event);
    return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
}

Qt::DropAction tst_PaneViewDrags::drop(const QPoint &at)
{
    QDropEvent event(at, Qt::CopyAction | Qt::MoveAction, &m_data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(m_pane->list->viewport(), &event);
    return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
}

void tst_PaneViewDrags::dragStarts()
{
    dragRow(1);
    QCOMPARE(m_partner.calls, QStringList({QStringLiteral("data 1"), QStringLiteral("ended 2")}));
    QCOMPARE(m_pane->list->carried, QStringLiteral("carried"));
    QCOMPARE(m_pane->list->offered, Qt::DropActions(Qt::CopyAction | Qt::MoveAction));
    QVERIFY(m_pane->list->inHandWhile);
    QVERIFY(!m_pane->list->inHand());
}

void tst_PaneViewDrags::rightButtonDragsNothing()
{
    dragRow(1, Qt::RightButton);
    QCOMPARE(m_partner.calls, QStringList());
    QVERIFY(m_pane->list->carried.isNull());
}

void tst_PaneViewDrags::nothingToDrag()
{
    m_partner.nothing = true;
    dragRow(1);
    QCOMPARE(m_partner.calls.constFirst(), QStringLiteral("data 1"));
    QVERIFY(m_pane->list->carried.isNull());
    QVERIFY(!m_partner.calls.contains(QStringLiteral("ended 2")));
}

void tst_PaneViewDrags::viewOnlyRowsStay()
{
    dragRow(3);
    QCOMPARE(m_partner.calls, QStringList());
    QVERIFY(m_pane->list->carried.isNull());
}

void tst_PaneViewDrags::noPartner()
{
    m_pane->list->setDragPartner(nullptr);
    dragRow(1);
    QVERIFY(m_pane->list->carried.isNull());
    const QPoint at = Fixture::middle(*m_pane->list, m_pane->row(0));
    QVERIFY(!enter(at));
    QCOMPARE(move(at), Qt::IgnoreAction);
    QCOMPARE(drop(at), Qt::IgnoreAction);
    QVERIFY(!m_pane->list->inHand());
}

void tst_PaneViewDrags::overEntries()
{
    m_partner.answer = Qt::MoveAction;
    QVERIFY(enter(Fixture::middle(*m_pane->list, m_pane->row(0))));
    QVERIFY(m_pane->list->inHand());
    // Each cell of a row stands for the row.
    QCOMPARE(move(m_pane->list->visualRect(m_pane->rows.index(2, 1)).center()), Qt::MoveAction);
    QCOMPARE(m_partner.column, 0);
    QCOMPARE(move(m_pane->emptySpace()), Qt::MoveAction);
    QCOMPARE(m_partner.calls,
             QStringList({QStringLiteral("over docs"), QStringLiteral("over b.tar.gz"),
                          QStringLiteral("over ")}));
}

void tst_PaneViewDrags::refused()
{
    const QPoint at = Fixture::middle(*m_pane->list, m_pane->row(1));
    QVERIFY(enter(at));
    m_partner.answer = Qt::IgnoreAction;
    QCOMPARE(move(at), Qt::IgnoreAction);
    m_partner.answer = Qt::CopyAction;
    QCOMPARE(move(at), Qt::CopyAction);
}

void tst_PaneViewDrags::refusedAtTheEdge()
{
    // A drag that comes in over a place that takes nothing still reaches the others.
    m_partner.answer = Qt::IgnoreAction;
    QVERIFY(enter(Fixture::middle(*m_pane->list, m_pane->row(1))));
    m_partner.answer = Qt::CopyAction;
    QCOMPARE(move(Fixture::middle(*m_pane->list, m_pane->row(0))), Qt::CopyAction);
}

void tst_PaneViewDrags::leaving()
{
    QVERIFY(enter(Fixture::middle(*m_pane->list, m_pane->row(0))));
    QDragLeaveEvent event;
    QApplication::sendEvent(m_pane->list->viewport(), &event);
    QCOMPARE(m_partner.calls.constLast(), QStringLiteral("left"));
    QVERIFY(!m_pane->list->inHand());
}

void tst_PaneViewDrags::dropping_data()
{
    QTest::addColumn<Qt::DropAction>("action");
    QTest::newRow("copy") << Qt::CopyAction;
    // The target moved the files itself: the source has nothing left to delete.
    QTest::newRow("target move") << Qt::TargetMoveAction;
}

void tst_PaneViewDrags::dropping()
{
    QFETCH(Qt::DropAction, action);
    const QPoint at = Fixture::middle(*m_pane->list, m_pane->row(0));
    QVERIFY(enter(at));
    m_partner.calls.clear();
    m_partner.answer = action;
    QCOMPARE(drop(at), action);
    QCOMPARE(m_partner.calls,
             QStringList({QStringLiteral("left"), QStringLiteral("dropped docs from outside")}));
    QVERIFY(m_partner.inHandAtDrop);
    QVERIFY(!m_pane->list->inHand());
}

void tst_PaneViewDrags::dropRefused()
{
    const QPoint at = m_pane->emptySpace();
    QVERIFY(enter(at));
    m_partner.answer = Qt::IgnoreAction;
    QCOMPARE(drop(at), Qt::IgnoreAction);
    QCOMPARE(m_partner.calls.constLast(), QStringLiteral("dropped  from outside"));
    QVERIFY(!m_pane->list->inHand());
}

void tst_PaneViewDrags::scrollsAtTheEdge()
{
    std::vector<RowList::Row> rows(100);
    for (RowList::Row &row : rows)
        row.texts = {QStringLiteral("x")};
    QVERIFY(m_pane->rows.append(std::move(rows)));
    const QPoint edge(30, m_pane->list->viewport()->height() - 3);
    QVERIFY(enter(edge));
    QCOMPARE(move(edge), Qt::CopyAction);
    QTRY_VERIFY(m_pane->list->indexAt({30, 3}).row() > 0);
    QDragLeaveEvent event;
    QApplication::sendEvent(m_pane->list->viewport(), &event);
    const int stopped = m_pane->list->indexAt({30, 3}).row();
    QTest::qWait(300);
    QCOMPARE(m_pane->list->indexAt({30, 3}).row(), stopped);
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_PaneViewDrags)
#include "tst_PaneViewDrags.moc"
