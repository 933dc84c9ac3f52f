#pragma once

#ifdef _WIN32
#include "platform/EntryLook_windows.h"
#else

#include <QFileInfo>

namespace venlo
{

/// What looks at one file or folder goes through this name: the library does it where it can. On
/// Windows it takes a shortcut for what it leads to.
using EntryLook = QFileInfo;

} // namespace venlo

#endif
