#pragma once

#include <QString>
#include <QStringList>

namespace venlo::test
{

/// The source tree that this test was built from.
[[nodiscard]] QString sourceRoot();

/// Files below a folder whose name matches one of the patterns, relative to it, sorted. Build
/// trees, caches and the history are no sources.
[[nodiscard]] QStringList sourceFiles(const QString &folder, const QStringList &patterns);

/// A text file as it stands; a file that cannot be read fails the process, never a check.
[[nodiscard]] QString readSource(const QString &path);

} // namespace venlo::test
