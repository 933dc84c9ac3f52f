#pragma once

#include "support/FaultRelay.h"
#include "support/FtpDaemon.h"
#include "support/ScriptedServer.h"
#include "support/Trees.h"

#include <memory>

namespace venlo::test
{

/// The server behind the relay of a fault: the scripted one or a real daemon, over a folder "/pub"
/// that a test fills and looks at.
class FaultBackend
{
public:
    virtual ~FaultBackend() = default;
    [[nodiscard]] virtual bool start(QString *why) = 0;
    [[nodiscard]] virtual quint16 port() const = 0;
    [[nodiscard]] virtual QString user() const = 0;
    [[nodiscard]] virtual QString password() const = 0;
    /// "/pub" holds these rows and nothing else.
    [[nodiscard]] virtual bool fill(const std::vector<TreeRow> &rows) = 0;
    /// Ends sessions that lost their client. vsftpd notices after a minute only, and keeps what is
    /// being uploaded locked as long.
    virtual void endSessions() = 0;
    /// What "/pub" holds.
    [[nodiscard]] virtual TreeSnapshot content() const = 0;
};

/// mlsd, epsv: false for a server that has only LIST, only PASV.
[[nodiscard]] std::unique_ptr<FaultBackend> scriptedBackend(bool mlsd = true, bool epsv = true);
[[nodiscard]] std::unique_ptr<FaultBackend> daemonBackend(FtpDaemon::Kind kind);

} // namespace venlo::test
