#include "sync/windows/WindowReviewHost.h"

#include "sync/windows/sfSync.h"

namespace venlo
{

int WindowReviewHost::act(SyncReview &review, Execution &execution, bool runsUnattended)
{
    sfSync window(review, execution, m_desk, m_owner());
    return runsUnattended ? window.runUnattended() : window.Act();
}

} // namespace venlo
