#pragma once

#include "support/Certificates.h"
#include "support/FtpDaemon.h"

namespace venlo::test
{

/// For a test's data: a row for each kind of daemon, in the column "kind".
void addDaemons();
/// One for each kind in both modes; the second column is "passive".
void addDaemonsInBothModes();
/// One for each kind with both versions of TLS; the second column is "tls".
void addDaemonsUnderTls();

/// True after the running test was skipped because this daemon is not on this machine; the test
/// returns then.
[[nodiscard]] bool skippedWithout(FtpDaemon::Kind kind);

/// Bytes that repeat themselves nowhere, the same each time.
[[nodiscard]] QByteArray noise(int size);

/// A daemon that speaks TLS and shows this certificate.
[[nodiscard]] DaemonOptions tlsOptions(const Certificates &certificates, DaemonTls tls,
                                       Certificates::Kind certificate = Certificates::Kind::Signed);

} // namespace venlo::test
