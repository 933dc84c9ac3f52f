#pragma once

#include <QElapsedTimer>
#include <QStatusBar>
#include <QTimer>

#include "shared/WindowDesk.h"

class QLabel;
class QProgressBar;
class QPushButton;

namespace venlo
{

class OperationGate;

/// The main window's status bar: the message text, and while an operation runs how far the file in
/// hand has come and Cancel. Registers itself at the desk for as long as it lives.
class MainStatusBar : public QStatusBar, public MessageLineSink, public OperationView
{
    Q_OBJECT

public:
    MainStatusBar(WindowDesk &desk, OperationGate &gate, QWidget *parent = nullptr);
    ~MainStatusBar() override;

    /// The text panel; carriage returns become " ,". Drawn thirty times a second at most.
    void showMessageLine(const QString &text) override;
    [[nodiscard]] QString text() const;

    void showProgress(const TransferProgress &progress) override;
    void showOutcome(const Outcome &outcome) override { (void)outcome; }
    void showWarning(const QString &line) override { (void)line; }

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void setRunning(bool running);
    void showElided();

    WindowDesk &m_desk;
    QString m_text;
    QElapsedTimer m_sinceText;
    QTimer m_textLater; ///< draws the text where texts follow each other too fast
    QElapsedTimer m_sinceProgress;
    QLabel *m_label;
    QProgressBar *m_bar;
    QPushButton *m_cancel;
};

} // namespace venlo
