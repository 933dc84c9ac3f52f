#include "localpane/FileOperationWindow.h"

#include <algorithm>

#include <QDialogButtonBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace venlo
{

namespace
{
constexpr int momentMs = 500;
constexpr int barSteps = 1000;
constexpr int widthInCharacters = 60;

QString titleOf(ShellVerb verb)
{
    switch (verb) {
    case ShellVerb::Move:
        return QStringLiteral("移動しています");
    case ShellVerb::Copy:
        return QStringLiteral("複写しています");
    case ShellVerb::Delete:
        return QStringLiteral("削除しています");
    case ShellVerb::None:
        break;
    }
    return {};
}
} // namespace

FileOperationWindow::FileOperationWindow(QWidget *parent)
    : QDialog(parent), m_name(new QLabel(this)), m_bar(new QProgressBar(this))
{
    setObjectName(QStringLiteral("sfOpr"));
    setAccessibleName(QStringLiteral("ﾌｧｲﾙ操作の進み具合"));
    m_name->setObjectName(QStringLiteral("lbName"));
    m_name->setAccessibleName(QStringLiteral("処理中のﾌｧｲﾙ"));
    m_name->setTextFormat(Qt::PlainText);
    m_name->setFixedWidth(widthInCharacters * fontMetrics().averageCharWidth());
    m_bar->setObjectName(QStringLiteral("pbDone"));
    m_bar->setAccessibleName(QStringLiteral("進み具合"));
    m_bar->setTextVisible(false);
    auto *buttons = new QDialogButtonBox(this);
    QPushButton *cancel = buttons->addButton(QStringLiteral("ｷｬﾝｾﾙ"), QDialogButtonBox::RejectRole);
    cancel->setObjectName(QStringLiteral("cmCancel"));
    connect(buttons, &QDialogButtonBox::rejected, this, &FileOperationWindow::reject);
    auto *layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(m_name);
    layout->addWidget(m_bar);
    layout->addWidget(buttons);
    m_since.start();
}

void FileOperationWindow::showProgress(const ShellFileProgress &progress)
{
    if (m_cancelled)
        return;
    setWindowTitle(titleOf(progress.verb));
    m_name->setText(
        m_name->fontMetrics().elidedText(progress.name, Qt::ElideMiddle, m_name->width()));
    m_bar->setRange(0, progress.total > 0 ? barSteps : 0); // without a total it runs to and fro
    if (progress.total > 0)
        m_bar->setValue(
            static_cast<int>(std::min(progress.done, progress.total) * barSteps / progress.total));
    if (!isVisible() && m_since.elapsed() >= momentMs)
        show();
}

void FileOperationWindow::reject()
{
    m_cancelled = true;
    hide();
}

} // namespace venlo
