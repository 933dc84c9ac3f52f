#include "mainwin/popup/sfFlst.h"

#include <algorithm>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QScreen>
#include <QTableView>

#include "db/Database.h"
#include "db/TextFold.h"
#include "ftp/Session.h"
#include "mainwin/popup/FileListModel.h"
#include "mainwin/popup/sfFlstParts.h"
#include "shared/RemotePath.h"
#include "shared/WindowDesk.h"

namespace venlo
{

namespace
{
/// The statement of the list. Quotes of the path are doubled; "?" and "*" in it match more than
/// themselves, so that the rows are looked at once more.
QString statement(const QString &table, const QString &path)
{
    QString quoted = path;
    quoted.replace(QLatin1Char('\''), QLatin1String("''"));
    const QStringList parts = (QStringLiteral("Select sDir, sName, nSize, dDate From ?") +
                               QStringLiteral(" Where bFd=0 And sDir Like '?*'") +
                               QStringLiteral(" Order By sDir, sName"))
                                  .split(QLatin1Char('?'));
    return parts.at(0) + table + parts.at(1) + quoted + parts.at(2);
}

/// A name as the filter sees it.
class Filter
{
public:
    explicit Filter(const QString &text)
        : m_all(text.isEmpty()), m_pattern(text.toUtf8().toStdString())
    {
    }
    [[nodiscard]] bool matches(const QString &name) const
    {
        if (m_all)
            return true;
        const QByteArray utf8 = name.toUtf8();
        return m_pattern.matches({utf8.constData(), static_cast<size_t>(utf8.size())});
    }

private:
    bool m_all;
    LikePattern m_pattern;
};

/// The files of a query at or below a path; all counts them before the filter.
std::vector<FileListModel::File> filesOf(const Rows &rows, const QString &path,
                                         const Filter &filter, int &all)
{
    std::vector<FileListModel::File> files;
    QString directory;
    bool below = false;
    all = 0;
    for (int row = 0; row < rows.count(); ++row) {
        // Rows of one directory follow each other and share its text.
        if (const QString next = rows.at(0, row).toString(); row == 0 || next != directory) {
            directory = next;
            below = isBelowOrSameFolded(directory, path);
        }
        if (!below)
            continue;
        ++all;
        const QString name = rows.at(1, row).toString();
        if (filter.matches(name))
            files.push_back(
                {directory, name, rows.at(2, row).toLongLong(), rows.at(3, row).toDouble()});
    }
    return files;
}

/// The path from its first "/" on; one without is the root.
QString cut(const QString &path)
{
    const auto first = path.indexOf(QLatin1Char('/'));
    return first < 0 ? QStringLiteral("/") : normalisedRemoteDir(path.mid(first));
}
} // namespace

sfFlst::sfFlst(Database &database, Session &session, WindowDesk &desk, QWidget *parent)
    : QDialog(parent), m_parts(std::make_unique<Parts>(database, session, desk, *this))
{
    build();
    wire();
}

sfFlst::~sfFlst() = default;

void sfFlst::wire()
{
    connect(m_parts->filter, &QLineEdit::returnPressed, this, [this] { fill({}); });
    auto *copy = new QAction(QStringLiteral("ｺﾋﾟｰ(&C)"), m_parts->grid);
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetShortcut);
    connect(copy, &QAction::triggered, this, &sfFlst::copyRows);
    m_parts->grid->addAction(copy);
    m_parts->grid->setContextMenuPolicy(Qt::ActionsContextMenu);
    m_parts->filter->installEventFilter(this);
    connect(m_parts->grid->horizontalHeader(), &QHeaderView::sortIndicatorChanged, m_parts->model,
            [this](int column, Qt::SortOrder order) { m_parts->model->sort(column, order); });
}

void sfFlst::centre()
{
    const QScreen *onto = parentWidget() != nullptr ? parentWidget()->screen() : screen();
    move(onto->availableGeometry().center() - rect().center());
}

void sfFlst::Act(const QString &remotePath)
{
    centre();
    fill(remotePath);
    m_parts->filter->setFocus();
    exec();
}

void sfFlst::fill(const QString &remotePath)
{
    const QString asked = remotePath.isEmpty() ? m_parts->path : remotePath;
    if (asked.isEmpty())
        return;
    m_parts->path = cut(asked);
    showPath();
    const QString table = m_parts->session.connected() ? m_parts->session.currentSite() : QString();
    if (table.isEmpty()) {
        m_parts->model->setFiles({});
        m_parts->count->setText(QStringLiteral("接続していません"));
        return;
    }
    QApplication::setOverrideCursor(Qt::WaitCursor);
    int all = 0;
    QString refused;
    std::vector<FileListModel::File> files;
    try {
        Rows rows;
        int found = 0;
        m_parts->database.SelectRows(statement(table, m_parts->path), rows, found);
        files = filesOf(rows, m_parts->path, Filter(m_parts->filter->text()), all);
    } catch (const DbError &error) {
        refused = error.words();
    }
    const int shown = static_cast<int>(files.size());
    m_parts->model->setFiles(std::move(files));
    // Keys go on from the first row.
    m_parts->grid->setCurrentIndex(m_parts->model->index(0, FileListModel::Directory));
    m_parts->grid->scrollToTop();
    QApplication::restoreOverrideCursor();
    tellCount(shown, all);
    if (refused.isEmpty())
        return;
    m_parts->count->setText(QStringLiteral("一覧を読めません"));
    m_parts->desk.message(refused);
}

void sfFlst::tellCount(int shown, int all)
{
    const QLocale japanese(QLocale::Japanese);
    QString text = japanese.toString(shown) + QStringLiteral(" 件");
    if (shown != all)
        text += QStringLiteral(" (全 ") + japanese.toString(all) + QStringLiteral(" 件中)");
    m_parts->count->setText(text);
}

/// A key that would write into the empty box writes the pattern instead.
bool sfFlst::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_parts->filter || event->type() != QEvent::KeyPress ||
        !m_parts->filter->text().isEmpty())
        return QDialog::eventFilter(watched, event);
    const auto *key = static_cast<QKeyEvent *>(event);
    const bool writes = !key->text().isEmpty() && key->text().at(0).isPrint() &&
                        (key->modifiers() & (Qt::ControlModifier | Qt::AltModifier)) == 0;
    if (!writes)
        return QDialog::eventFilter(watched, event);
    m_parts->filter->setText(QStringLiteral("*.*"));
    return true;
}

void sfFlst::copyRows()
{
    QModelIndexList selected = m_parts->grid->selectionModel()->selectedRows();
    std::sort(selected.begin(), selected.end());
    QString text;
    for (const QModelIndex &index : std::as_const(selected))
        text += m_parts->model->line(index.row()) + QStringLiteral("\r\n");
    if (!text.isEmpty())
        QApplication::clipboard()->setText(text);
}

} // namespace venlo
