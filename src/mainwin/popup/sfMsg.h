#pragma once

#include <memory>

#include <QDialog>

#include "shared/WindowDesk.h"

class QListWidget;

namespace venlo
{

/// The message window of a remote operation: what is being moved, how far it has come, Cancel, and
/// below them the status lines. Modeless, and takes no focus when it comes up; lives between cOn
/// and cOff. Closing it by hand only hides it, the operation goes on. Draws its progress ten times
/// a second at most, however often it is told.
class sfMsg : public QDialog, public StatusTarget, public OperationView
{
    Q_OBJECT

public:
    explicit sfMsg(WindowDesk &desk, QWidget *parent = nullptr);
    ~sfMsg() override;

    void cOn();
    void cOff();
    /// The shown flag: between cOn and cOff or the person's closing.
    [[nodiscard]] bool shown() const { return m_shown; }
    /// What the operation moves ("/pub > C:\\site Down Loading････"), above the list.
    void setTitleLine(const QString &text);
    /// Bytes of the whole operation, -1 when unknown: gives the total's bar a length.
    void setTotal(qint64 bytes);

    /// A status line to be read afterwards too: when the window goes, it stands in the list behind.
    void addLastingLine(const QString &line);

    [[nodiscard]] bool isShowing() const override { return m_shown; }
    void addLines(const QStringList &lines) override;
    void showProgress(const TransferProgress &progress) override;
    void showOutcome(const Outcome &outcome) override;
    void showWarning(const QString &line) override;

    void reject() override;

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    struct Parts;
    void build();
    void cancel();
    void draw();

    WindowDesk &m_desk;
    std::unique_ptr<Parts> m_parts;
    QListWidget *m_list; ///< ltMsg
    bool m_shown = false;
};

} // namespace venlo
