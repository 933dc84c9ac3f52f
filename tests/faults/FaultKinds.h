#pragma once

#include "support/FaultRelay.h"

#include <vector>

namespace venlo::test
{

/// A fault and what to call it.
struct NamedFault {
    QByteArray name;
    RelayFault fault;
};

/// Every fault that can come about at one step, once; always: there and from then on.
[[nodiscard]] std::vector<NamedFault> faultsAt(const QByteArray &verb, int occurrence, bool always);

/// Every fault at every step of a dialogue, as the verbs came.
[[nodiscard]] std::vector<NamedFault> faultsOf(const QList<QByteArray> &verbs, bool always);

} // namespace venlo::test
