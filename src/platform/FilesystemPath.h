#pragma once

#include <filesystem>
#include <system_error>

#include <QString>

namespace venlo
{

/// A path as the system takes it, and back for showing (lossy where a name's bytes are no text).
[[nodiscard]] std::filesystem::path filesystemPath(const QString &path);
[[nodiscard]] QString shownPath(const std::filesystem::path &path);
/// The system's words.
[[nodiscard]] QString systemWords(const std::error_code &error);

/// True for a name that lists of entries cannot carry: one that holds CR, LF or TAB, or bytes that
/// are no text. Such entries are shown, never transferred or deleted.
[[nodiscard]] bool isUnusableName(const QString &name);

} // namespace venlo
