#pragma once

#include <filesystem>
#include <functional>
#include <system_error>

#include <QtGlobal>

namespace venlo
{

enum class CopyEnd { Done, Cancelled, Failed };

/// Told the bytes of every chunk; false cancels.
using CopyTick = std::function<bool(qint64 bytes)>;

/// Copies a file's content, times and permissions into a file that must not exist yet, which is
/// gone again unless the copy is whole. durable: forced to the disk.
[[nodiscard]] CopyEnd copyFileWhole(const std::filesystem::path &from,
                                    const std::filesystem::path &to, bool durable,
                                    const CopyTick &tick, std::error_code &why);

/// Gives an entry the times of another one, and a folder its permissions (on Windows
/// its attributes) too; links are not
/// followed. What the system refuses here is left.
void keepLook(const std::filesystem::path &from, const std::filesystem::path &to);

/// Renames within one file system; without replace it fails when the target exists.
[[nodiscard]] bool renameEntry(const std::filesystem::path &from, const std::filesystem::path &to,
                               bool replace, std::error_code &why);

/// Makes what was renamed into a folder survive a power cut, where the system can.
void flushFolder(const std::filesystem::path &folder);

} // namespace venlo
