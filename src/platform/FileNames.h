#pragma once

#include <QString>

namespace venlo
{

/// Why a folder of this system cannot hold an entry of that name, empty when it can. A name that
/// would lead out of its folder never can.
[[nodiscard]] QString whyNotAFileName(const QString &name);

/// Why nothing may be written under a path: it leads to an entry of another name, which bears this
/// one as its short name besides ("REPORT~1.XLS"). Empty when it does not, or nothing is there.
[[nodiscard]] QString whyAnotherEntry(const QString &path);

} // namespace venlo
