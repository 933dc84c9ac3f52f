#include "shared/OperationGate.h"

#include <utility>

#include "shared/FrontEnd.h"

namespace venlo
{

OperationGate::Turn::~Turn()
{
    if (m_gate != nullptr)
        m_gate->end();
}

OperationGate::OperationGate(FrontEnd &frontEnd, QObject *parent)
    : QObject(parent), m_frontEnd(frontEnd)
{
}

void OperationGate::setLock(Lock lock)
{
    m_lock = std::move(lock);
}

OperationGate::Turn OperationGate::begin()
{
    if (m_busy)
        return {};
    // Busy before the lock is asked for: waiting for it lets events run.
    m_busy = true;
    m_frontEnd.beginOperation();
    if (m_lock.acquire && !m_lock.acquire()) {
        m_busy = false;
        return {};
    }
    Q_EMIT busyChanged(true);
    return Turn(*this);
}

void OperationGate::end()
{
    if (m_lock.release)
        m_lock.release();
    m_busy = false;
    Q_EMIT busyChanged(false);
}

} // namespace venlo
