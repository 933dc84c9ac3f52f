#pragma once

#include <QWidget>

#include "localpane/RootHistory.h"

class QComboBox;
class QDropEvent;
class QKeyEvent;
class QLineEdit;
class QToolButton;

namespace venlo
{

/// The line above the local tree: the roots that were shown, the folder button and the filter. It
/// asks for roots and shows none by itself.
class RootBar : public QWidget
{
    Q_OBJECT

public:
    explicit RootBar(QWidget *parent = nullptr);

    /// A root was shown: first in the box and its history.
    void enter(const QString &root);
    /// Puts the box back to the shown root.
    void showRoot(const QString &root);
    /// Puts a filter into its box and takes it as entered.
    void enterFilter(const QString &filter);
    [[nodiscard]] const QString &history() const { return m_history.text(); }
    void setHistory(const QString &history, const QString &shownRoot);
    [[nodiscard]] QComboBox *cbRoot() const { return m_root; }
    [[nodiscard]] QToolButton *imFnd() const { return m_find; }
    [[nodiscard]] QLineEdit *txFilter() const { return m_filter; }

Q_SIGNALS:
    /// Chosen or typed.
    void rootWanted(const QString &root);
    void findWanted();
    void filterEntered(const QString &filter);
    void dropped(const QString &path);

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void buildRoots();
    void buildFind();
    void buildFilter();
    void refill(const QString &shown);
    void filterLeft();
    [[nodiscard]] bool keyInRoots(const QKeyEvent &event);
    [[nodiscard]] bool dragInto(QDropEvent &event);

    QComboBox *m_root;
    QToolButton *m_find;
    QLineEdit *m_filter;
    RootHistory m_history;
    QString m_shown;
    QString m_lastFilter;
};

} // namespace venlo
