// What the cells and headings of the review show.
#include "db/DisplayFormat.h"
#include "shared/PlainToolTip.h"
#include "sync/SyncReview.h"
#include "sync/windows/SyncReviewModel.h"

namespace venlo
{

namespace
{
QString sizeText(const SyncRow &row, const FileCopy &copy)
{
    return row.folder || copy.time.isEmpty() ? QString() : FormatSizeText(copy.size);
}

Qt::AlignmentFlag alignment(int column)
{
    switch (column) {
    case MasterSizeColumn:
    case OtherSizeColumn:
        return Qt::AlignRight;
    case MasterTimeColumn:
    case OtherTimeColumn:
        return Qt::AlignHCenter;
    default:
        return Qt::AlignLeft;
    }
}
} // namespace

QString SyncReviewModel::nameText(int reviewRow) const
{
    const SyncRow &row = m_review.row(reviewRow);
    QString text = m_review.listText(reviewRow);
    // Torn out of its folder's rows a name alone no longer says which file it is.
    if (m_sortColumn < 0 || row.folder || row.sPh == QLatin1String("."))
        return text;
    return text + QStringLiteral("  (") + row.sPh + QLatin1Char(')');
}

QString SyncReviewModel::cellText(int reviewRow, int column) const
{
    const SyncRow &row = m_review.row(reviewRow);
    switch (column) {
    case StateColumn:
        return m_review.stateText(reviewRow);
    case NameColumn:
        return nameText(reviewRow);
    case MasterTimeColumn:
        return row.master.time;
    case MasterSizeColumn:
        return sizeText(row, row.master);
    case OtherTimeColumn:
        return row.other.time;
    case OtherSizeColumn:
        return sizeText(row, row.other);
    case ActionColumn:
        return m_review.actionText(reviewRow);
    default:
        return {};
    }
}

QVariant SyncReviewModel::decoration(int reviewRow, int column) const
{
    const SyncRow &row = m_review.row(reviewRow);
    if (column == NameColumn)
        return row.folder ? m_look.folder : m_look.file;
    if (column != StateColumn)
        return {};
    if (row.state == RowState::Done)
        return m_look.done;
    if (row.state == RowState::GivenUp)
        return m_look.givenUp;
    if (reviewRow == m_running)
        return m_look.running;
    if (row.hold != Hold::Free && row.action != Action::None)
        return m_look.held;
    return {};
}

QColor SyncReviewModel::textColour(int reviewRow, int column) const
{
    if (column == StateColumn)
        return m_look.colour(m_review.row(reviewRow).state == RowState::GivenUp ? Action::Remove
                                                                                : Action::Add);
    const Action planned = m_review.plannedAction(reviewRow);
    if (planned == Action::None)
        return m_look.pale();
    const bool coloured = column == ActionColumn || column == NameColumn;
    return m_look.colour(coloured ? planned : Action::None);
}

QString SyncReviewModel::toolTip(int reviewRow) const
{
    const QString why = m_review.row(reviewRow).why;
    const QString paths = QStringLiteral("ﾏｲｺﾝﾋﾟｭｰﾀｰ: ") + m_review.localPath(reviewRow) +
                          QStringLiteral("\nFTP: ") + m_review.remotePath(reviewRow);
    return plainToolTip(why.isEmpty() ? paths : why + QLatin1Char('\n') + paths);
}

QString SyncReviewModel::accessibleText(int reviewRow, int column) const
{
    const SyncRow &row = m_review.row(reviewRow);
    if (column == TickColumn) {
        if (!row.box)
            return QStringLiteral("選択できません");
        return row.ticked ? QStringLiteral("選択") : QStringLiteral("選択なし");
    }
    if (column != StateColumn)
        return cellText(reviewRow, column);
    if (row.state == RowState::Done)
        return QStringLiteral("実行しました");
    if (row.state == RowState::GivenUp)
        return QStringLiteral("実行できませんでした");
    return reviewRow == m_running ? QStringLiteral("実行中") : row.why;
}

QVariant SyncReviewModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const int row = reviewRow(index.row());
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole:
        return column == TickColumn ? QVariant() : cellText(row, column);
    case Qt::CheckStateRole:
        if (column != TickColumn || !m_review.row(row).box)
            return {};
        return m_review.row(row).ticked ? Qt::Checked : Qt::Unchecked;
    case Qt::DecorationRole:
        return decoration(row, column);
    case Qt::ForegroundRole:
        return textColour(row, column);
    case Qt::TextAlignmentRole:
        return static_cast<int>(alignment(column) | Qt::AlignVCenter);
    case Qt::ToolTipRole:
        return toolTip(row);
    case Qt::AccessibleTextRole:
        return accessibleText(row, column);
    default:
        return {};
    }
}

QString SyncReviewModel::headingText(int column) const
{
    switch (column) {
    case TickColumn:
        return QStringLiteral("実行");
    case StateColumn:
        return QStringLiteral("状態");
    case NameColumn:
        return QStringLiteral("名前");
    case MasterTimeColumn:
    case OtherTimeColumn:
        return QStringLiteral("更新日時");
    case ActionColumn:
        return QStringLiteral("処理");
    default:
        return QStringLiteral("ｻｲｽﾞ");
    }
}

QString SyncReviewModel::groupText(int column) const
{
    const bool down = m_review.pair().down;
    if (column == MasterTimeColumn || column == MasterSizeColumn)
        return down ? QStringLiteral("同期元(FTP)") : QStringLiteral("同期元(ﾏｲｺﾝﾋﾟｭｰﾀｰ)");
    if (column == OtherTimeColumn || column == OtherSizeColumn)
        return down ? QStringLiteral("同期先(ﾏｲｺﾝﾋﾟｭｰﾀｰ)") : QStringLiteral("同期先(FTP)");
    return {};
}

QVariant SyncReviewModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= ReviewColumns)
        return {};
    const QString group = groupText(section);
    switch (role) {
    case Qt::DisplayRole:
        return headingText(section);
    case groupRole:
        return group;
    case Qt::AccessibleTextRole:
        return QString(group + QLatin1Char(' ') + headingText(section)).trimmed();
    default:
        return {};
    }
}

} // namespace venlo
