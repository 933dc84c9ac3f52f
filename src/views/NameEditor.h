#pragma once

#include <functional>

#include <QStyledItemDelegate>

namespace venlo
{

/// Edits the name in a view's first column. Enter and a lost focus enter the text, also an
/// unchanged one; Escape abandons. A refused text keeps the editor open with the text selected.
class NameEditor : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using Accept = std::function<bool(const QModelIndex &index, const QString &text)>;
    using Abandoned = std::function<void(const QModelIndex &index)>;
    explicit NameEditor(QObject *parent);
    void setHandlers(Accept accept, Abandoned abandoned);
    [[nodiscard]] bool editing() const { return m_editing; }

    [[nodiscard]] QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                                        const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override;
    void destroyEditor(QWidget *editor, const QModelIndex &index) const override;

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    Accept m_accept;
    Abandoned m_abandoned;
    mutable bool m_editing = false;
};

} // namespace venlo
