#pragma once

#include <QByteArray>

#include <vector>

namespace venlo::test
{

/// A name of an entry that a server shows.
struct HostileName {
    const char *what;
    QByteArray bytes;
    /// No file or folder of that name can be asked for, nor become one here.
    bool refused = false;
};

/// All of them hold "evil", by which they are found in what the person is told, but for those that
/// are too short for it.
[[nodiscard]] std::vector<HostileName> hostileNames();

} // namespace venlo::test
