#pragma once

#include <functional>
#include <utility>

#include "sync/ReviewHost.h"

class QWidget;

namespace venlo
{

class WindowDesk;

/// Reviews in the window sfSync.
class WindowReviewHost : public ReviewHost
{
public:
    /// owner: the window that the review stands before and on whose screen, null where none shows.
    /// Asked when a review begins: no window of ours may be the active one then.
    WindowReviewHost(WindowDesk &desk, std::function<QWidget *()> owner)
        : m_desk(desk), m_owner(std::move(owner))
    {
    }
    [[nodiscard]] int act(SyncReview &review, Execution &execution, bool runsUnattended) override;

private:
    WindowDesk &m_desk;
    std::function<QWidget *()> m_owner;
};

} // namespace venlo
