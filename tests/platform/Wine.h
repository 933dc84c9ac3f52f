#pragma once

#ifdef _WIN32
#include <windows.h>
#endif

namespace venlo::test
{

/// Whether the program runs under Wine, which has not all of the system.
[[nodiscard]] inline bool underWine()
{
#ifdef _WIN32
    const HMODULE system = GetModuleHandleW(L"ntdll.dll");
    return system != nullptr && GetProcAddress(system, "wine_get_version") != nullptr;
#else
    return false;
#endif
}

} // namespace venlo::test
