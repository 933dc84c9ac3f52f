#pragma once

#include <QString>

namespace venlo
{

/// The command line behind the program's name: as the system holds it on Windows, without the
/// quotation marks that a shell needs around all of it; elsewhere the arguments joined with one
/// blank.
[[nodiscard]] QString rawCommandLine(int argc, char **argv);

/// The executable's file name without ".exe" and its folder with a trailing separator.
[[nodiscard]] QString executableBaseName();
[[nodiscard]] QString executableFolder();

/// True where a window can be shown: always on Windows; elsewhere when a display server is named
/// in the environment and answers, or QT_QPA_PLATFORM asks for a platform of its own.
[[nodiscard]] bool hasDisplay();

} // namespace venlo
