#include "views/NameEditor.h"

#include "views/EntryTag.h"

#include <algorithm>

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScopedValueRollback>

namespace venlo
{

namespace
{

/// Wide enough for the text, within the view.
void widen(QLineEdit &line)
{
    const int border = 2 * line.fontMetrics().horizontalAdvance(QLatin1Char('m'));
    const int wanted = line.fontMetrics().horizontalAdvance(line.text()) + border;
    const int room = line.parentWidget()->width() - line.x();
    line.resize(std::max(line.width(), std::min(wanted, room)), line.height());
}

} // namespace

NameEditor::NameEditor(QObject *parent) : QStyledItemDelegate(parent) {}

void NameEditor::setHandlers(Accept accept, Abandoned abandoned)
{
    m_accept = std::move(accept);
    m_abandoned = std::move(abandoned);
}

bool NameEditor::holdsFocus() const
{
    return m_line && m_line->hasFocus();
}

void NameEditor::selectName()
{
    if (!m_line)
        return;
    const auto dot = m_line->text().lastIndexOf(QLatin1Char('.'));
    const int tag = m_index.data(entryTagRole).toInt();
    if (tag == static_cast<int>(EntryTag::FL) && dot > 0)
        m_line->setSelection(0, static_cast<int>(dot));
    else
        m_line->selectAll();
}

void NameEditor::enter()
{
    if (m_finishing || !m_line)
        return;
    // What accepting does may open boxes, change the model and even end the view.
    const QPointer<NameEditor> self = this;
    const QPersistentModelIndex index = m_index;
    m_finishing = true;
    const bool taken = !m_accept || m_accept(index, m_line->text());
    if (!self)
        return;
    m_finishing = false;
    if (!m_line)
        return;
    if (taken) {
        close();
        return;
    }
    m_line->selectAll();
    m_line->setFocus();
}

void NameEditor::drop()
{
    setHandlers({}, {});
    if (m_line)
        m_line->removeEventFilter(this);
    m_line = nullptr;
}

QWidget *NameEditor::createEditor(QWidget *parent, const QStyleOptionViewItem & /*option*/,
                                  const QModelIndex &index) const
{
    auto *const line = new QLineEdit(parent);
    line->setObjectName(QStringLiteral("nameEditor"));
    line->setAccessibleName(QStringLiteral("名前"));
    line->setAutoFillBackground(true);
    connect(line, &QLineEdit::textChanged, line, [line] { widen(*line); });
    m_line = line;
    m_index = index;
    m_filled = false;
    return line;
}

void NameEditor::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    // Later calls come from changes of the entry and must not take away what was typed.
    if (editor != m_line || m_filled)
        return;
    m_line->setText(index.data(Qt::EditRole).toString());
    m_filled = true;
}

void NameEditor::setModelData(QWidget * /*editor*/, QAbstractItemModel * /*model*/,
                              const QModelIndex & /*index*/) const
{
}

void NameEditor::updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                                      const QModelIndex &index) const
{
    QStyledItemDelegate::updateEditorGeometry(editor, option, index);
    if (editor == m_line)
        widen(*m_line);
}

void NameEditor::destroyEditor(QWidget *editor, const QModelIndex &index) const
{
    if (editor == m_line) {
        m_line = nullptr;
        if (!m_finishing) {
            // The view lost the entry, often in the middle of the model's own change: word of it
            // waits until that is over.
            auto *const self = const_cast<NameEditor *>(this);
            QMetaObject::invokeMethod(
                self, [self] { self->lost(); }, Qt::QueuedConnection);
        }
    }
    QStyledItemDelegate::destroyEditor(editor, index);
}

bool NameEditor::eventFilter(QObject *object, QEvent *event)
{
    if (object != m_line)
        return QStyledItemDelegate::eventFilter(object, event);
    switch (event->type()) {
    case QEvent::ShortcutOverride:
        if (static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape)
            event->accept();
        return false;
    case QEvent::KeyPress:
        return keyPressed(static_cast<QKeyEvent *>(event)->key());
    case QEvent::FocusOut:
        if (leavesEntry(static_cast<QFocusEvent *>(event)->reason()))
            enter();
        return false;
    default:
        return false;
    }
}

bool NameEditor::keyPressed(int key)
{
    switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        enter();
        return true;
    case Qt::Key_Escape:
        abandon();
        return true;
    default:
        return false;
    }
}

bool NameEditor::leavesEntry(Qt::FocusReason reason) const
{
    // The editor's own popup menu and a box that opens meanwhile give the focus back.
    if (reason == Qt::PopupFocusReason)
        return false;
    const QWidget *const modal = QApplication::activeModalWidget();
    return !modal || modal->isAncestorOf(m_line);
}

void NameEditor::abandon()
{
    if (m_finishing || !m_line)
        return;
    const QPersistentModelIndex index = m_index;
    close();
    if (m_abandoned)
        m_abandoned(index);
}

void NameEditor::close()
{
    const QScopedValueRollback<bool> guard(m_finishing, true);
    Q_EMIT closeEditor(m_line, NoHint);
}

void NameEditor::lost()
{
    // Another name may be edited by now: then the index is that one's.
    const QPersistentModelIndex index = m_line ? QPersistentModelIndex() : m_index;
    if (m_abandoned)
        m_abandoned(index);
}

} // namespace venlo
