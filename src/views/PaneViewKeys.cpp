// The keys of a PaneView and its popup menu.
#include "views/PaneView.h"

#include "views/PaneHold.h"

#include <algorithm>
#include <array>
#include <optional>

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QPointer>

namespace venlo
{

namespace
{

/// The command of a key, nothing for any other.
std::optional<PaneKey> paneKey(const QKeyEvent &event, PaneView::Kind kind)
{
    const int key = event.key();
    if (kind == PaneView::Kind::List && key == Qt::Key_C &&
        event.modifiers() == (Qt::ControlModifier | Qt::ShiftModifier))
        return PaneKey::CopyText;
    if (event.modifiers() == Qt::ControlModifier && key == Qt::Key_X)
        return PaneKey::Cut;
    if (event.modifiers() == Qt::ControlModifier && key == Qt::Key_C)
        return PaneKey::Copy;
    if (event.modifiers() == Qt::ControlModifier && key == Qt::Key_V)
        return PaneKey::Paste;
    if ((event.modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier)
        return std::nullopt;
    switch (key) {
    case Qt::Key_Delete:
        return PaneKey::Delete;
    case Qt::Key_F2:
        return PaneKey::Rename;
    case Qt::Key_F5:
        return PaneKey::Refresh;
    case Qt::Key_Backspace:
        return PaneKey::Parent;
    default:
        return std::nullopt;
    }
}

bool isMenuKey(const QKeyEvent &event)
{
    return event.key() == Qt::Key_Menu ||
           (event.key() == Qt::Key_F10 && event.modifiers() == Qt::ShiftModifier);
}

bool isPlainMove(const QKeyEvent &event)
{
    constexpr std::array moves{Qt::Key_Home, Qt::Key_End,    Qt::Key_Up,
                               Qt::Key_Down, Qt::Key_PageUp, Qt::Key_PageDown};
    return (event.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier &&
           std::find(moves.begin(), moves.end(), event.key()) != moves.end();
}

} // namespace

bool PaneView::event(QEvent *event)
{
    // The view with the focus comes before the window's own shortcuts.
    if (event->type() == QEvent::ShortcutOverride) {
        const auto *const key = static_cast<QKeyEvent *>(event);
        if (paneKey(*key, m_kind) || isMenuKey(*key)) {
            event->accept();
            return true;
        }
    }
    return QTreeView::event(event);
}

void PaneView::keyPressEvent(QKeyEvent *event)
{
    // Keys that the name editor has no use for come up here: they are no commands then.
    if (editingName()) {
        event->accept();
        return;
    }
    if (commandKey(*event)) {
        event->accept();
        return;
    }
    const bool move = isPlainMove(*event);
    const Hold hold(*this);
    QTreeView::keyPressEvent(event);
    // A view that the Tab key entered has a current row that is not selected; moving to it would
    // do nothing, and a list of one row could not be used by keyboard.
    if (move && currentIndex().isValid() && !selectionModel()->hasSelection())
        setCurrentIndex(currentIndex());
}

bool PaneView::commandKey(const QKeyEvent &event)
{
    if (isMenuKey(event)) {
        openMenuAtCurrent();
        return true;
    }
    const bool plain = (event.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (plain && (event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter)) {
        enterCurrent();
        return true;
    }
    // The view would expand all below, reading a whole disk or server.
    if (m_kind == Kind::Tree && event.key() == Qt::Key_Asterisk) {
        expand(currentIndex());
        return true;
    }
    if (const std::optional<PaneKey> key = paneKey(event, m_kind)) {
        Q_EMIT keyWanted(*key);
        return true;
    }
    return false;
}

void PaneView::enterCurrent()
{
    const QModelIndex current = currentIndex().siblingAtColumn(0);
    if (current.isValid())
        Q_EMIT entered(current);
}

void PaneView::contextMenuEvent(QContextMenuEvent *event)
{
    event->accept();
    if (editingName())
        return;
    if (event->reason() == QContextMenuEvent::Keyboard) {
        openMenuAtCurrent();
        return;
    }
    const QModelIndex under = entryAt(event->pos());
    if (under.isValid() && !selectionModel()->isSelected(under))
        setCurrentIndex(under);
    else if (!under.isValid() && m_kind == Kind::List)
        clearSelection(); // what is asked for there goes to the folder
    openMenu(event->globalPos());
}

void PaneView::openMenuAtCurrent()
{
    const QModelIndex current = currentIndex().siblingAtColumn(0);
    QPoint at(0, 0);
    if (current.isValid()) {
        scrollTo(current);
        const QRect rect = visualRect(current).intersected(viewport()->rect());
        at = QPoint(rect.left() + std::min(rect.width() / 2, rect.height()), rect.center().y());
    }
    openMenu(viewport()->mapToGlobal(at));
}

void PaneView::openMenu(const QPoint &at)
{
    const QPointer<PaneView> self = this;
    m_menuOpen = true;
    Q_EMIT menuWanted(at);
    if (self)
        m_menuOpen = false;
}

} // namespace venlo
