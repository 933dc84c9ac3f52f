#include "platform/Interrupt.h"

#include <array>
#include <csignal>

namespace venlo
{

namespace
{
volatile std::sig_atomic_t noted = 0;

void note(int)
{
    noted = 1;
}
} // namespace

void noteInterrupts()
{
    struct sigaction action = {};
    action.sa_handler = note;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int signal : std::array{SIGINT, SIGTERM, SIGHUP})
        sigaction(signal, &action, nullptr);
    // A reader of our output that went away must not end a run that deletes and uploads.
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &ignore, nullptr);
}

bool interrupted()
{
    return noted != 0;
}

} // namespace venlo
