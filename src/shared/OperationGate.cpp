#include "shared/OperationGate.h"

#include <utility>

#include "shared/FrontEnd.h"

namespace venlo
{

OperationGate::Turn::~Turn()
{
    if (m_gate != nullptr)
        m_gate->end(m_reach);
}

OperationGate::OperationGate(FrontEnd &frontEnd, QObject *parent)
    : QObject(parent), m_frontEnd(frontEnd)
{
}

void OperationGate::setLock(Lock lock)
{
    m_lock = std::move(lock);
}

OperationGate::Turn OperationGate::begin(Reach reach)
{
    if (m_busy)
        return {};
    // Busy before the lock is asked for: waiting for it lets events run, and can be cancelled.
    m_busy = true;
    m_frontEnd.beginOperation();
    Q_EMIT busyChanged(true);
    if (reach == Reach::Server && m_lock.acquire && !m_lock.acquire()) {
        end(Reach::Disk);
        return {};
    }
    return {*this, reach};
}

void OperationGate::end(Reach reach)
{
    if (reach == Reach::Server && m_lock.release)
        m_lock.release();
    m_busy = false;
    Q_EMIT busyChanged(false);
}

} // namespace venlo
