#pragma once

#include <functional>
#include <utility>

#include "sync/PatternHost.h"

namespace venlo::test
{

/// Does what a test wants where a command's work would begin; no pattern is found.
class StandInHost : public PatternHost
{
public:
    explicit StandInHost(std::function<void()> action) : m_action(std::move(action)) {}
    [[nodiscard]] ShownPattern SyncPtn(const QString & /*sSync*/) override
    {
        m_action();
        return {};
    }

private:
    std::function<void()> m_action;
};

} // namespace venlo::test
