#pragma once

#include <QByteArray>
#include <QDateTime>

namespace venlo::test
{

// Local files by raw bytes, because servers have names that are no text in any encoding of ours.

/// Writes a whole file and, when it is valid, its last-write time. False on any failure.
[[nodiscard]] bool writeFile(const QByteArray &path, const QByteArray &bytes,
                             const QDateTime &modified = {});
/// Bytes of a file; null when it cannot be read.
[[nodiscard]] QByteArray readFile(const QByteArray &path);
/// Makes a folder and those above it.
[[nodiscard]] bool makeFolders(const QByteArray &path);

} // namespace venlo::test
