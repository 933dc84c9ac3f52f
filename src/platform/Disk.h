#pragma once

#include <filesystem>

#ifdef _WIN32
#include "platform/Disk_windows.h"
#else

namespace venlo
{

/// What looks at the disk goes through this name: the standard library does it where it can. On
/// Windows it may stand on a C library that knows neither paths beyond 260 characters nor links.
namespace disk = std::filesystem;

} // namespace venlo

#endif
