#include "localpane/RootBar.h"

#include <QComboBox>
#include <QDir>
#include <QDropEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QSignalBlocker>
#include <QStyle>
#include <QToolButton>
#include <QUrl>

#include "localpane/FolderPaths.h"
#include "views/RemoteEntries.h"

namespace venlo
{

namespace
{
constexpr int filterCharacters = 12;

/// The first local path that a drag carries. Entries of a site have no path until they are fetched.
QString droppedPath(const QMimeData &data)
{
    if (hasRemoteEntries(data) || !data.hasUrls() || data.urls().isEmpty())
        return {};
    return QDir::toNativeSeparators(data.urls().constFirst().toLocalFile());
}

QHBoxLayout *rowOf(QWidget *panel)
{
    auto *row = new QHBoxLayout(panel);
    row->setContentsMargins(0, 0, 0, 0);
    return row;
}
} // namespace

RootBar::RootBar(QWidget *parent)
    : QWidget(parent), m_root(new QComboBox), m_find(new QToolButton), m_filter(new QLineEdit)
{
    auto *row = rowOf(this);
    auto *roots = new QWidget;
    roots->setObjectName(QStringLiteral("pRoot"));
    rowOf(roots)->addWidget(m_root);
    auto *others = new QWidget;
    others->setObjectName(QStringLiteral("pFnd"));
    auto *label = new QLabel(QStringLiteral("ﾌｨﾙﾀ"));
    label->setObjectName(QStringLiteral("lbFilter"));
    label->setBuddy(m_filter);
    auto *inner = rowOf(others);
    inner->addWidget(m_find);
    inner->addWidget(label);
    inner->addWidget(m_filter);
    row->addWidget(roots, 1);
    row->addWidget(others);
    buildRoots();
    buildFind();
    buildFilter();
}

void RootBar::buildRoots()
{
    m_root->setObjectName(QStringLiteral("cbRoot"));
    m_root->setAccessibleName(QStringLiteral("表示するﾌｫﾙﾀﾞ"));
    m_root->setToolTip(
        QStringLiteral("ﾂﾘｰの一番上に表示するﾌｫﾙﾀﾞ\nﾊﾟｽを入力して Enter で表示します"));
    m_root->setEditable(true);
    m_root->setInsertPolicy(QComboBox::NoInsert);
    m_root->setCompleter(nullptr);
    m_root->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_root->setMinimumContentsLength(filterCharacters);
    m_root->setAcceptDrops(true);
    // Its own way with drops would paste the path as text.
    m_root->lineEdit()->setAcceptDrops(false);
    m_root->installEventFilter(this);
    m_root->lineEdit()->installEventFilter(this);
    connect(m_root, &QComboBox::textActivated, this, &RootBar::rootWanted);
}

void RootBar::buildFind()
{
    m_find->setObjectName(QStringLiteral("imFnd"));
    m_find->setAccessibleName(QStringLiteral("ﾌｫﾙﾀﾞの指定"));
    m_find->setToolTip(QStringLiteral("ﾌｫﾙﾀﾞの指定"));
    m_find->setIcon(style()->standardIcon(QStyle::SP_DirOpenIcon));
    m_find->setFocusPolicy(Qt::StrongFocus);
    m_find->setAcceptDrops(true);
    m_find->installEventFilter(this);
    connect(m_find, &QToolButton::clicked, this, &RootBar::findWanted);
}

void RootBar::buildFilter()
{
    m_filter->setObjectName(QStringLiteral("txFilter"));
    m_filter->setAccessibleName(QStringLiteral("拡張子のﾌｨﾙﾀ"));
    m_filter->setToolTip(
        QStringLiteral("表示するﾌｧｲﾙの拡張子 (例 htm.html.css)\n*.* か空白ですべて表示します"));
    m_lastFilter = QStringLiteral("*.*");
    m_filter->setText(m_lastFilter);
    m_filter->setFixedWidth(filterCharacters * m_filter->fontMetrics().averageCharWidth() +
                            m_filter->fontMetrics().height());
    connect(m_filter, &QLineEdit::editingFinished, this, &RootBar::filterLeft);
}

void RootBar::enterFilter(const QString &filter)
{
    m_filter->setText(filter);
    filterLeft();
}

void RootBar::filterLeft()
{
    const QString filter = m_filter->text().trimmed();
    if (filter == m_lastFilter)
        return;
    m_lastFilter = filter;
    Q_EMIT filterEntered(filter);
}

void RootBar::enter(const QString &root)
{
    m_history.enter(root);
    refill(root);
}

void RootBar::setHistory(const QString &history, const QString &shownRoot)
{
    m_history.setText(history);
    if (!shownRoot.isEmpty())
        m_history.enter(shownRoot);
    refill(shownRoot);
}

void RootBar::refill(const QString &shown)
{
    const QSignalBlocker quiet(m_root);
    m_root->clear();
    m_root->addItems(m_history.roots());
    m_root->setCurrentIndex(m_root->count() > 0 ? 0 : -1);
    showRoot(shown);
}

void RootBar::showRoot(const QString &root)
{
    const QSignalBlocker quiet(m_root);
    m_shown = root;
    const int known = m_root->findText(root, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (known >= 0)
        m_root->setCurrentIndex(known); // also after an entry that is gone was chosen
    m_root->setEditText(root);
    m_root->lineEdit()->setCursorPosition(0);
}

bool RootBar::eventFilter(QObject *object, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
        // The box has the focus, and hands its keys on to the text past this filter.
        return (object == m_root || object == m_root->lineEdit()) &&
               keyInRoots(*static_cast<QKeyEvent *>(event));
    case QEvent::Wheel:
        // A wheel that passes by must not read another folder.
        event->ignore();
        return object == m_root || object == m_root->lineEdit();
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
        return dragInto(*static_cast<QDropEvent *>(event));
    default:
        return QWidget::eventFilter(object, event);
    }
}

/// What Enter does must not depend on whether the box knows the text.
bool RootBar::keyInRoots(const QKeyEvent &event)
{
    if (event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter) {
        Q_EMIT rootWanted(m_root->currentText().trimmed());
        return true;
    }
    if (event.key() == Qt::Key_Escape && m_root->currentText() != m_shown) {
        showRoot(m_shown);
        return true;
    }
    return false;
}

bool RootBar::dragInto(QDropEvent &event)
{
    const QString path = event.mimeData() != nullptr ? droppedPath(*event.mimeData()) : QString();
    if (path.isEmpty()) {
        event.ignore();
        return true;
    }
    // Showing a folder takes nothing from where it came.
    event.setDropAction(Qt::CopyAction);
    event.accept();
    if (event.type() == QEvent::Drop)
        Q_EMIT dropped(path);
    return true;
}

} // namespace venlo
