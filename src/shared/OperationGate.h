#pragma once

#include <functional>

#include <QObject>

namespace venlo
{

class FrontEnd;

/// The one turn that long operations of the windows take. One runs at a time; what a person starts
/// meanwhile is left out, and windows disable what would start one. A turn is taken where a
/// person's command enters (a key, a menu entry, a drop), never inside what hosts call.
class OperationGate : public QObject
{
    Q_OBJECT

public:
    /// What a turn needs besides: both may be empty. acquire says why when it refuses.
    struct Lock {
        std::function<bool()> acquire;
        std::function<void()> release;
    };

    /// A turn ends when its holder goes.
    class Turn
    {
    public:
        Turn() = default;
        explicit Turn(OperationGate &gate) : m_gate(&gate) {}
        Turn(Turn &&other) noexcept : m_gate(other.m_gate) { other.m_gate = nullptr; }
        Turn &operator=(Turn &&) = delete;
        ~Turn();
        [[nodiscard]] explicit operator bool() const { return m_gate != nullptr; }

    private:
        OperationGate *m_gate = nullptr;
    };

    explicit OperationGate(FrontEnd &frontEnd, QObject *parent = nullptr);
    void setLock(Lock lock);

    /// A turn, empty when an operation runs or the lock refuses. A Cancel of an earlier operation
    /// no longer counts.
    [[nodiscard]] Turn begin();
    [[nodiscard]] bool busy() const { return m_busy; }

Q_SIGNALS:
    void busyChanged(bool busy);

private:
    void end();

    FrontEnd &m_frontEnd;
    Lock m_lock;
    bool m_busy = false;
};

} // namespace venlo
