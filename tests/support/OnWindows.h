#pragma once

#include <QtGlobal>

namespace venlo::test
{

/// Whether this is Windows, for tests of what only one of the systems has:
///     if (onWindows)
///         QSKIP("why");
#ifdef Q_OS_WIN
constexpr bool onWindows = true;
#else
constexpr bool onWindows = false;
#endif

} // namespace venlo::test
