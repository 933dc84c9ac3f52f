#include "platform/CrashDump.h"

#include <windows.h>

#include <werapi.h>

namespace venlo
{

void keepMemoryOutOfCrashDumps()
{
    // Error reports come without the heap, where the passwords are.
    WerSetFlags(WER_FAULT_REPORTING_FLAG_NOHEAP);
}

} // namespace venlo
