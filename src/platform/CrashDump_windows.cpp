#include "platform/CrashDump.h"

#include <windows.h>

namespace venlo
{

void keepMemoryOutOfCrashDumps()
{
    // Error reports come without the heap, where the passwords are. By its name: not every
    // compiler's import library knows the function (WerSetFlags, Windows Vista).
    using SetFlags = HRESULT(WINAPI *)(DWORD);
    constexpr DWORD noHeap = 1; // WER_FAULT_REPORTING_FLAG_NOHEAP
    const HMODULE system = GetModuleHandleW(L"kernel32.dll");
    const FARPROC found = system == nullptr ? nullptr : GetProcAddress(system, "WerSetFlags");
    if (found != nullptr)
        reinterpret_cast<SetFlags>(reinterpret_cast<void *>(found))(noHeap);
}

} // namespace venlo
