#pragma once

#include <QtGlobal>

namespace venlo::test
{

/// The most memory this process has held since a moment, as far as the system tells (Linux). The
/// measured code and its scripted server share the process: the server keeps no more than it says.
class PeakMemory
{
public:
    /// Begins to measure; what was freed before goes back to the system first.
    PeakMemory();

    /// Bytes at the peak above those at the beginning; 0 where it cannot be measured (other
    /// systems, sanitizers).
    [[nodiscard]] qint64 grown() const;

private:
    qint64 m_before = 0;
};

} // namespace venlo::test
