#include "mainwin/StatusFlow.h"

#include <utility>

namespace venlo
{

namespace
{
constexpr int interval = 33; // ms
}

StatusFlow::StatusFlow()
{
    m_later.setSingleShot(true);
    connect(&m_later, &QTimer::timeout, this, &StatusFlow::flush);
}

void StatusFlow::addTarget(StatusTarget &target, StatusRank rank)
{
    m_targets.emplace(rank, &target);
}

void StatusFlow::removeTarget(StatusTarget &target)
{
    std::erase_if(m_targets, [&](const auto &entry) { return entry.second == &target; });
    if (m_target != &target)
        return;
    m_waiting.clear();
    m_target = nullptr;
}

StatusTarget *StatusFlow::inFront() const
{
    for (const auto &[rank, target] : m_targets) {
        if (target->isShowing())
            return target;
    }
    return nullptr;
}

bool StatusFlow::add(const QString &line)
{
    StatusTarget *target = inFront();
    if (target == nullptr)
        return false;
    const bool another = target != m_target;
    if (another)
        flush();
    m_target = target;
    m_waiting += line;
    if (!another && m_sinceShown.isValid() && m_sinceShown.elapsed() < interval) {
        if (!m_later.isActive())
            m_later.start(interval);
        return false;
    }
    flush();
    return true;
}

void StatusFlow::flush()
{
    m_later.stop();
    m_sinceShown.start();
    const QStringList lines = std::exchange(m_waiting, {});
    // A window that was closed meanwhile has thrown its lines away.
    if (!lines.isEmpty() && m_target->isShowing())
        m_target->addLines(lines);
}

} // namespace venlo
