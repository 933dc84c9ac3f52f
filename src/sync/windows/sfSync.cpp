#include "sync/windows/sfSync.h"

#include <utility>

#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>

#include "shared/ConsolePrinter.h"
#include "shared/StatusTail.h"
#include "sync/Execution.h"
#include "sync/SyncReview.h"
#include "sync/windows/ReviewBoxes.h"
#include "sync/windows/ReviewProgress.h"
#include "sync/windows/ReviewView.h"
#include "sync/windows/SyncReviewModel.h"

namespace venlo
{

namespace
{
constexpr int mostNames = 5;
constexpr qint64 refreshInterval = 100; // ms
constexpr int endInterval = 200;        // ms
} // namespace

sfSync::sfSync(SyncReview &review, Execution &execution, WindowDesk &desk, QWidget *parent)
    : QDialog(parent), m_review(review), m_execution(execution), m_desk(desk),
      m_model(new SyncReviewModel(review, palette(), this)), m_boxes(new ReviewBoxes(review, this)),
      m_view(new ReviewView(this)), m_counts(new QLabel(this)), m_status(new QListWidget(this)),
      m_messages(new QPlainTextEdit(this)), m_progress(new ReviewProgress(this)),
      m_execute(new QPushButton(this)), m_cancel(new QPushButton(this)),
      m_result(Execution::NothingToDo)
{
    build();
    wire();
    listHeldBack();
    showCounts();
    place();
    m_desk.addStatusTarget(*this, StatusRank::SyncWindow);
    m_desk.addOperationView(*this);
}

sfSync::~sfSync()
{
    m_desk.removeOperationView(*this);
    m_desk.removeStatusTarget(*this);
}

void sfSync::wire()
{
    connect(m_boxes, &ReviewBoxes::chCmpClicked, m_model, &SyncReviewModel::setChCmp);
    connect(m_boxes, &ReviewBoxes::chDspClicked, m_model, &SyncReviewModel::setChDsp);
    connect(m_boxes, &ReviewBoxes::tickAllClicked, m_model, &SyncReviewModel::tickAll);
    connect(m_model, &SyncReviewModel::planChanged, this, &sfSync::showCounts);
    connect(m_execute, &QPushButton::clicked, this, &sfSync::cmRet);
    connect(m_cancel, &QPushButton::clicked, this, &sfSync::reject);
    auto *looks = new QTimer(this);
    connect(looks, &QTimer::timeout, this, &sfSync::watchForEnd);
    looks->start(endInterval);
}

int sfSync::Act()
{
    exec();
    if (m_failure)
        std::rethrow_exception(m_failure);
    return m_result;
}

int sfSync::runUnattended()
{
    show();
    m_desk.yield();
    execute(true);
    hide();
    if (m_failure)
        std::rethrow_exception(m_failure);
    return m_result;
}

void sfSync::cmRet()
{
    execute(false);
    const bool staysOpen = m_execution.cancelled() && !m_closeWanted && !m_desk.mustEnd();
    if (m_failure || !staysOpen) {
        if (!m_failure && !m_execution.cancelled()) {
            tellLeftRows();
            m_desk.message(QStringLiteral("同期が終了しました この画面は閉じます"));
        }
        done(0);
        return;
    }
    addLine(QStringLiteral("同期を中止しました"));
}

void sfSync::execute(bool unattended)
{
    const bool before = m_result == Execution::Done;
    if (!unattended)
        m_desk.beginOperation();
    setRunning(true);
    m_progress->start(m_review);
    m_execution.setProgress([this](int row, bool finished) { rowProgress(row, finished); });
    try {
        m_result = m_execution.run(m_review, unattended);
    } catch (...) {
        m_failure = std::current_exception();
        m_result = Execution::NotDone;
    }
    m_execution.setProgress({});
    m_progress->stop();
    setRunning(false);
    if (before && m_result == Execution::NothingToDo)
        m_result = Execution::Done;
}

void sfSync::setRunning(bool running)
{
    m_running = running;
    m_boxes->setEnabled(!running);
    m_execute->setEnabled(!running);
    m_cancel->setEnabled(true);
    m_model->setLocked(running);
    m_model->setRunning(-1);
    refreshRows();
    if (running)
        m_cancel->setFocus();
    else
        m_view->setFocus();
}

void sfSync::rowProgress(int row, bool finished)
{
    if (finished) {
        m_progress->endRow(m_review, row);
    } else {
        m_model->setRunning(row);
        m_progress->beginRow(m_review, row);
    }
    m_stale = true;
    m_current = row;
    refreshStale();
}

/// Small files end much faster than a grid is worth drawing, and after them a large one may take
/// minutes; so rows are looked at again when a file moves, too.
void sfSync::refreshStale()
{
    if (!m_stale || m_sinceRefresh.elapsed() < refreshInterval)
        return;
    refreshRows();
    const int shown = m_model->tableRow(m_current);
    if (shown >= 0)
        m_view->scrollTo(m_model->index(shown, 0));
}

void sfSync::refreshRows()
{
    m_model->refresh();
    showCounts();
    m_stale = false;
    m_sinceRefresh.start();
}

/// The finish box alone would hide that something is not as the person asked for it to be.
void sfSync::tellLeftRows()
{
    QStringList names;
    int left = 0;
    for (int i = 0; i < m_review.count(); ++i) {
        const bool givenUp =
            m_review.row(i).owner < 0 && m_review.row(i).state == RowState::GivenUp;
        if (!givenUp && !m_review.pending(i))
            continue;
        if (++left <= mostNames)
            names += m_review.pair().down ? m_review.localPath(i) : m_review.remotePath(i);
    }
    if (left > 0)
        m_desk.message(QStringLiteral("%1 件を実行できませんでした\n").arg(left) +
                       names.join(QLatin1Char('\n')));
}

void sfSync::cancel()
{
    m_desk.requestStop();
    m_cancel->setEnabled(false);
    addLine(QStringLiteral("実行中のﾌｧｲﾙが終わりしだい中止します"));
}

void sfSync::reject()
{
    if (!m_running)
        QDialog::reject();
    else if (m_cancel->isEnabled())
        cancel();
}

void sfSync::closeEvent(QCloseEvent *event)
{
    if (!m_running) {
        QDialog::closeEvent(event);
        return;
    }
    m_closeWanted = true;
    reject();
    event->ignore();
}

void sfSync::watchForEnd()
{
    if (!m_running && m_desk.mustEnd())
        QDialog::reject();
}

/// Enter presses the button that has the focus and nothing else: from the grid or a box it must
/// not start deleting files.
void sfSync::keyPressEvent(QKeyEvent *event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!enter) {
        QDialog::keyPressEvent(event);
        return;
    }
    if (auto *button = qobject_cast<QPushButton *>(focusWidget()))
        button->click();
    event->accept();
}

void sfSync::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange)
        m_model->setPalette(palette());
    QDialog::changeEvent(event);
}

void sfSync::addLines(const QStringList &lines)
{
    const StatusTail tail = statusTail(m_status->count(), lines.size());
    if (tail.clears)
        m_status->clear();
    m_status->addItems(lines.mid(tail.first));
    m_status->setCurrentRow(m_status->count() - 1);
}

void sfSync::showProgress(const TransferProgress &progress)
{
    m_progress->moved(progress);
    refreshStale();
}

void sfSync::showOutcome(const Outcome &outcome)
{
    m_progress->itemDone();
    if (outcome.kind == Outcome::Kind::GivenUp)
        showWarning(ConsolePrinter::outcomeText(outcome));
}

} // namespace venlo
