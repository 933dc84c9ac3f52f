#pragma once

#include "faults/FaultBackend.h"
#include "sync/SyncWorld.h"

#include <optional>

namespace venlo::test
{

/// What runs into a fault.
enum class FaultOperation {
    Connect,
    List,
    Get,
    Put,
    Rename,
    Delete,
    Make,
    Remove,
    SyncUp,
    SyncDown
};

/// Both trees.
struct FaultTrees {
    TreeSnapshot local;
    TreeSnapshot remote;
    bool operator==(const FaultTrees &other) const
    {
        return difference(local, other.local).isEmpty() &&
               difference(remote, other.remote).isEmpty();
    }
};

/// One operation over a new user data folder, a new local folder and a server's "/pub", reached
/// through a relay. Holds what is true of it whatever goes wrong.
class FaultRun
{
public:
    FaultRun(FaultBackend &backend, FaultRelay &relay, FaultOperation operation,
             ClientLimits limits);

    /// Both trees as they are before, and the connection where the operation needs one.
    [[nodiscard]] bool prepare();
    /// From here on the fault lies in wait. True when the operation says that all is done.
    bool act(const std::optional<RelayFault> &fault);
    /// Again, as often as a slow machine needs, without the fault; true once it is as asked.
    [[nodiscard]] bool recover(const FaultTrees &asked);

    [[nodiscard]] FaultTrees trees() const;
    /// What does not hold after act(), one line each. asked: the trees of a run without a fault.
    [[nodiscard]] QStringList broken(const FaultTrees &asked);
    /// Half uploads on the server that are noted here.
    [[nodiscard]] int remnants() const { return m_remnants; }
    [[nodiscard]] bool reported() const;
    /// For the report of a failure.
    [[nodiscard]] QString story() const;

private:
    [[nodiscard]] bool getReady();
    [[nodiscard]] bool carryOut();
    [[nodiscard]] bool put();
    [[nodiscard]] bool again();
    void checkLocal(const FaultTrees &asked, QStringList &wrong) const;
    void checkRemote(const FaultTrees &asked, QStringList &wrong);
    void checkCache(const FaultTrees &asked, QStringList &wrong);
    void checkWords(const FaultTrees &asked, QStringList &wrong) const;
    [[nodiscard]] QStringList cachedBelow(const QString &dir);
    [[nodiscard]] QStringList errorLines() const;
    [[nodiscard]] bool synchronises() const;
    [[nodiscard]] bool emptyListing() const;

    FaultBackend &m_backend;
    FaultRelay &m_relay;
    FaultOperation m_operation;
    SyncWorld m_world;
    FaultTrees m_before;
    std::optional<RelayFault> m_fault;
    bool m_saysDone = false;
    int m_remnants = 0;
};

} // namespace venlo::test
