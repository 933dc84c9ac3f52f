#pragma once

#include "support/DaemonConfig.h"

#include <QStringList>

#include <vector>

namespace venlo::test
{

/// The daemons that tools/setup-daemons unpacked: in VENLO_FTPD, otherwise where it puts them.
[[nodiscard]] DaemonPrograms unpackedDaemons();
/// What stands before a daemon's own command line.
[[nodiscard]] QStringList commandPrefix(DaemonKind kind);

/// True while a process runs (a zombie does not).
[[nodiscard]] bool processRuns(qint64 pid);
/// Its children, theirs, and so on.
[[nodiscard]] std::vector<qint64> processesBelow(qint64 pid);

} // namespace venlo::test
