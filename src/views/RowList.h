#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QAbstractTableModel>
#include <QHash>
#include <QIcon>
#include <QStringList>

#include "views/EntryTag.h"
#include "views/KeyCounter.h"

namespace venlo
{

/// The folders and files of a pane's list: rows of texts, sorted by the plain text of a column
/// (letter case ignored, equal ones by the tie column, then as they came). What is costly to read
/// (icons, late columns) is asked for when it is first painted or sorted. Reads nothing itself.
class RowList : public QAbstractTableModel
{
    Q_OBJECT

public:
    struct Row {
        EntryTag tag = EntryTag::FL;
        QStringList texts; ///< one a column; missing ones are empty
        QString toolTip;
        bool pale = false;     ///< drawn paler (hidden entries)
        bool viewOnly = false; ///< a name that no operation may touch: never edited or dragged
        QString key;           ///< given by the list
        QIcon icon;            ///< filled when first painted
        bool iconKnown = false;
        bool lateKnown = false; ///< the late column was read
    };
    struct Layout {
        QStringList headings; ///< one a column; an empty one is a column that is not for show
        int lateColumn = -1;  ///< its texts come from the late source
        int tieColumn = -1;   ///< orders rows whose sort texts are equal
        std::vector<int> rightAligned;
    };
    using IconSource = std::function<QIcon(const Row &row)>;
    using LateSource = std::function<QString(const Row &row)>;

    explicit RowList(Layout layout, QObject *parent = nullptr);
    ~RowList() override;

    void clear();
    /// Adds rows in one step, each at its place in the sort order. False when the keys ran out:
    /// those before stay.
    [[nodiscard]] bool append(std::vector<Row> rows);
    void remove(std::vector<int> rows);

    [[nodiscard]] int count() const { return static_cast<int>(m_items.size()); }
    [[nodiscard]] const Row &row(int row) const;
    /// Text of a cell; reads a late column.
    [[nodiscard]] QString text(int row, int column) const;
    /// Changes a cell; the row keeps its place until the next sort.
    void setText(int row, int column, const QString &text);
    void setTag(int row, EntryTag tag);
    void setToolTip(int row, const QString &toolTip);
    /// Row with that key, with that tag and name (exact), -1 when there is none.
    [[nodiscard]] int rowOfKey(const QString &key) const;
    [[nodiscard]] int rowOf(EntryTag tag, const QString &name) const;

    /// Column counted from 0; -1: as the rows came, not sorted from now on.
    void sort(int column, Qt::SortOrder order) override;
    [[nodiscard]] int sortColumn() const { return m_sortColumn; }
    [[nodiscard]] Qt::SortOrder sortOrder() const { return m_sortOrder; }
    /// Sorts again by what the cells hold now.
    void resort();

    void setIconSource(IconSource source);
    void setLateSource(LateSource source);
    /// The row shown bold as the target of a drag; -1 for none.
    void setDropTarget(int row);
    [[nodiscard]] KeyCounter &keys() { return m_keys; }

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    /// A row with its present place and the order in which it came.
    struct Item;
    using Items = std::vector<std::unique_ptr<Item>>;

    [[nodiscard]] Item &at(int row) const { return *m_items[static_cast<size_t>(row)]; }
    [[nodiscard]] QString textOf(Item &item, int column) const;
    [[nodiscard]] QVariant icon(Item &item) const;
    [[nodiscard]] bool before(Item &left, Item &right) const;
    void renumber(size_t from = 0);
    [[nodiscard]] Items makeItems(std::vector<Row> rows);
    void insertAtEnd(Items items);
    void insertRuns(Items items, const std::vector<size_t> &places);
    void insertAndMerge(Items items);
    void removeRange(int first, int last);
    void reorder(const std::function<void(Items &)> &arrange);

    Layout m_layout;
    KeyCounter m_keys;
    Items m_items;
    int m_arrived = 0;
    QHash<QString, Item *> m_byKey;
    QMultiHash<QString, Item *> m_byName;
    IconSource m_iconSource;
    LateSource m_lateSource;
    int m_sortColumn = -1;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
    QPersistentModelIndex m_dropTarget;
};

} // namespace venlo
