#include "platform/Interrupt.h"

#include <atomic>

#include <windows.h>

namespace venlo
{

namespace
{
std::atomic<int> interrupts{0};

BOOL WINAPI note(DWORD)
{
    // The first one is ours; the default handler takes the second.
    return interrupts.fetch_add(1) == 0 ? TRUE : FALSE;
}
} // namespace

void noteInterrupts()
{
    SetConsoleCtrlHandler(note, TRUE);
}

bool interrupted()
{
    return interrupts.load() != 0;
}

} // namespace venlo
