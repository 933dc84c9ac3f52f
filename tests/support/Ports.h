#pragma once

#include <QtGlobal>

namespace venlo::test
{

/// A TCP port of the loopback address that nobody listens on right now. Somebody else may take it
/// before the caller does, so that callers try again with another one.
[[nodiscard]] quint16 freePort(bool ipv6 = false);

/// True when this machine has ::1.
[[nodiscard]] bool hasIpv6Loopback();

} // namespace venlo::test
