#include "mainwin/popup/sfMsg.h"

#include <utility>

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>

#include "mainwin/popup/EnterPresses.h"
#include "mainwin/popup/TransferGauge.h"
#include "shared/PlainToolTip.h"
#include "shared/StatusTail.h"

namespace venlo
{

namespace
{
constexpr int drawInterval = 100; // ms
constexpr int designedWidth = 560;
constexpr int designedHeight = 340;
constexpr int longestTitle = 400; // characters

/// A text that a label can wrap without growing.
QString wrappable(const QString &text)
{
    constexpr int half = longestTitle / 2;
    return breakable(text.size() > longestTitle ? text.left(half) + QChar(u'…') + text.right(half)
                                                : text);
}
} // namespace

struct sfMsg::Parts {
    explicit Parts(sfMsg &window)
        : title(new QLabel(&window)), gauge(new TransferGauge(&window)),
          cancel(new QPushButton(&window)), drawing(new QTimer(&window))
    {
    }
    QLabel *title;
    TransferGauge *gauge;
    QPushButton *cancel;
    QTimer *drawing;
    QStringList lasting;
};

sfMsg::sfMsg(WindowDesk &desk, QWidget *parent)
    : QDialog(parent), m_desk(desk), m_parts(std::make_unique<Parts>(*this)),
      m_list(new QListWidget(this))
{
    build();
    connect(m_parts->cancel, &QPushButton::clicked, this, &sfMsg::cancel);
    connect(m_parts->drawing, &QTimer::timeout, this, &sfMsg::draw);
    m_desk.addStatusTarget(*this, StatusRank::MessageWindow);
    m_desk.addOperationView(*this);
}

sfMsg::~sfMsg()
{
    m_desk.removeOperationView(*this);
    m_desk.removeStatusTarget(*this);
}

void sfMsg::build()
{
    setObjectName(QStringLiteral("sfMsg"));
    setWindowTitle(QStringLiteral("Venlo FTP"));
    setAccessibleName(QStringLiteral("実行中の処理"));
    setModal(false);
    // What is being typed elsewhere stays there.
    setAttribute(Qt::WA_ShowWithoutActivating);
    m_parts->title->setObjectName(QStringLiteral("lbTitle"));
    m_parts->title->setAccessibleName(QStringLiteral("処理の内容"));
    m_parts->title->setTextFormat(Qt::PlainText);
    m_parts->title->setWordWrap(true);
    m_list->setObjectName(QStringLiteral("ltMsg"));
    m_list->setAccessibleName(QStringLiteral("経過"));
    m_list->setUniformItemSizes(true);
    m_list->setTextElideMode(Qt::ElideMiddle);
    m_parts->cancel->setObjectName(QStringLiteral("cmCancel"));
    m_parts->cancel->setAccessibleName(QStringLiteral("実行中の処理をｷｬﾝｾﾙ"));
    enterPresses(*m_parts->cancel);
    m_parts->drawing->setInterval(drawInterval);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_parts->title);
    layout->addWidget(m_parts->gauge);
    layout->addWidget(m_list, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_parts->cancel);
    layout->addLayout(buttons);
    setTabOrder(m_list, m_parts->cancel);
    resize(designedWidth, designedHeight);
}

void sfMsg::cOn()
{
    m_list->clear();
    m_parts->title->clear();
    m_parts->gauge->start();
    m_parts->gauge->draw();
    m_parts->cancel->setText(QStringLiteral("ｷｬﾝｾﾙ"));
    m_parts->cancel->setEnabled(true);
    if (!m_shown) {
        const QScreen *onto = parentWidget() != nullptr ? parentWidget()->screen() : screen();
        move(onto->availableGeometry().center() - rect().center());
    }
    m_shown = true;
    m_parts->drawing->start();
    show();
}

void sfMsg::cOff()
{
    m_list->clear();
    m_shown = false;
    m_parts->drawing->stop();
    hide();
    const QStringList lasting = std::exchange(m_parts->lasting, {});
    for (const QString &line : lasting)
        m_desk.addStatus(line);
}

void sfMsg::addLastingLine(const QString &line)
{
    if (m_shown)
        m_parts->lasting += line;
    m_desk.addStatus(line);
}

void sfMsg::setTitleLine(const QString &text)
{
    m_parts->title->setText(wrappable(text));
    setPlainToolTip(*m_parts->title, text);
}

void sfMsg::setTotal(qint64 bytes)
{
    m_parts->gauge->setTotal(bytes);
}

void sfMsg::addLines(const QStringList &lines)
{
    const StatusTail tail = statusTail(m_list->count(), lines.size());
    if (tail.clears)
        m_list->clear();
    for (const QString &line : lines.mid(tail.first)) {
        auto *shown = new QListWidgetItem(line);
        shown->setToolTip(plainToolTip(line));
        m_list->addItem(shown);
    }
    m_list->setCurrentRow(m_list->count() - 1);
}

void sfMsg::showProgress(const TransferProgress &progress)
{
    if (m_shown)
        m_parts->gauge->moved(progress);
}

void sfMsg::showOutcome(const Outcome & /*outcome*/)
{
    if (m_shown)
        m_parts->gauge->fileDone();
}

void sfMsg::showWarning(const QString &line)
{
    if (m_shown)
        addLine(line);
}

void sfMsg::cancel()
{
    m_desk.requestCancel();
    draw();
}

void sfMsg::draw()
{
    m_parts->gauge->draw();
    if (m_parts->cancel->isEnabled() && m_desk.cancelled()) {
        m_parts->cancel->setText(QStringLiteral("中止しています････"));
        m_parts->cancel->setEnabled(false);
    }
}

void sfMsg::reject()
{
    m_shown = false;
    m_parts->drawing->stop();
    hide();
}

void sfMsg::closeEvent(QCloseEvent *event)
{
    reject();
    event->accept();
}

} // namespace venlo
