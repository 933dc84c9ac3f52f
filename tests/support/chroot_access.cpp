// Preloaded into vsftpd. It refuses an anonymous login whose "/" is writable, and has no setting
// for that. The tests publish into the root of a throwaway folder, so this one question ("may I
// write to /?") is answered with no; every other one goes to the system.
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

extern "C" int access(const char *path, int mode) noexcept
{
    if (mode == W_OK && std::strcmp(path, "/") == 0) {
        errno = EACCES;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_faccessat, AT_FDCWD, path, mode));
}
