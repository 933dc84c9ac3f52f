#pragma once

#include <exception>

#include <QDialog>
#include <QElapsedTimer>

#include "shared/WindowDesk.h"

class QBoxLayout;
class QLabel;
class QListWidget;
class QPlainTextEdit;
class QPushButton;

namespace venlo
{

class Execution;
class ReviewBoxes;
class ReviewProgress;
class ReviewView;
class SyncReview;
class SyncReviewModel;

/// The review window: shows a review, lets a person change its ticks, has it executed and shows
/// how that goes. It holds no rows and decides nothing about them. While it executes only Cancel
/// works; closing it then means Cancel first. One window serves one review and is then thrown away.
class sfSync : public QDialog, public StatusTarget, public OperationView
{
    Q_OBJECT

public:
    sfSync(SyncReview &review, Execution &execution, WindowDesk &desk, QWidget *parent = nullptr);
    ~sfSync() override;

    /// Shows the review modally. 1 done, -1 nothing to do or closed unexecuted, 0 cancelled,
    /// reconnect failed or rows left.
    [[nodiscard]] int Act();
    /// Shows it, executes at once and closes by itself; waits for nobody.
    [[nodiscard]] int runUnattended();

    [[nodiscard]] bool isShowing() const override { return isVisible(); }
    void addLines(const QStringList &lines) override;
    void showProgress(const TransferProgress &progress) override;
    void showOutcome(const Outcome &outcome) override;
    void showWarning(const QString &line) override;

    void reject() override;

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void build();
    void addLists(QBoxLayout &layout);
    void addButtons(QBoxLayout &layout);
    void wire();
    void place();
    void listHeldBack();

    /// The execute button.
    void cmRet();
    void execute(bool unattended);
    void setRunning(bool running);
    void rowProgress(int row, bool finished);
    void refreshRows();
    void refreshStale();
    void tellLeftRows();
    void cancel();
    void showCounts();
    void watchForEnd();

    SyncReview &m_review;
    Execution &m_execution;
    WindowDesk &m_desk;
    SyncReviewModel *m_model;
    ReviewBoxes *m_boxes;
    ReviewView *m_view; ///< vCmp
    QLabel *m_counts;
    QListWidget *m_status; ///< ltMsg
    QPlainTextEdit *m_messages;
    ReviewProgress *m_progress;
    QPushButton *m_execute; ///< cmRet
    QPushButton *m_cancel;
    QElapsedTimer m_sinceRefresh;
    std::exception_ptr m_failure; ///< what the execution threw, for the caller of Act
    int m_result;
    int m_current = 0; ///< row of the review that is being worked on
    bool m_stale = false;
    bool m_running = false;
    bool m_closeWanted = false;
};

} // namespace venlo
