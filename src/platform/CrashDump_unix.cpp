#include "platform/CrashDump.h"

#ifdef __linux__
#include <sys/prctl.h>
#endif
#include <sys/resource.h>

namespace venlo
{

void keepMemoryOutOfCrashDumps()
{
#ifdef __linux__
    // Unlike a limit this also holds where cores go to a program, ends with the next exec, and
    // keeps other processes of the same user from attaching.
    if (prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) == 0)
        return;
#endif
    rlimit limit = {};
    if (getrlimit(RLIMIT_CORE, &limit) != 0)
        return;
    limit.rlim_cur = 0;
    setrlimit(RLIMIT_CORE, &limit);
}

} // namespace venlo
