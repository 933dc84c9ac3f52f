#pragma once

#include "sync/ReviewHost.h"

namespace venlo
{

class WindowDesk;

/// Reviews in the window sfSync, before whatever window is in front.
class WindowReviewHost : public ReviewHost
{
public:
    explicit WindowReviewHost(WindowDesk &desk) : m_desk(desk) {}
    [[nodiscard]] int act(SyncReview &review, Execution &execution, bool runsUnattended) override;

private:
    WindowDesk &m_desk;
};

} // namespace venlo
