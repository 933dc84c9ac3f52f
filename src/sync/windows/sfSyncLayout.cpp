// How the review window is built and what its texts say.
#include <algorithm>

#include <QHBoxLayout>
#include <QHash>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include "db/DisplayFormat.h"
#include "sync/SyncReview.h"
#include "sync/windows/ReviewBoxes.h"
#include "sync/windows/ReviewProgress.h"
#include "sync/windows/ReviewView.h"
#include "sync/windows/SyncReviewModel.h"
#include "sync/windows/sfSync.h"

namespace venlo
{

namespace
{
constexpr int usualWidth = 1000;
constexpr int usualHeight = 640;
constexpr int listLines = 3;
constexpr int mostMessages = 1000;
constexpr int mostPerReason = 100;

QString pairText(const SyncPair &pair)
{
    return pair.down ? pair.sFph + QStringLiteral(" ⇒ ") + pair.sLph +
                           QStringLiteral("  (FTP側に合わせる)")
                     : pair.sLph + QStringLiteral(" ⇒ ") + pair.sFph +
                           QStringLiteral("  (ﾏｲｺﾝﾋﾟｭｰﾀｰ側に合わせる)");
}

template <typename List>
void prepareList(List &list, const QString &name, const QString &accessibleName)
{
    list.setObjectName(name);
    list.setAccessibleName(accessibleName);
    list.setFixedHeight(list.fontMetrics().lineSpacing() * listLines + 14);
}
} // namespace

void sfSync::build()
{
    setObjectName(QStringLiteral("sfSync"));
    setWindowTitle(QStringLiteral("同期 - Venlo FTP"));
    setAccessibleName(QStringLiteral("同期"));
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    setSizeGripEnabled(true);
    m_view->setObjectName(QStringLiteral("vCmp"));
    m_view->setAccessibleName(QStringLiteral("同期の内容"));
    m_view->showReview(*m_model);
    m_counts->setObjectName(QStringLiteral("lbCount"));
    m_counts->setAccessibleName(QStringLiteral("件数"));

    auto *layout = new QVBoxLayout(this);
    auto *pair = new QLabel(pairText(m_review.pair()), this);
    pair->setObjectName(QStringLiteral("lbPair"));
    pair->setTextFormat(Qt::PlainText);
    pair->setTextInteractionFlags(Qt::TextSelectableByMouse);
    pair->setWordWrap(true);
    layout->addWidget(pair);
    layout->addWidget(m_boxes);
    layout->addWidget(m_view, 1);
    layout->addWidget(m_counts);
    addLists(*layout);
    layout->addWidget(m_progress);
    addButtons(*layout);
    m_view->setFocus();
}

void sfSync::addLists(QBoxLayout &layout)
{
    prepareList(*m_status, QStringLiteral("ltMsg"), QStringLiteral("経過"));
    prepareList(*m_messages, QStringLiteral("txMsg"), QStringLiteral("対象外の理由"));
    m_messages->setReadOnly(true);
    m_messages->setTabChangesFocus(true);
    m_messages->setMaximumBlockCount(mostMessages);
    m_messages->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_messages->setPlaceholderText(QStringLiteral("同期できない項目があればここに表示されます"));
    auto *row = new QHBoxLayout;
    row->addWidget(m_status, 2);
    row->addWidget(m_messages, 3);
    layout.addLayout(row);
}

void sfSync::addButtons(QBoxLayout &layout)
{
    m_execute->setObjectName(QStringLiteral("cmRet"));
    m_execute->setText(QStringLiteral("実行(&E)"));
    m_execute->setAccessibleName(QStringLiteral("実行"));
    m_cancel->setObjectName(QStringLiteral("cmCancel"));
    m_cancel->setText(QStringLiteral("ｷｬﾝｾﾙ"));
    m_cancel->setAccessibleName(m_cancel->text());
    auto *row = new QHBoxLayout;
    row->addStretch();
    for (QPushButton *button : {m_execute, m_cancel}) {
        button->setAutoDefault(false);
        row->addWidget(button);
    }
    layout.addLayout(row);
}

void sfSync::place()
{
    const QScreen *onto = parentWidget() != nullptr ? parentWidget()->screen() : screen();
    const QRect room = onto->availableGeometry();
    resize(std::min(usualWidth, room.width()), std::min(usualHeight, room.height()));
    move(room.center() - rect().center());
}

void sfSync::listHeldBack()
{
    for (const QString &line : m_desk.takeWarnings())
        showWarning(line);
    QHash<QString, int> held;
    for (int i = 0; i < m_review.count(); ++i) {
        const SyncRow &row = m_review.row(i);
        if (row.hold != Hold::Free && row.action != Action::None &&
            ++held[row.why] <= mostPerReason)
            showWarning(m_review.listText(i) + QStringLiteral(": ") + row.why);
    }
    for (auto reason = held.cbegin(); reason != held.cend(); ++reason) {
        if (reason.value() > mostPerReason)
            showWarning(QStringLiteral("ほか %1 件: ").arg(reason.value() - mostPerReason) +
                        reason.key());
    }
    m_messages->moveCursor(QTextCursor::Start);
}

void sfSync::showWarning(const QString &line)
{
    m_messages->appendPlainText(line);
}

void sfSync::showCounts()
{
    const SyncReview::Counts counts = m_review.counts();
    const auto part = [](const QString &word, int count) {
        return word + QStringLiteral(" %1 件   ").arg(count);
    };
    QString text = part(QStringLiteral("追加"), counts.add) +
                   part(QStringLiteral("削除"), counts.remove) +
                   part(QStringLiteral("上書"), counts.overwrite) + QStringLiteral("転送 ") +
                   (counts.bytes > 0 ? FormatSizeText(counts.bytes) : QStringLiteral("0B"));
    if (counts.held > 0)
        text += QStringLiteral("   ") + part(QStringLiteral("保留"), counts.held).trimmed();
    if (m_running || counts.done + counts.givenUp > 0)
        text += QStringLiteral("   |   ") + part(QStringLiteral("済"), counts.done) +
                part(QStringLiteral("不可"), counts.givenUp) +
                part(QStringLiteral("残り"), counts.pending).trimmed();
    m_counts->setText(text);
    m_execute->setEnabled(!m_running);
}

} // namespace venlo
