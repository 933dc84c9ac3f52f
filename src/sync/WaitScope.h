#pragma once

#include <QString>

#include "shared/FrontEnd.h"

namespace venlo
{

/// Shows the wait window for a scope.
class WaitScope
{
public:
    WaitScope(FrontEnd &frontEnd, const QString &text) : m_frontEnd(frontEnd)
    {
        m_frontEnd.showWait(text);
    }
    ~WaitScope() { m_frontEnd.closeWait(); }
    WaitScope(const WaitScope &) = delete;
    WaitScope &operator=(const WaitScope &) = delete;

private:
    FrontEnd &m_frontEnd;
};

} // namespace venlo
