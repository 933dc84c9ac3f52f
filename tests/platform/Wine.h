#pragma once

#include <windows.h>

namespace venlo::test
{

/// Whether the program runs under Wine, which has not all of the system.
[[nodiscard]] inline bool underWine()
{
    const HMODULE system = GetModuleHandleW(L"ntdll.dll");
    return system != nullptr && GetProcAddress(system, "wine_get_version") != nullptr;
}

} // namespace venlo::test
