#pragma once

#include <functional>

#include <QPersistentModelIndex>
#include <QPointer>
#include <QStyledItemDelegate>

class QLineEdit;

namespace venlo
{

/// Edits the name in a view's first column. Enter and a lost focus enter the text, also an
/// unchanged one; Escape abandons. A refused text keeps the editor open with the text selected.
/// One name at a time; the model is never written to, what a text does is the pane's matter.
class NameEditor : public QStyledItemDelegate
{
    Q_OBJECT

public:
    /// The index may have gone invalid when the view lost the entry.
    using Accept = std::function<bool(const QModelIndex &index, const QString &text)>;
    using Abandoned = std::function<void(const QModelIndex &index)>;
    explicit NameEditor(QObject *parent);
    void setHandlers(Accept accept, Abandoned abandoned);
    [[nodiscard]] bool editing() const { return !m_line.isNull(); }
    /// True while a text is being carried out or its editor closed: the view leaves it alone.
    [[nodiscard]] bool finishing() const { return m_finishing; }

    [[nodiscard]] bool holdsFocus() const;

    /// Selects what a person most likely changes: a file's name without its extension.
    void selectName();
    /// Enters the text as a lost focus does.
    void enter();
    /// Forgets the editor without a word to anyone; for a view that goes away.
    void drop();

    [[nodiscard]] QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                                        const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override;
    void updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const override;
    void destroyEditor(QWidget *editor, const QModelIndex &index) const override;

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    [[nodiscard]] bool keyPressed(int key);
    [[nodiscard]] bool leavesEntry(Qt::FocusReason reason) const;
    void abandon();
    void close();
    void lost();

    Accept m_accept;
    Abandoned m_abandoned;
    // The view asks for editors through const members.
    mutable QPointer<QLineEdit> m_line;
    mutable QPersistentModelIndex m_index;
    mutable bool m_filled = false;
    bool m_finishing = false;
};

} // namespace venlo
