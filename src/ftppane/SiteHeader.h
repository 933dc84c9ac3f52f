#pragma once

#include <QFrame>
#include <QStringList>

class QComboBox;
class QLabel;
class QPushButton;
class QTimer;

namespace venlo
{

/// The head of the FTP pane: the sites, the connect button, the menu button and the status
/// caption. It only shows and asks; what a choice means is its pane's affair.
class SiteHeader : public QWidget
{
    Q_OBJECT

public:
    explicit SiteHeader(QWidget *parent = nullptr);

    /// Fills the list of sites; the selected one stays where it is still there.
    void setSites(const QStringList &names);
    [[nodiscard]] int index() const;
    /// An index without entry selects nothing (-1). Raises nothing.
    void setIndex(int index);
    /// Letter case ignored; -1 when there is none.
    [[nodiscard]] int indexOf(const QString &site) const;
    /// The selected site's name, empty when none is.
    [[nodiscard]] QString site() const;
    void setCaption(const QString &text);
    /// The protocol that protects the connection ("TLSv1.3"), empty for none: a lock and its name
    /// stand before the caption.
    void setSecurity(const QString &protocol);
    void setConnectable(bool connectable);
    /// While an operation runs nothing here can be asked for. A short one shows no change.
    void setBusy(bool busy);
    /// Below the menu button, global.
    [[nodiscard]] QPoint menuPlace() const;
    [[nodiscard]] bool hasFocusInside() const;
    [[nodiscard]] QList<QWidget *> tabChain() const;

Q_SIGNALS:
    void siteChosen(int index);
    void connectWanted();
    void elseWanted();

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void layOut();
    void drawLock(const QString &protocol);
    void showBusy(bool busy);

    QFrame *m_frame;    ///< Frame1
    QComboBox *m_sites; ///< cbSvr
    QLabel *m_caption;  ///< Label1
    QLabel *m_lock;
    QPushButton *m_open; ///< imOpn
    QPushButton *m_else; ///< imElse
    QTimer *m_busyTimer;
    bool m_connectable = false;
    bool m_busy = false;
    QWidget *m_focusBefore = nullptr;
};

} // namespace venlo
