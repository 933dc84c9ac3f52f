#pragma once

#include <QDialog>
#include <QString>

class QCloseEvent;
class QLabel;

namespace venlo
{

/// The small window that asks a person to wait. Modeless; lives from cMsg to cEnd, with the wait
/// cursor. It cannot be closed by hand: the attempt is the wish to stop what is waited for.
class sfWait : public QDialog
{
    Q_OBJECT

public:
    sfWait();
    ~sfWait() override;

    /// Shows the text at once, or puts it into the window that shows already; an empty one is
    /// replaced by a plain request to wait.
    void cMsg(const QString &text);
    void cEnd();

    /// Stands before that window and on its screen from the next cMsg on; null for none. It does
    /// not become the other one's child: whoever made it owns it.
    void standBefore(const QWidget *owner);

    void reject() override;

Q_SIGNALS:
    void cancelWanted();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void centre();
    void setCursorOverridden(bool overridden);

    QLabel *m_panel; ///< SSPanel1
    bool m_cursorOverridden = false;
};

} // namespace venlo
