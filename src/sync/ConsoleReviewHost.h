#pragma once

#include "sync/ReviewHost.h"

namespace venlo
{

class FrontEnd;

/// Reviews where no window can be shown: an unattended run executes at once, anything else runs
/// nothing, since nobody can look at the rows.
class ConsoleReviewHost : public ReviewHost
{
public:
    explicit ConsoleReviewHost(FrontEnd &frontEnd) : m_frontEnd(frontEnd) {}
    [[nodiscard]] int act(SyncReview &review, Execution &execution, bool runsUnattended) override;

private:
    FrontEnd &m_frontEnd;
};

} // namespace venlo
