#pragma once

#include <windows.h>

#include <QString>

#include "platform/FilesystemPath.h"

namespace venlo::test
{

/// The name of 8 and 3 characters that the file system gave an entry besides its own; empty where
/// it gives none.
[[nodiscard]] inline QString shortNameOf(const QString &path)
{
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW(filesystemPath(path).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return {};
    FindClose(search);
    return QString::fromWCharArray(found.cAlternateFileName);
}

} // namespace venlo::test
