// What the rows of a RowList are and how they show.
#include "views/RowList.h"

#include "views/PaleText.h"
#include "views/RowItem.h"

#include <algorithm>

#include <QFont>

namespace venlo
{

RowList::RowList(Layout layout, QObject *parent)
    : QAbstractTableModel(parent), m_layout(std::move(layout)), m_keys(QLatin1Char('L'), 3)
{
}

RowList::~RowList() = default;

const RowList::Row &RowList::row(int row) const
{
    return m_items.at(static_cast<size_t>(row))->row;
}

QString RowList::textOf(Item &item, int column) const
{
    Row &row = item.row;
    if (column == m_layout.lateColumn && m_lateSource && !row.lateKnown) {
        while (row.texts.size() <= column)
            row.texts.append(QString());
        row.texts[column] = m_lateSource(row);
        row.lateKnown = true;
    }
    return row.texts.value(column);
}

QString RowList::text(int row, int column) const
{
    return row < 0 || row >= count() ? QString() : textOf(at(row), column);
}

void RowList::setText(int row, int column, const QString &text)
{
    if (row < 0 || row >= count() || column < 0 || column >= columnCount())
        return;
    Item &item = at(row);
    QStringList &texts = item.row.texts;
    while (texts.size() <= column)
        texts.append(QString());
    const bool late = column == m_layout.lateColumn;
    if (texts[column] == text && (!late || item.row.lateKnown))
        return;
    if (column == 0) {
        m_byName.remove(texts[0], &item);
        m_byName.insert(text, &item);
        // Another name may mean another kind of file.
        item.row.iconKnown = false;
        item.row.lateKnown = false;
    }
    texts[column] = text;
    if (late)
        item.row.lateKnown = true;
    Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
}

void RowList::setTag(int row, EntryTag tag)
{
    if (row < 0 || row >= count() || at(row).row.tag == tag)
        return;
    at(row).row.tag = tag;
    Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
}

void RowList::setToolTip(int row, const QString &toolTip)
{
    if (row < 0 || row >= count() || at(row).row.toolTip == toolTip)
        return;
    at(row).row.toolTip = toolTip;
    Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1), {Qt::ToolTipRole});
}

int RowList::rowOfKey(const QString &key) const
{
    const Item *const item = m_byKey.value(key);
    return item ? item->place : -1;
}

int RowList::rowOf(EntryTag tag, const QString &name) const
{
    int found = -1;
    for (auto [it, end] = m_byName.equal_range(name); it != end; ++it) {
        const Item *const item = *it;
        if (item->row.tag == tag && item->place >= 0 && (found < 0 || item->place < found))
            found = item->place;
    }
    return found;
}

void RowList::setIconSource(IconSource source)
{
    m_iconSource = std::move(source);
}

void RowList::setLateSource(LateSource source)
{
    m_lateSource = std::move(source);
}

void RowList::setDropTarget(int row)
{
    const QModelIndex old = m_dropTarget;
    const QModelIndex target = index(row, 0);
    if (old == target)
        return;
    m_dropTarget = target;
    for (const QModelIndex &changed : {old, target}) {
        if (changed.isValid())
            Q_EMIT dataChanged(changed, changed.siblingAtColumn(columnCount() - 1), {Qt::FontRole});
    }
}

int RowList::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

int RowList::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_layout.headings.size());
}

QVariant RowList::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.model() != this || index.row() >= count())
        return {};
    Item &item = at(index.row());
    const auto &right = m_layout.rightAligned;
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return textOf(item, index.column());
    case entryTagRole:
        return static_cast<int>(item.row.tag);
    case Qt::DecorationRole:
        return index.column() == 0 ? icon(item) : QVariant();
    case Qt::ToolTipRole:
        return item.row.toolTip.isEmpty() ? QVariant() : QVariant(item.row.toolTip);
    case Qt::ForegroundRole:
        return item.row.pale ? QVariant(paleText()) : QVariant();
    case Qt::TextAlignmentRole:
        if (std::find(right.begin(), right.end(), index.column()) != right.end())
            return QVariant::fromValue(Qt::Alignment(Qt::AlignRight | Qt::AlignVCenter));
        return {};
    case Qt::FontRole:
        if (m_dropTarget.isValid() && m_dropTarget.row() == index.row()) {
            QFont bold;
            bold.setBold(true);
            return bold;
        }
        return {};
    default:
        return {};
    }
}

QVariant RowList::icon(Item &item) const
{
    if (!m_iconSource)
        return {};
    if (!item.row.iconKnown) {
        item.row.icon = m_iconSource(item.row);
        item.row.iconKnown = true;
    }
    return item.row.icon;
}

QVariant RowList::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount())
        return {};
    if (role == Qt::DisplayRole)
        return m_layout.headings.at(section);
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(Qt::Alignment(Qt::AlignLeft | Qt::AlignVCenter));
    return {};
}

Qt::ItemFlags RowList::flags(const QModelIndex &index) const
{
    if (!index.isValid() || index.model() != this || index.row() >= count())
        return Qt::ItemIsDropEnabled;
    Qt::ItemFlags flags =
        Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDropEnabled | Qt::ItemNeverHasChildren;
    const Row &row = at(index.row()).row;
    if (row.viewOnly || row.tag == EntryTag::DM)
        return flags;
    flags |= Qt::ItemIsDragEnabled;
    if (index.column() == 0)
        flags |= Qt::ItemIsEditable;
    return flags;
}

} // namespace venlo
