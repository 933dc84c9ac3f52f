#include "sync/windows/WindowReviewHost.h"

#include <QApplication>

#include "sync/windows/sfSync.h"

namespace venlo
{

int WindowReviewHost::act(SyncReview &review, Execution &execution, bool runsUnattended)
{
    sfSync window(review, execution, m_desk, QApplication::activeWindow());
    return runsUnattended ? window.runUnattended() : window.Act();
}

} // namespace venlo
