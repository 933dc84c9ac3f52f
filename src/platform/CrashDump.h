#pragma once

namespace venlo
{

/// Keeps this process's memory, which holds passwords while a site is connected, out of what the
/// system writes when the process dies. Programs that it starts are as they would be. Call it
/// first of all.
void keepMemoryOutOfCrashDumps();

} // namespace venlo
