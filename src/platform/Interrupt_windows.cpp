#include "platform/Interrupt.h"

#include <atomic>

#include <windows.h>

namespace venlo
{

namespace
{
std::atomic<int> interrupts{0};

BOOL WINAPI note(DWORD kind)
{
    const bool first = interrupts.fetch_add(1) == 0;
    // A closing console and the end of the session end the process as soon as this returns. The
    // system waits some seconds for it, in which the run ends by itself.
    if (first && kind != CTRL_C_EVENT && kind != CTRL_BREAK_EVENT)
        Sleep(INFINITE);
    // The first one is ours; the default handler takes the second.
    return first ? TRUE : FALSE;
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
