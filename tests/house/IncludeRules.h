#pragma once

#include <QString>
#include <QStringList>

namespace venlo::test
{

/// The house plan's arrows, read off the #include lines. One finding per wrong line, as
/// "file: header: why"; empty when the plan holds.
[[nodiscard]] QStringList wrongIncludes(const QString &sourceFolder);

} // namespace venlo::test
