// Drags from a PaneView and above it.
#include "views/PaneView.h"

#include <algorithm>

#include <QDrag>
#include <QDropEvent>
#include <QMimeData>
#include <QPointer>

namespace venlo
{

bool PaneView::dragsSomething() const
{
    const QModelIndexList selected = selectionModel()->selectedRows();
    return std::any_of(selected.begin(), selected.end(), [](const QModelIndex &index) {
        return (index.flags() & Qt::ItemIsDragEnabled) != 0;
    });
}

void PaneView::startDrag(Qt::DropActions /*supported*/)
{
    // The right button asks for the menu: a hand that shakes must not move files.
    if (m_pressed != Qt::LeftButton || !m_partner || editingName() || !dragsSomething())
        return;
    std::unique_ptr<QMimeData> carried = m_partner->dragData(*this);
    if (!carried)
        return;
    auto *const drag = new QDrag(this); // ends itself after the drag
    drag->setMimeData(carried.release());
    const QIcon icon = currentIndex().siblingAtColumn(0).data(Qt::DecorationRole).value<QIcon>();
    if (!icon.isNull())
        drag->setPixmap(icon.pixmap(iconSize().isValid() ? iconSize() : QSize(16, 16)));
    const QPointer<PaneView> self = this;
    m_dragging = true;
    const Qt::DropAction done = runDrag(*drag, m_partner->dragActions());
    if (!self)
        return;
    m_dragging = false;
    if (m_partner)
        m_partner->dragEnded(done);
}

Qt::DropAction PaneView::runDrag(QDrag &drag, Qt::DropActions actions)
{
    return drag.exec(actions);
}

void PaneView::answer(QDragMoveEvent &event)
{
    const QPoint at = event.position().toPoint();
    const Qt::DropAction action =
        m_partner ? m_partner->dragOver(*this, entryAt(at), event) : Qt::IgnoreAction;
    if (action == Qt::IgnoreAction) {
        event.ignore();
    } else {
        event.setDropAction(action);
        event.accept();
    }
}

void PaneView::dragEnterEvent(QDragEnterEvent *event)
{
    if (!m_partner) {
        event->ignore();
        return;
    }
    m_dragOver = true;
    answer(*event);
    // An enter that is not accepted ends the moves too: places further on may take the drop.
    if (!event->isAccepted()) {
        event->setDropAction(Qt::IgnoreAction);
        event->accept();
    }
}

void PaneView::dragMoveEvent(QDragMoveEvent *event)
{
    QTreeView::dragMoveEvent(event); // scrolls at the edges
    answer(*event);
}

void PaneView::dragLeaveEvent(QDragLeaveEvent *event)
{
    QTreeView::dragLeaveEvent(event);
    m_dragOver = false;
    if (m_partner)
        m_partner->dragLeft(*this);
}

void PaneView::dropEvent(QDropEvent *event)
{
    // Ends the scrolling; the view's own drop would go to the model.
    QDragLeaveEvent left;
    QTreeView::dragLeaveEvent(&left);
    if (!m_partner) {
        event->ignore();
        return;
    }
    const QPersistentModelIndex under = entryAt(event->position().toPoint());
    const QPointer<PaneView> self = this;
    m_partner->dragLeft(*this); // takes the mark off the target
    const Qt::DropAction done = m_partner->dropped(*this, under, *event);
    if (self)
        m_dragOver = false;
    if (done == Qt::IgnoreAction) {
        event->ignore();
        return;
    }
    event->setDropAction(done);
    event->accept();
}

} // namespace venlo
