#pragma once

#include <vector>

#include <QAbstractTableModel>

#include "sync/windows/ReviewLook.h"
#include "sync/windows/ReviewSort.h"

namespace venlo
{

class SyncReview;

/// A review as a table: the rows that its display boxes let through, in its own order or sorted by
/// a column. Ticks go straight into the review; the order here never reaches the execution.
/// The review belongs to the caller and outlives the model.
class SyncReviewModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    /// Text above the headings of one side.
    static constexpr int groupRole = Qt::UserRole;

    SyncReviewModel(SyncReview &review, const QPalette &palette, QObject *parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    void sort(int column, Qt::SortOrder order) override;

    /// Row of the review that a row of the table shows, and back (-1: not shown).
    [[nodiscard]] int reviewRow(int row) const { return m_shown.at(static_cast<size_t>(row)); }
    [[nodiscard]] int tableRow(int reviewRow) const;

    /// Ticks or unticks rows of the table by hand; those without a live box stay as they are.
    void setTicked(const std::vector<int> &rows, bool ticked);
    [[nodiscard]] bool tickable(int row) const;

    void setChCmp(int box, bool checked);
    void setChDsp(int box, bool checked);
    void tickAll(Action action, bool ticked);

    /// While it runs nothing can be ticked.
    void setLocked(bool locked);
    /// The row of the review that is being worked on, -1 for none. Shown by the next refresh().
    void setRunning(int reviewRow) { m_running = reviewRow; }
    /// What the rows hold has changed behind the model's back.
    void refresh();
    void setPalette(const QPalette &palette);

Q_SIGNALS:
    /// Ticks or actions changed, so that counts are to be taken anew.
    void planChanged();

private:
    [[nodiscard]] QString cellText(int reviewRow, int column) const;
    [[nodiscard]] QString nameText(int reviewRow) const;
    [[nodiscard]] QVariant decoration(int reviewRow, int column) const;
    [[nodiscard]] QColor textColour(int reviewRow, int column) const;
    [[nodiscard]] QString toolTip(int reviewRow) const;
    [[nodiscard]] QString accessibleText(int reviewRow, int column) const;
    [[nodiscard]] QString headingText(int column) const;
    [[nodiscard]] QString groupText(int column) const;
    void arrange();

    SyncReview &m_review;
    ReviewLook m_look;
    std::vector<int> m_shown;
    std::vector<int> m_place; ///< per row of the review, its row in the table or -1
    int m_sortColumn = -1;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
    int m_running = -1;
    bool m_locked = false;
};

} // namespace venlo
