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
    /// What an operation uses: the server and the store, which other processes share, or only the
    /// disk.
    enum class Reach { Server, Disk };
    /// What a turn that reaches the server needs besides. acquire says why when it refuses.
    struct Lock {
        std::function<bool()> acquire;
        std::function<void()> release;
    };

    /// A turn ends when its holder goes.
    class Turn
    {
    public:
        Turn() = default;
        Turn(OperationGate &gate, Reach reach) : m_gate(&gate), m_reach(reach) {}
        Turn(Turn &&other) noexcept : m_gate(other.m_gate), m_reach(other.m_reach)
        {
            other.m_gate = nullptr;
        }
        Turn &operator=(Turn &&) = delete;
        ~Turn();
        [[nodiscard]] explicit operator bool() const { return m_gate != nullptr; }

    private:
        OperationGate *m_gate = nullptr;
        Reach m_reach = Reach::Server;
    };

    explicit OperationGate(FrontEnd &frontEnd, QObject *parent = nullptr);
    void setLock(Lock lock);

    /// A turn, empty when an operation runs or the lock refuses. A Cancel of an earlier operation
    /// no longer counts.
    [[nodiscard]] Turn begin(Reach reach = Reach::Server);
    [[nodiscard]] bool busy() const { return m_busy; }

Q_SIGNALS:
    void busyChanged(bool busy);

private:
    void end(Reach reach);

    FrontEnd &m_frontEnd;
    Lock m_lock;
    bool m_busy = false;
};

} // namespace venlo
