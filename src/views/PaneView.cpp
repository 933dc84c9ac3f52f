#include "views/PaneView.h"

#include "views/NameEditor.h"
#include "views/PaneHold.h"
#include "views/SortArrowStyle.h"

#include <QHeaderView>
#include <QMouseEvent>

#include <algorithm>

namespace venlo
{

PaneView::PaneView(Kind kind, QWidget *parent)
    : QTreeView(parent), m_kind(kind), m_editor(new NameEditor(this))
{
    setItemDelegate(m_editor);
    setEditTriggers(NoEditTriggers);
    setExpandsOnDoubleClick(false);
    setSortingEnabled(false);
    setUniformRowHeights(true);
    setSelectionBehavior(SelectRows);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDragDropMode(DragDrop);
    setDropIndicatorShown(false);
    setAutoScroll(true);
    if (kind == Kind::Tree)
        setUpTree();
    else
        setUpList();
    connect(this, &QTreeView::doubleClicked, this,
            [this](const QModelIndex &index) { m_doubleClicked = index; });
    connect(this, &QTreeView::clicked, this, [this](const QModelIndex &index) {
        if (m_currentAtPress.isValid() && m_currentAtPress == index.siblingAtColumn(0))
            Q_EMIT chosen(index.siblingAtColumn(0));
    });
}

PaneView::~PaneView()
{
    // The editor loses the focus on its way out; its pane is half gone by then.
    m_editor->drop();
}

void PaneView::setUpTree()
{
    setHeaderHidden(true);
    setRootIsDecorated(true);
    setSelectionMode(SingleSelection);
    // Names that are longer than the view is wide can be scrolled to.
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(QHeaderView::ResizeToContents);
}

void PaneView::setUpList()
{
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setSelectionMode(ExtendedSelection);
    setAllColumnsShowFocus(true);
    header()->setStyle(new SortArrowStyle(header()));
    header()->setSectionsMovable(false);
    header()->setSectionsClickable(true);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(QHeaderView::Interactive);
    connect(header(), &QHeaderView::sectionClicked, this, &PaneView::headingClicked);
}

void PaneView::setModel(QAbstractItemModel *model)
{
    disconnect(m_removal);
    QTreeView::setModel(model);
    m_removing = false;
    if (model)
        m_removal =
            connect(model, &QAbstractItemModel::rowsRemoved, this, [this] { m_removing = false; });
}

void PaneView::setNameEditing(Accept accept, Abandoned abandoned)
{
    m_editor->setHandlers(std::move(accept), std::move(abandoned));
}

void PaneView::editName(const QModelIndex &index)
{
    m_editor->enter();
    const QModelIndex name = index.siblingAtColumn(0);
    if (editingName() || !name.isValid() || !(name.flags() & Qt::ItemIsEditable))
        return;
    scrollTo(name);
    edit(name);
    m_editor->selectName();
}

bool PaneView::editingName() const
{
    return m_editor->editing();
}

bool PaneView::inHand() const
{
    return m_dragging || m_dragOver || m_menuOpen || editingName();
}

void PaneView::setColumnLetters(std::initializer_list<int> letters, int dateColumn)
{
    const int letter = fontMetrics().averageCharWidth();
    int column = 0;
    for (const int count : letters)
        setColumnWidth(column++, letter * count);
    const int date = fontMetrics().horizontalAdvance(QStringLiteral("00/00/00 00:00:00"));
    const int margins = letter * 3;
    setColumnWidth(dateColumn, std::max(columnWidth(dateColumn), date + margins));
}

void PaneView::showSort(int column, Qt::SortOrder order)
{
    header()->setSortIndicator(column, order);
    header()->setSortIndicatorShown(column >= 0);
}

void PaneView::announce()
{
    if (m_holds > 0) {
        m_chosenWaits = true;
        return;
    }
    m_chosenWaits = false;
    Q_EMIT chosen(currentIndex().siblingAtColumn(0));
}

void PaneView::currentChanged(const QModelIndex &current, const QModelIndex &previous)
{
    QTreeView::currentChanged(current, previous);
    // Cells of one row are one entry.
    const bool sameEntry =
        current.isValid() && current.siblingAtColumn(0) == previous.siblingAtColumn(0);
    if (!m_removing && !sameEntry)
        announce();
}

void PaneView::rowsAboutToBeRemoved(const QModelIndex &parent, int first, int last)
{
    m_removing = true;
    QTreeView::rowsAboutToBeRemoved(parent, first, last);
}

QItemSelectionModel::SelectionFlags PaneView::selectionCommand(const QModelIndex &index,
                                                               const QEvent *event) const
{
    const QItemSelectionModel::SelectionFlags command = QTreeView::selectionCommand(index, event);
    // A tree always has its folder: neither empty space nor Ctrl takes it away.
    const bool takesAway = !index.isValid() || command.testFlag(QItemSelectionModel::Deselect) ||
                           command.testFlag(QItemSelectionModel::Toggle);
    return m_kind == Kind::Tree && takesAway ? QItemSelectionModel::NoUpdate : command;
}

void PaneView::closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint)
{
    // The view wants to close it because the current item moved on: that is a lost focus.
    if (m_editor->finishing())
        QTreeView::closeEditor(editor, hint);
    else
        m_editor->enter();
}

void PaneView::mousePressEvent(QMouseEvent *event)
{
    // The focus went with the click, and with it the name was entered; a refused one has the focus
    // back and stays.
    if (!m_editor->holdsFocus())
        m_editor->enter();
    if (editingName()) {
        event->accept();
        return;
    }
    m_pressed = event->button();
    m_currentAtPress = currentIndex().siblingAtColumn(0);
    const Hold hold(*this);
    QTreeView::mousePressEvent(event);
}

void PaneView::mouseDoubleClickEvent(QMouseEvent *event)
{
    m_doubleClicked = QPersistentModelIndex();
    {
        const Hold hold(*this);
        QTreeView::mouseDoubleClickEvent(event);
    }
    const QModelIndex index = m_doubleClicked;
    if (event->button() == Qt::LeftButton && index.isValid())
        Q_EMIT entered(index.siblingAtColumn(0));
}

void PaneView::resizeEvent(QResizeEvent *event)
{
    // The tree's only column fills the view at least, so that no place beside a name is empty.
    if (m_kind == Kind::Tree)
        header()->setMinimumSectionSize(viewport()->width());
    QTreeView::resizeEvent(event);
}

QModelIndex PaneView::entryAt(const QPoint &at) const
{
    return indexAt(at).siblingAtColumn(0);
}

} // namespace venlo
