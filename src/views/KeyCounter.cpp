#include "views/KeyCounter.h"

namespace venlo
{

KeyCounter::KeyCounter(QChar letter, int digits, int start)
    : m_letter(letter), m_digits(digits), m_number(start)
{
}

std::optional<QString> KeyCounter::next()
{
    if (exhausted())
        return std::nullopt;
    return m_letter + QString::number(m_number++).rightJustified(m_digits, QLatin1Char('0'));
}

} // namespace venlo
