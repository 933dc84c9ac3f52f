#include "mainwin/popup/FileListModel.h"

#include <algorithm>
#include <numeric>

#include "db/DisplayFormat.h"
#include "shared/PlainToolTip.h"

namespace venlo
{

FileListModel::FileListModel(QObject *parent) : QAbstractTableModel(parent) {}

void FileListModel::setFiles(std::vector<File> files)
{
    beginResetModel();
    m_files = std::move(files);
    m_keys.clear();
    m_order = ordered(m_column, m_sortOrder);
    endResetModel();
}

const FileListModel::File &FileListModel::file(int row) const
{
    return m_files.at(static_cast<size_t>(m_order.at(static_cast<size_t>(row))));
}

int FileListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_order.size());
}

int FileListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : Columns;
}

QString FileListModel::text(const File &file, int column) const
{
    switch (column) {
    case Directory:
        return file.directory;
    case Name:
        return file.name;
    case Size:
        return FormatSizeText(file.size);
    default:
        return FormatDateText(fromDayCount(file.day));
    }
}

QString FileListModel::line(int row) const
{
    QString cells;
    for (int column = 0; column < Columns; ++column) {
        if (column > 0)
            cells += QLatin1Char('\t');
        cells += text(file(row), column);
    }
    return cells;
}

QVariant FileListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole) {
        const QString cell = text(file(index.row()), index.column());
        return role == Qt::DisplayRole ? cell : plainToolTip(cell);
    }
    if (role == Qt::TextAlignmentRole && index.column() == Size)
        return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

QVariant FileListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Directory:
        return QStringLiteral("ﾃﾞｨﾚｸﾄﾘ");
    case Name:
        return QStringLiteral("名前");
    case Size:
        return QStringLiteral("ｻｲｽﾞ");
    case Date:
        return QStringLiteral("更新日時");
    default:
        return {};
    }
}

/// The files come in the order of directory and name, which also decides between equals.
std::vector<int> FileListModel::ordered(int column, Qt::SortOrder order)
{
    std::vector<int> rows(m_files.size());
    std::iota(rows.begin(), rows.end(), 0);
    if (column == Name && m_keys.size() != m_files.size()) {
        m_keys.clear();
        m_keys.reserve(m_files.size());
        for (const File &file : m_files)
            m_keys.push_back(file.name.toCaseFolded());
    }
    const bool down = order == Qt::DescendingOrder;
    const auto sortBy = [&](auto key) {
        std::stable_sort(rows.begin(), rows.end(), [&](int left, int right) {
            const auto l = static_cast<size_t>(left);
            const auto r = static_cast<size_t>(right);
            return down ? key(r) < key(l) : key(l) < key(r);
        });
    };
    if (column == Name)
        sortBy([&](size_t i) -> const QString & { return m_keys[i]; });
    else if (column == Size)
        sortBy([&](size_t i) { return m_files[i].size; });
    else if (column == Date)
        sortBy([&](size_t i) { return m_files[i].day; });
    else if (down)
        std::reverse(rows.begin(), rows.end());
    return rows;
}

void FileListModel::sort(int column, Qt::SortOrder order)
{
    m_column = column;
    m_sortOrder = order;
    Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    std::vector<int> rows = ordered(column, order);
    std::vector<int> rowOf(rows.size());
    for (size_t row = 0; row < rows.size(); ++row)
        rowOf[static_cast<size_t>(rows[row])] = static_cast<int>(row);
    const QModelIndexList before = persistentIndexList();
    QModelIndexList after;
    after.reserve(before.size());
    for (const QModelIndex &one : before) {
        const auto file = static_cast<size_t>(m_order.at(static_cast<size_t>(one.row())));
        after.append(index(rowOf[file], one.column()));
    }
    changePersistentIndexList(before, after);
    m_order = std::move(rows);
    Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

} // namespace venlo
