#include "views/SortState.h"

namespace venlo
{

void SortState::click(int column)
{
    const bool again = m_number != 0 && this->column() == column;
    m_number = static_cast<short>(again ? -m_number : column + 1);
}

} // namespace venlo
