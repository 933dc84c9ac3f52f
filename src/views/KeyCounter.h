#pragma once

#include <optional>

#include <QString>

namespace venlo
{

/// Running number of the keys of a view's nodes or rows: a 16-bit signed number that never wraps.
class KeyCounter
{
public:
    /// digits: least number of digits, zeros in front.
    KeyCounter(QChar letter, int digits, int start = 0);

    /// The next key ("N0001"), counting on; nothing once 32767 was given out.
    [[nodiscard]] std::optional<QString> next();
    [[nodiscard]] bool exhausted() const { return m_number > last; }
    [[nodiscard]] int number() const { return m_number; }
    void restart(int number) { m_number = number; }

    static constexpr int last = 32767;

private:
    QChar m_letter;
    int m_digits;
    int m_number;
};

} // namespace venlo
