#include "mainwin/popup/sfWait.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFontMetrics>
#include <QLabel>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>

namespace venlo
{

namespace
{
constexpr int narrowest = 32; // characters of average width
constexpr int widest = 60;
} // namespace

sfWait::sfWait()
    : QDialog(nullptr, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint),
      m_panel(new QLabel(this))
{
    setObjectName(QStringLiteral("sfWait"));
    setWindowTitle(QStringLiteral("Venlo FTP"));
    setAccessibleName(QStringLiteral("お待ちください"));
    m_panel->setObjectName(QStringLiteral("SSPanel1"));
    m_panel->setAccessibleName(QStringLiteral("処理の内容"));
    m_panel->setTextFormat(Qt::PlainText);
    m_panel->setFrameStyle(QFrame::Panel | QFrame::Raised);
    m_panel->setAlignment(Qt::AlignCenter);
    m_panel->setWordWrap(true);
    const int character = fontMetrics().averageCharWidth();
    const int line = fontMetrics().height();
    m_panel->setMargin(line);
    m_panel->setMinimumWidth(narrowest * character);
    m_panel->setMaximumWidth(widest * character);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(line / 2, line / 2, line / 2, line / 2);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(m_panel);
}

sfWait::~sfWait()
{
    setCursorOverridden(false);
}

void sfWait::cMsg(const QString &text)
{
    m_panel->setText(text.isEmpty() ? QStringLiteral("お待ちください････") : text);
    const int room = fontMetrics().horizontalAdvance(m_panel->text()) + 2 * (m_panel->margin() + 4);
    m_panel->setMinimumWidth(
        qBound(narrowest * fontMetrics().averageCharWidth(), room, m_panel->maximumWidth()));
    layout()->activate();
    centre();
    show();
    setCursorOverridden(true);
    repaint();
}

void sfWait::cEnd()
{
    setCursorOverridden(false);
    hide();
}

void sfWait::standBefore(const QWidget *owner)
{
    (void)winId(); // makes the window that can have an owner
    windowHandle()->setTransientParent(owner != nullptr ? owner->window()->windowHandle()
                                                        : nullptr);
}

void sfWait::reject()
{
    Q_EMIT cancelWanted();
}

void sfWait::closeEvent(QCloseEvent *event)
{
    event->ignore();
    Q_EMIT cancelWanted();
}

void sfWait::centre()
{
    const QWindow *owner = windowHandle() != nullptr ? windowHandle()->transientParent() : nullptr;
    const QScreen *onto = owner != nullptr ? owner->screen() : screen();
    adjustSize();
    move(onto->availableGeometry().center() - rect().center());
}

void sfWait::setCursorOverridden(bool overridden)
{
    if (overridden == m_cursorOverridden)
        return;
    m_cursorOverridden = overridden;
    if (overridden)
        QApplication::setOverrideCursor(Qt::WaitCursor);
    else
        QApplication::restoreOverrideCursor();
}

} // namespace venlo
