#include "mainwin/MainStatusBar.h"

#include <algorithm>

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QResizeEvent>

#include "shared/OperationGate.h"
#include "shared/PlainToolTip.h"

namespace venlo
{

namespace
{
constexpr int barSteps = 1000;
constexpr qint64 redrawInterval = 100; // ms
constexpr int textInterval = 33;       // ms
} // namespace

MainStatusBar::MainStatusBar(WindowDesk &desk, OperationGate &gate, QWidget *parent)
    : QStatusBar(parent), m_desk(desk), m_label(new QLabel(this)), m_bar(new QProgressBar(this)),
      m_cancel(new QPushButton(QStringLiteral("ｷｬﾝｾﾙ"), this))
{
    setObjectName(QStringLiteral("stBar"));
    m_label->setObjectName(QStringLiteral("stText"));
    m_label->setAccessibleName(QStringLiteral("ﾒｯｾｰｼﾞ"));
    m_label->setTextFormat(Qt::PlainText);
    m_label->setMinimumWidth(1);
    m_bar->setObjectName(QStringLiteral("stProgress"));
    m_bar->setAccessibleName(QStringLiteral("処理中のﾌｧｲﾙの進み具合"));
    m_bar->setRange(0, barSteps);
    m_bar->setMaximumWidth(fontMetrics().averageCharWidth() * 24);
    m_cancel->setObjectName(QStringLiteral("stCancel"));
    m_cancel->setAccessibleName(QStringLiteral("実行中の処理をｷｬﾝｾﾙ"));
    m_cancel->setToolTip(QStringLiteral("実行中の処理を中止します"));
    // A click leaves the focus where it is: the button goes with the operation.
    m_cancel->setFocusPolicy(Qt::TabFocus);
    addWidget(m_label, 1);
    addPermanentWidget(m_bar);
    addPermanentWidget(m_cancel);
    m_textLater.setSingleShot(true);
    connect(&m_textLater, &QTimer::timeout, this, &MainStatusBar::showElided);
    setRunning(false);
    connect(&gate, &OperationGate::busyChanged, this, &MainStatusBar::setRunning);
    connect(m_cancel, &QPushButton::clicked, this, [this] {
        m_cancel->setEnabled(false);
        m_desk.requestCancel();
    });
    m_desk.setMessageLineSink(this);
    m_desk.addOperationView(*this);
}

MainStatusBar::~MainStatusBar()
{
    m_desk.removeOperationView(*this);
    m_desk.setMessageLineSink(nullptr);
}

void MainStatusBar::setRunning(bool running)
{
    m_bar->setVisible(false);
    m_cancel->setVisible(running);
    m_cancel->setEnabled(running);
    showElided();
}

void MainStatusBar::showMessageLine(const QString &text)
{
    m_text = text;
    m_text.replace(QLatin1Char('\r'), QLatin1String(" ,"));
    if (m_sinceText.isValid() && m_sinceText.elapsed() < textInterval) {
        if (!m_textLater.isActive())
            m_textLater.start(textInterval);
        return;
    }
    showElided();
}

QString MainStatusBar::text() const
{
    return m_text;
}

void MainStatusBar::showElided()
{
    m_textLater.stop();
    m_sinceText.start();
    setPlainToolTip(*m_label, m_text);
    m_label->setText(m_label->fontMetrics().elidedText(
        m_text, Qt::ElideMiddle, std::max(m_label->width(), m_label->minimumWidth())));
}

void MainStatusBar::resizeEvent(QResizeEvent *event)
{
    QStatusBar::resizeEvent(event);
    showElided();
}

void MainStatusBar::showProgress(const TransferProgress &progress)
{
    const bool ends = progress.total > 0 && progress.done >= progress.total;
    if (m_sinceProgress.isValid() && m_sinceProgress.elapsed() < redrawInterval && !ends)
        return;
    m_sinceProgress.start();
    if (progress.total > 0)
        m_bar->setValue(static_cast<int>(
            std::clamp(double(progress.done) / double(progress.total), 0.0, 1.0) * barSteps));
    // Without a known size the bar only shows that something moves.
    m_bar->setMaximum(progress.total > 0 ? barSteps : 0);
    setPlainToolTip(*m_bar, progress.name);
    m_bar->setVisible(true);
}

} // namespace venlo
