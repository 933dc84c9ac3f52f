#include "ftppane/SiteHeader.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QTimer>

#include "shared/PlainToolTip.h"

namespace venlo
{

namespace
{
constexpr int shortOperation = 200; // ms

QString nothingSelected()
{
    return QStringLiteral("接続先を指定して下さい");
}
} // namespace

SiteHeader::SiteHeader(QWidget *parent)
    : QWidget(parent), m_frame(new QFrame), m_sites(new QComboBox), m_caption(new QLabel),
      m_lock(new QLabel), m_open(new QPushButton(QStringLiteral("接続"))),
      m_else(new QPushButton(QStringLiteral("ﾒﾆｭｰ"))), m_busyTimer(new QTimer(this))
{
    m_sites->setObjectName(QStringLiteral("cbSvr"));
    m_sites->setAccessibleName(QStringLiteral("接続先"));
    m_sites->setPlaceholderText(QStringLiteral("接続先"));
    m_sites->setMinimumContentsLength(12);
    m_sites->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_sites->installEventFilter(this);
    m_lock->setObjectName(QStringLiteral("lbLock"));
    m_lock->hide();
    m_caption->setObjectName(QStringLiteral("Label1"));
    m_caption->setAccessibleName(QStringLiteral("接続の状態"));
    m_caption->setTextFormat(Qt::PlainText);
    m_caption->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_open->setObjectName(QStringLiteral("imOpn"));
    m_open->setAccessibleName(QStringLiteral("接続"));
    m_open->setToolTip(QStringLiteral("選択した接続先に接続します"));
    m_open->setIcon(style()->standardIcon(QStyle::SP_DriveNetIcon));
    m_else->setObjectName(QStringLiteral("imElse"));
    m_else->setAccessibleName(QStringLiteral("接続先と同期のﾒﾆｭｰ"));
    m_else->setToolTip(QStringLiteral("接続先の登録･同期ﾊﾟﾀｰﾝ･切断"));
    m_else->setMinimumHeight(m_open->sizeHint().height());
    layOut();
    m_busyTimer->setSingleShot(true);
    m_busyTimer->setInterval(shortOperation);
    connect(m_busyTimer, &QTimer::timeout, this, [this] { showBusy(true); });
    connect(m_sites, &QComboBox::activated, this, &SiteHeader::siteChosen);
    connect(m_open, &QPushButton::clicked, this, &SiteHeader::connectWanted);
    connect(m_else, &QPushButton::clicked, this, &SiteHeader::elseWanted);
    setCaption(nothingSelected());
    setConnectable(false);
}

void SiteHeader::layOut()
{
    m_frame->setObjectName(QStringLiteral("Frame1"));
    m_frame->setAccessibleName(QStringLiteral("接続先と状態"));
    auto *inside = new QVBoxLayout(m_frame);
    inside->setContentsMargins(0, 0, 0, 0);
    inside->setSpacing(2);
    inside->addWidget(m_sites);
    auto *state = new QHBoxLayout;
    state->setSpacing(4);
    state->addWidget(m_lock);
    state->addWidget(m_caption, 1);
    inside->addLayout(state);
    m_caption->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_open);
    buttons->addWidget(m_else);
    auto *column = new QVBoxLayout;
    column->addLayout(buttons);
    column->addStretch();
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addWidget(m_frame, 1);
    layout->addLayout(column);
    setTabOrder(m_sites, m_open);
    setTabOrder(m_open, m_else);
}

void SiteHeader::setSites(const QStringList &names)
{
    const QString selected = site();
    m_sites->clear();
    m_sites->addItems(names);
    setIndex(selected.isEmpty() ? -1 : indexOf(selected));
}

int SiteHeader::index() const
{
    return m_sites->currentIndex();
}

void SiteHeader::setIndex(int index)
{
    m_sites->setCurrentIndex(index >= 0 && index < m_sites->count() ? index : -1);
}

int SiteHeader::indexOf(const QString &site) const
{
    return m_sites->findText(site, Qt::MatchFixedString);
}

QString SiteHeader::site() const
{
    return m_sites->currentIndex() < 0 ? QString() : m_sites->currentText();
}

void SiteHeader::setCaption(const QString &text)
{
    m_caption->setText(text);
    setPlainToolTip(*m_caption, text);
}

void SiteHeader::setSecurity(const QString &protocol)
{
    m_lock->setVisible(!protocol.isEmpty());
    m_lock->setAccessibleName(protocol.isEmpty() ? QString()
                                                 : QStringLiteral("暗号化された接続 ") + protocol);
    m_lock->setToolTip(m_lock->accessibleName());
    if (!protocol.isEmpty())
        drawLock(protocol);
}

/// No font can be relied on to have a lock.
void SiteHeader::drawLock(const QString &protocol)
{
    const int height = m_lock->fontMetrics().height();
    const int width = height + m_lock->fontMetrics().horizontalAdvance(protocol);
    QPixmap picture(QSize(width, height) * devicePixelRatioF());
    picture.setDevicePixelRatio(devicePixelRatioF());
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal unit = height / 12.0;
    painter.setPen(QPen(palette().color(QPalette::WindowText), unit * 1.4));
    painter.drawArc(QRectF(3 * unit, 1.5 * unit, 5 * unit, 7 * unit), 0, 180 * 16);
    painter.setBrush(palette().color(QPalette::WindowText));
    painter.drawRoundedRect(QRectF(1.8 * unit, 5.5 * unit, 7.4 * unit, 5 * unit), unit, unit);
    painter.drawText(QRect(height, 0, width - height, height), Qt::AlignVCenter, protocol);
    painter.end();
    m_lock->setPixmap(picture);
}

void SiteHeader::setConnectable(bool connectable)
{
    m_connectable = connectable;
    m_open->setEnabled(connectable && !m_busy);
}

void SiteHeader::setBusy(bool busy)
{
    if (busy) {
        m_busyTimer->start();
        return;
    }
    m_busyTimer->stop();
    if (m_busy)
        showBusy(false);
}

/// A disabled widget gives its focus away: it gets it back.
void SiteHeader::showBusy(bool busy)
{
    if (busy)
        m_focusBefore = hasFocusInside() ? focusWidget() : nullptr;
    m_busy = busy;
    m_sites->setEnabled(!busy);
    m_else->setEnabled(!busy);
    m_open->setEnabled(m_connectable && !busy);
    if (busy || m_focusBefore == nullptr)
        return;
    const QWidget *now = window()->focusWidget();
    if (now == nullptr || now == m_focusBefore || !now->hasFocus())
        m_focusBefore->setFocus();
    m_focusBefore = nullptr;
}

QPoint SiteHeader::menuPlace() const
{
    return m_else->mapToGlobal(QPoint(0, m_else->height()));
}

bool SiteHeader::hasFocusInside() const
{
    return isAncestorOf(window()->focusWidget());
}

QList<QWidget *> SiteHeader::tabChain() const
{
    return {m_sites, m_open, m_else};
}

/// A wheel that passes over the sites must not pick another one, which would disconnect.
bool SiteHeader::eventFilter(QObject *object, QEvent *event)
{
    if (object == m_sites && event->type() == QEvent::Wheel) {
        event->ignore();
        return true;
    }
    return QWidget::eventFilter(object, event);
}

} // namespace venlo
