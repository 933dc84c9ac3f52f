#pragma once

#include <functional>
#include <initializer_list>
#include <memory>

#include <QItemSelectionModel>
#include <QPersistentModelIndex>
#include <QPoint>
#include <QTreeView>

class QDrag;
class QMimeData;

namespace venlo
{

class NameEditor;

/// What a pane's own keys ask for; CopyText, the rows as text, is a list's only.
enum class PaneKey { Delete, Rename, Refresh, Parent, Cut, Copy, Paste, CopyText };

/// What a view asks its pane about drags. Indexes are those of the view's model; an invalid one is
/// the empty space.
class DragPartner
{
public:
    virtual ~DragPartner() = default;
    /// What dragging the selection carries; null starts no drag.
    [[nodiscard]] virtual std::unique_ptr<QMimeData> dragData(const QTreeView &from) = 0;
    [[nodiscard]] virtual Qt::DropActions dragActions() const = 0;
    /// A drag that this view started has ended with that action.
    virtual void dragEnded(Qt::DropAction action) = 0;
    /// What a drop here would do, IgnoreAction for nothing; also marks the target.
    [[nodiscard]] virtual Qt::DropAction dragOver(const QTreeView &view, const QModelIndex &under,
                                                  const QDropEvent &event) = 0;
    virtual void dragLeft(const QTreeView &view) = 0;
    /// Carries a drop out; the action that is answered to the drag's source. event.mimeData() does
    /// not outlive the call.
    [[nodiscard]] virtual Qt::DropAction dropped(const QTreeView &view, const QModelIndex &under,
                                                 const QDropEvent &event) = 0;
};

/// A pane's tree or list: keys, the popup menu, label editing and drags as both panes have them.
/// Editing starts only by edit() (F2, a menu entry, a new entry), never by a click. Double click
/// and Enter are entered(); the tree expands by its own arrows and keys only.
class PaneView : public QTreeView
{
    Q_OBJECT

public:
    enum class Kind { Tree, List };
    explicit PaneView(Kind kind, QWidget *parent = nullptr);
    ~PaneView() override;
    void setModel(QAbstractItemModel *model) override;

    void setDragPartner(DragPartner *partner) { m_partner = partner; }
    [[nodiscard]] DragPartner *dragPartner() const { return m_partner; }

    /// The name editor: accept returns false to keep it open (the pane has said why); abandoned is
    /// called after Escape or when the view loses the entry. Unchanged text counts as entered.
    using Accept = std::function<bool(const QModelIndex &index, const QString &text)>;
    using Abandoned = std::function<void(const QModelIndex &index)>;
    void setNameEditing(Accept accept, Abandoned abandoned);
    void editName(const QModelIndex &index);
    [[nodiscard]] bool editingName() const;
    /// A menu is open, a name is edited or a drag is on: the watch and refills wait.
    [[nodiscard]] bool inHand() const;

    /// The widths a list begins with, in letters of its font; the date column (counted from 0) is
    /// never too narrow for a date.
    void setColumnLetters(std::initializer_list<int> letters, int dateColumn);
    /// Shows the sort arrow of a column (counted from 0), none for -1.
    void showSort(int column, Qt::SortOrder order);

Q_SIGNALS:
    void entered(const QModelIndex &index);
    /// at: global position; from the menu key, the current item's.
    void menuWanted(const QPoint &at);
    void keyWanted(venlo::PaneKey key);
    /// The click on a list's heading, column counted from 0.
    void headingClicked(int column);
    /// The current item changed or was clicked again by a person or by setCurrentIndex; not when it
    /// moves because its entry is removed. The selection is up to date by then.
    void chosen(const QModelIndex &index);

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void startDrag(Qt::DropActions supported) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void currentChanged(const QModelIndex &current, const QModelIndex &previous) override;
    void rowsAboutToBeRemoved(const QModelIndex &parent, int first, int last) override;
    [[nodiscard]] QItemSelectionModel::SelectionFlags
    selectionCommand(const QModelIndex &index, const QEvent *event) const override;
    void closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint) override;

    /// Runs a drag to its end. Tests that cannot hold a mouse button put their own in its place.
    [[nodiscard]] virtual Qt::DropAction runDrag(QDrag &drag, Qt::DropActions actions);

private:
    class Hold;
    void setUpTree();
    void setUpList();
    void announce();
    [[nodiscard]] bool commandKey(const QKeyEvent &event);
    void enterCurrent();
    void openMenuAtCurrent();
    void openMenu(const QPoint &at);
    void answer(QDragMoveEvent &event);
    [[nodiscard]] QModelIndex entryAt(const QPoint &at) const;
    [[nodiscard]] bool dragsSomething() const;

    Kind m_kind;
    DragPartner *m_partner = nullptr;
    NameEditor *m_editor;
    QMetaObject::Connection m_removal;
    Qt::MouseButton m_pressed = Qt::NoButton;
    bool m_dragging = false;
    bool m_dragOver = false; ///< a drag, ours or another's, hangs above the view
    bool m_menuOpen = false;
    bool m_removing = false; ///< the model is taking rows out
    int m_holds = 0;         ///< while above 0, chosen() waits
    bool m_chosenWaits = false;
    QPersistentModelIndex m_currentAtPress;
    QPersistentModelIndex m_doubleClicked;
};

} // namespace venlo
