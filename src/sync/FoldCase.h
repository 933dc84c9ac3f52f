#pragma once

#include <QString>

namespace venlo
{

/// The text as the store's text equality sees it: without letter case, one character to one
/// character. A key for what the work tables hold to be one row.
[[nodiscard]] QString foldCase(const QString &text);

/// foldCase() of a path relative to the roots, always with a leading "/"; "/" for ".".
[[nodiscard]] QString pathKey(const QString &relative);

} // namespace venlo
