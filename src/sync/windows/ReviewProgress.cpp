#include "sync/windows/ReviewProgress.h"

#include <QGridLayout>
#include <QLabel>
#include <QProgressBar>

#include "db/DisplayFormat.h"
#include "shared/PlainToolTip.h"
#include "sync/SyncReview.h"

namespace venlo
{

namespace
{
constexpr qint64 interval = 100; // ms
constexpr int whole = 1000;
} // namespace

ReviewProgress::ReviewProgress(QWidget *parent)
    : QWidget(parent), m_meter([this] { return m_time.elapsed(); }), m_fileLabel(new QLabel(this)),
      m_paceLabel(new QLabel(this)), m_bar(new QProgressBar(this))
{
    m_time.start();
    m_fileLabel->setObjectName(QStringLiteral("lbFile"));
    m_fileLabel->setTextFormat(Qt::PlainText);
    m_fileLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_paceLabel->setObjectName(QStringLiteral("lbPace"));
    m_paceLabel->setAlignment(Qt::AlignRight);
    m_bar->setObjectName(QStringLiteral("pgSync"));
    m_bar->setAccessibleName(QStringLiteral("同期の進み具合"));
    m_bar->setRange(0, whole);
    m_bar->setValue(0);
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setColumnStretch(0, 1);
    grid->addWidget(m_fileLabel, 0, 0);
    grid->addWidget(m_paceLabel, 0, 1);
    grid->addWidget(m_bar, 1, 0, 1, 2);
}

void ReviewProgress::start(const SyncReview &review)
{
    m_steps.assign(static_cast<size_t>(review.count()), {});
    Step all;
    for (int i = 0; i < review.count(); ++i) {
        const SyncRow &row = review.row(i);
        const int own = row.owner >= 0 ? row.owner : i;
        if (!review.pending(own))
            continue;
        const Action planned = review.plannedAction(i);
        const bool moves = !row.folder && planned != Action::Remove;
        const Step one{moves ? row.master.size : 0, 1};
        for (Step *sum : {&m_steps[static_cast<size_t>(own)], &all}) {
            sum->bytes += one.bytes;
            sum->items += one.items;
        }
    }
    m_meter.start(all.bytes, all.items);
    show(true);
}

void ReviewProgress::beginRow(const SyncReview &review, int row)
{
    const Step &step = m_steps.at(static_cast<size_t>(row));
    m_meter.beginStep(step.bytes, step.items);
    m_file = {review.listText(row), 0, -1};
    show(false);
}

void ReviewProgress::endRow(const SyncReview &review, int row)
{
    if (review.row(row).state != RowState::Pending)
        m_meter.endStep();
    show(false);
}

void ReviewProgress::moved(const TransferProgress &progress)
{
    m_file = progress;
    m_meter.moved(progress);
    show(false);
}

void ReviewProgress::itemDone()
{
    m_meter.itemDone();
    show(false);
}

void ReviewProgress::stop()
{
    m_file = {};
    show(true);
    m_paceLabel->clear();
}

QString ReviewProgress::fileText() const
{
    if (m_file.total < 0)
        return m_file.name;
    return m_file.name + QStringLiteral("  ") + FormatSizeText(m_file.done) +
           QStringLiteral(" / ") + FormatSizeText(m_file.total);
}

QString ReviewProgress::paceText() const
{
    QString text;
    if (const qint64 rate = m_meter.rate(); rate > 0)
        text = FormatSizeText(rate) + QStringLiteral("/秒");
    if (const qint64 left = m_meter.secondsLeft(); left >= 0)
        text += QStringLiteral("  残り ") + TransferMeter::durationText(left);
    return text;
}

void ReviewProgress::show(bool atOnce)
{
    const qint64 now = m_time.elapsed();
    if (!atOnce && now - m_shownAt < interval)
        return;
    m_shownAt = now;
    m_bar->setValue(m_meter.permille());
    m_fileLabel->setText(fileText());
    setPlainToolTip(*m_fileLabel, m_file.name);
    m_paceLabel->setText(paceText());
}

} // namespace venlo
