#pragma once

#include <filesystem>

#include <QByteArray>
#include <QDateTime>
#include <QString>

namespace venlo::test
{

// Local files by raw bytes, because servers have names that are no text in any encoding of ours. On
// Windows, where names are text, the bytes are UTF-8.

[[nodiscard]] QByteArray rawPath(const QString &path);
/// With "/" between the names.
[[nodiscard]] QByteArray rawPath(const std::filesystem::path &path);
[[nodiscard]] std::filesystem::path diskPath(const QByteArray &path);

/// Writes a whole file and, when it is valid, its last-write time. False on any failure.
[[nodiscard]] bool writeFile(const QByteArray &path, const QByteArray &bytes,
                             const QDateTime &modified = {});
/// Bytes of a file; null when it cannot be read.
[[nodiscard]] QByteArray readFile(const QByteArray &path);
/// Makes a folder and those above it.
[[nodiscard]] bool makeFolders(const QByteArray &path);
/// UTC, of the entry itself; invalid when there is none.
[[nodiscard]] QDateTime modifiedTime(const QByteArray &path);

} // namespace venlo::test
