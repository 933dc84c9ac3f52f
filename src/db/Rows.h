#pragma once

#include <QVariant>

#include <cstddef>
#include <utility>
#include <vector>

namespace venlo
{

/// All rows of a query, addressed by field and row as the callers count them.
class Rows
{
public:
    Rows() = default;
    Rows(int fields, std::vector<QVariant> cells) : m_fields(fields), m_cells(std::move(cells)) {}
    [[nodiscard]] int count() const
    {
        return m_fields == 0 ? 0 : static_cast<int>(m_cells.size()) / m_fields;
    }
    [[nodiscard]] int fields() const { return m_fields; }
    /// Null columns are null QVariants; Text is QString, Byte/Long/yes-no are qlonglong, Date is
    /// double (day count, see fromDayCount).
    [[nodiscard]] const QVariant &at(int field, int row) const
    {
        return m_cells.at(static_cast<size_t>(row) * static_cast<size_t>(m_fields) +
                          static_cast<size_t>(field));
    }

private:
    int m_fields = 0;
    std::vector<QVariant> m_cells;
};

} // namespace venlo
