#pragma once

#include <QElapsedTimer>
#include <QTemporaryDir>

#include "support/ScriptedServer.h"
#include "sync/SyncWorld.h"

namespace venlo::test
{

/// The whole engine and a server that means it no good. Around the chosen folder lies what must not
/// be touched: files beside it, the working directory, and rows of others in the database.
class HostileWorld
{
public:
    /// Temporary folders in memory from now on, where the system has that: what is tried is many
    /// small worlds, and a disk's turn for each would take most of the time.
    static void useMemory();

    explicit HostileWorld(ClientLimits limits = SyncWorld::shortWaits());
    /// Waits short enough for servers that never end.
    [[nodiscard]] static ClientLimits hastyLimits();
    ~HostileWorld();
    HostileWorld(const HostileWorld &) = delete;
    HostileWorld &operator=(const HostileWorld &) = delete;

    /// The server, and the site and the pattern ("pattern": the chosen folder and "/pub") for it.
    /// From here on nothing around may change.
    [[nodiscard]] bool start();
    [[nodiscard]] bool connect() { return engine.connectToSite(); }

    /// The folder that the person chose, and the one that holds it.
    [[nodiscard]] QString chosen() const { return around() + QStringLiteral("/pub"); }
    [[nodiscard]] QString around() const { return m_around.path(); }
    [[nodiscard]] TreeSnapshot chosenTree() const { return snapshot(chosen()); }

    /// What does not hold, one line each: something outside was written, deleted or asked for, the
    /// session is in no state, the time is over.
    [[nodiscard]] QString broken(int limitMs);
    /// Everything that the person was told or can read in the logs.
    [[nodiscard]] QString said() const;
    [[nodiscard]] QStringList cached(const QString &dir);

    ScriptedServer server;
    SyncWorld engine;

private:
    void addBystanders();
    [[nodiscard]] TreeSnapshot outside() const;
    /// Every table, column and row, but those of the current site and the work tables.
    [[nodiscard]] QStringList otherRows();
    [[nodiscard]] QStringList strayCommands() const;

    QTemporaryDir m_around;
    QString m_workingDirectory;
    TreeSnapshot m_outside;
    QStringList m_otherRows;
    QElapsedTimer m_time;
};

} // namespace venlo::test
