#include "mainwin/popup/TransferGauge.h"

#include <algorithm>

#include <QGridLayout>
#include <QLabel>
#include <QProgressBar>

#include "db/DisplayFormat.h"
#include "shared/PlainToolTip.h"

namespace venlo
{

namespace
{
constexpr int whole = 1000;

/// As lists show sizes, but for nothing, which they show without a figure.
QString sizeText(qint64 bytes)
{
    return bytes == 0 ? QStringLiteral("0B") : FormatSizeText(bytes);
}

QString sizes(qint64 done, qint64 total)
{
    return total < 0 ? sizeText(done) : sizeText(done) + QStringLiteral(" / ") + sizeText(total);
}

QString pace(const TransferMeter &meter, bool knowsEnd)
{
    QString text;
    if (const qint64 rate = meter.rate(); rate > 0)
        text = FormatSizeText(rate) + QStringLiteral("/秒");
    if (const qint64 left = knowsEnd ? meter.secondsLeft() : -1; left >= 0)
        text += QStringLiteral("  残り ") + TransferMeter::durationText(left);
    return text;
}

/// A bar without a known end only shows that something moves.
void setBar(QProgressBar &bar, int permille, bool knowsEnd, bool runs)
{
    bar.setMaximum(knowsEnd || !runs ? whole : 0);
    bar.setValue(permille);
}
} // namespace

TransferGauge::TransferGauge(QWidget *parent)
    : QWidget(parent), m_file([this] { return m_time.elapsed(); }),
      m_whole([this] { return m_time.elapsed(); }), m_fileLine(), m_wholeLine()
{
    setObjectName(QStringLiteral("pgAll"));
    setAccessibleName(QStringLiteral("進み具合"));
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setColumnStretch(0, 1);
    m_fileLine = addLine(QStringLiteral("File"), QStringLiteral("ﾌｧｲﾙの進み具合"));
    m_wholeLine = addLine(QStringLiteral("Whole"), QStringLiteral("全体の進み具合"));
    start();
    draw();
}

TransferGauge::Line TransferGauge::addLine(const QString &name, const QString &accessibleName)
{
    const Line line{new QLabel(this), new QLabel(this), new QProgressBar(this)};
    line.what->setObjectName(QStringLiteral("lb") + name);
    line.what->setTextFormat(Qt::PlainText);
    line.what->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    line.pace->setObjectName(QStringLiteral("lb") + name + QStringLiteral("Pace"));
    line.pace->setTextFormat(Qt::PlainText);
    line.pace->setAlignment(Qt::AlignRight);
    line.bar->setObjectName(QStringLiteral("pg") + name);
    line.bar->setAccessibleName(accessibleName);
    line.bar->setRange(0, whole);
    auto *grid = static_cast<QGridLayout *>(layout());
    const int row = grid->rowCount();
    grid->addWidget(line.what, row, 0);
    grid->addWidget(line.pace, row, 1);
    grid->addWidget(line.bar, row + 1, 0, 1, 2);
    return line;
}

void TransferGauge::start()
{
    m_time.start();
    m_file.start(0, 0);
    m_progress = {};
    m_inFile = false;
    m_bytesDone = 0;
    m_filesDone = 0;
    setTotal(-1);
}

void TransferGauge::setTotal(qint64 bytes)
{
    m_total = bytes;
    m_whole.start(std::max(bytes, qint64(0)), 0);
}

void TransferGauge::beginFile(const TransferProgress &progress)
{
    const qint64 bytes = std::max(progress.total, qint64(0));
    m_file.start(bytes, 0);
    m_file.beginStep(bytes, 0);
    m_whole.beginStep(bytes, 0);
    m_inFile = true;
}

void TransferGauge::moved(const TransferProgress &progress)
{
    const bool again = progress.done < m_progress.done;
    if (!m_inFile || again || progress.name != m_progress.name)
        beginFile(progress);
    m_progress = progress;
    m_file.moved(progress);
    m_whole.moved(progress);
}

void TransferGauge::fileDone()
{
    ++m_filesDone;
    if (!m_inFile)
        return;
    m_bytesDone += m_progress.done;
    m_whole.endStep();
    m_progress = {};
    m_inFile = false;
}

void TransferGauge::draw()
{
    drawFile();
    drawWhole();
}

void TransferGauge::drawFile()
{
    const bool knowsEnd = m_progress.total >= 0;
    const QString bytes =
        m_inFile ? QStringLiteral("  ") + sizes(m_progress.done, m_progress.total) : QString();
    m_fileLine.pace->setText(m_inFile ? pace(m_file, knowsEnd) : QString());
    // A long name gives way to the figures, not they to it.
    const QFontMetrics metrics = m_fileLine.what->fontMetrics();
    const int room = width() - m_fileLine.pace->sizeHint().width() -
                     metrics.horizontalAdvance(bytes) - metrics.averageCharWidth() * 2;
    m_fileLine.what->setText(metrics.elidedText(m_progress.name, Qt::ElideMiddle, room) + bytes);
    setPlainToolTip(*m_fileLine.what, m_progress.name);
    setBar(*m_fileLine.bar, m_inFile ? m_file.permille() : 0, knowsEnd, m_inFile);
}

void TransferGauge::drawWhole()
{
    const qint64 done = m_bytesDone + m_progress.done;
    const bool knowsEnd = m_total >= 0;
    m_wholeLine.what->setText(QStringLiteral("全体  %1件  ").arg(m_filesDone) +
                              sizes(done, m_total));
    m_wholeLine.pace->setText(pace(m_whole, knowsEnd));
    setBar(*m_wholeLine.bar, m_whole.permille(), knowsEnd, m_inFile);
}

} // namespace venlo
