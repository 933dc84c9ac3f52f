// What keys and clicks do in the registry dialogs.
#include <algorithm>
#include <array>
#include <utility>

#include <QKeyEvent>
#include <QListWidget>
#include <QMouseEvent>
#include <QPushButton>

#include "sync/windows/RegistryForm.h"

namespace venlo
{

namespace
{
bool isPlainMove(const QKeyEvent &key)
{
    constexpr std::array moves{Qt::Key_Home, Qt::Key_End,    Qt::Key_Up,
                               Qt::Key_Down, Qt::Key_PageUp, Qt::Key_PageDown};
    return (key.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier &&
           std::find(moves.begin(), moves.end(), key.key()) != moves.end();
}
} // namespace

void RegistryForm::watchList()
{
    m_list->installEventFilter(this);
    m_list->viewport()->installEventFilter(this);
    connect(m_list, &QListWidget::itemSelectionChanged, this, &RegistryForm::picked);
    // A click on the entry that is selected already reads it again, over what was typed since.
    connect(m_list, &QListWidget::itemClicked, this, [this] {
        if (std::exchange(m_pickedAgain, false))
            picked();
    });
}

bool RegistryForm::eventFilter(QObject *watched, QEvent *event)
{
    bool done = false;
    if (watched == m_list->viewport() && event->type() == QEvent::MouseButtonPress) {
        const auto *item = m_list->itemAt(static_cast<QMouseEvent *>(event)->pos());
        m_pickedAgain = item != nullptr && item->isSelected();
    } else if (watched == m_list && event->type() == QEvent::KeyPress) {
        done = listKey(*static_cast<QKeyEvent *>(event));
    } else if (auto *button = qobject_cast<QPushButton *>(watched)) {
        done = buttonEvent(*button, *event);
    }
    return done || QDialog::eventFilter(watched, event);
}

/// The list that the Tab key entered has a current entry that is not selected. A move away from it
/// would pass it by, and go nowhere where it is the only one.
bool RegistryForm::listKey(const QKeyEvent &key)
{
    const int last = m_list->count() - 1;
    if (!isPlainMove(key) || last < 0 || !m_list->selectedItems().isEmpty())
        return false;
    const bool toEnd = key.key() == Qt::Key_End;
    m_list->setCurrentRow(toEnd ? last : 0, QItemSelectionModel::ClearAndSelect);
    return true;
}

bool RegistryForm::buttonEvent(QPushButton &button, const QEvent &event)
{
    // The second click of a double click is not meant for what the first one has left behind.
    if (event.type() == QEvent::MouseButtonDblClick)
        return true;
    if (event.type() != QEvent::KeyPress)
        return false;
    const auto &key = static_cast<const QKeyEvent &>(event);
    if (key.key() != Qt::Key_Return && key.key() != Qt::Key_Enter)
        return false;
    if (!key.isAutoRepeat())
        button.click();
    return true;
}

} // namespace venlo
