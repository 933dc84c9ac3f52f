#pragma once

#include <QString>

namespace venlo
{

/// Removes files and folders that a killed run left under a temporary name. The pattern is a name
/// with "*" and "?"; what is younger than an hour stays, another process may be at work on it.
void removeStale(const QString &folder, const QString &pattern);

} // namespace venlo
