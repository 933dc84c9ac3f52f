#include "platform/Interrupt.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>

namespace venlo
{

namespace
{
/// A terminal that closes and tools that end a job signal the process and then its whole group:
/// what follows within this many seconds is the same wish once more.
constexpr std::sig_atomic_t sameWish = 2;

volatile std::sig_atomic_t noted = 0;
volatile std::sig_atomic_t notedAt = 0;

std::sig_atomic_t secondsNow()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::sig_atomic_t>(now.tv_sec);
}

void note(int signal)
{
    const int error = errno;
    if (noted == 0) {
        notedAt = secondsNow();
        noted = 1;
    } else if (secondsNow() - notedAt >= sameWish) {
        std::signal(signal, SIG_DFL);
        std::raise(signal); // arrives when this handler returns
    }
    errno = error;
}

bool isIgnored(int signal)
{
    struct sigaction current = {};
    return sigaction(signal, nullptr, &current) == 0 && current.sa_handler == SIG_IGN;
}
} // namespace

void noteInterrupts()
{
    struct sigaction action = {};
    action.sa_handler = note;
    for (const int signal : std::array{SIGINT, SIGTERM, SIGHUP}) {
        if (!isIgnored(signal))
            sigaction(signal, &action, nullptr);
    }
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
