#pragma once

#include <QString>

namespace venlo::test
{

/// To be called first in main(), before there are threads. From then on the process has no rights
/// beyond those of an ordinary user: permissions bite, also where the tests are run as root. Where
/// the system allows it there is a small disk besides, a file system that only this process sees.
void becomeOrdinaryUser();

/// An empty folder of a file system with room for a few MiB; empty when the system gave none.
[[nodiscard]] QString smallDisk();

} // namespace venlo::test
