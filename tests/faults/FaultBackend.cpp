#include "faults/FaultBackend.h"

#include <QDir>

namespace venlo::test
{

namespace
{
class ScriptedBackend final : public FaultBackend
{
public:
    ScriptedBackend(bool mlsd, bool epsv)
    {
        m_server.options().mlsd = mlsd;
        m_server.options().epsv = epsv;
    }
    [[nodiscard]] bool start(QString *) override { return m_server.start(); }
    [[nodiscard]] quint16 port() const override { return m_server.port(); }
    [[nodiscard]] QString user() const override { return m_server.user(); }
    [[nodiscard]] QString password() const override { return m_server.password(); }
    [[nodiscard]] bool fill(const std::vector<TreeRow> &rows) override
    {
        m_server.tree().clear();
        m_server.makeFolder("/pub");
        makeTree(m_server.tree(), "/pub", rows);
        return true;
    }
    void endSessions() override {}
    [[nodiscard]] TreeSnapshot content() const override
    {
        return snapshot(m_server.tree(), "/pub");
    }

private:
    mutable ScriptedServer m_server; ///< its tree guards itself
};

class DaemonBackend final : public FaultBackend
{
public:
    explicit DaemonBackend(FtpDaemon::Kind kind) : m_daemon(kind) {}
    [[nodiscard]] bool start(QString *why) override { return m_daemon.start(why); }
    [[nodiscard]] quint16 port() const override { return m_daemon.port(); }
    [[nodiscard]] QString user() const override { return m_daemon.user(); }
    [[nodiscard]] QString password() const override { return m_daemon.password(); }
    [[nodiscard]] bool fill(const std::vector<TreeRow> &rows) override
    {
        const bool made =
            QDir(pub()).removeRecursively() && QDir().mkpath(pub()) && makeTree(pub(), rows);
        m_daemon.own();
        return made;
    }
    void endSessions() override { m_daemon.dropSessions(); }
    [[nodiscard]] TreeSnapshot content() const override { return snapshot(pub()); }

private:
    [[nodiscard]] QString pub() const { return m_daemon.root() + QStringLiteral("/pub"); }
    FtpDaemon m_daemon;
};
} // namespace

std::unique_ptr<FaultBackend> scriptedBackend(bool mlsd, bool epsv)
{
    return std::make_unique<ScriptedBackend>(mlsd, epsv);
}

std::unique_ptr<FaultBackend> daemonBackend(FtpDaemon::Kind kind)
{
    return std::make_unique<DaemonBackend>(kind);
}

} // namespace venlo::test
