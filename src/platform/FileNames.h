#pragma once

#include <QString>

namespace venlo
{

/// Why a folder of this system cannot hold an entry of that name, empty when it can. A name that
/// would lead out of its folder never can.
[[nodiscard]] QString whyNotAFileName(const QString &name);

} // namespace venlo
