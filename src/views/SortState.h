#pragma once

#include <Qt>

namespace venlo
{

/// The sort state of a list's headings as a signed number: the column counted from 1, negative
/// when descending, 0 before the first click.
class SortState
{
public:
    /// A click on a heading, column counted from 0: the same one turns over, another one ascends.
    void click(int column);
    [[nodiscard]] int number() const { return m_number; }
    /// Column counted from 0, -1 before the first click.
    [[nodiscard]] int column() const { return (m_number < 0 ? -m_number : m_number) - 1; }
    [[nodiscard]] Qt::SortOrder order() const
    {
        return m_number < 0 ? Qt::DescendingOrder : Qt::AscendingOrder;
    }

private:
    short m_number = 0;
};

} // namespace venlo
