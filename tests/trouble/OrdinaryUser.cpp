#include "trouble/OrdinaryUser.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <grp.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <QFile>

namespace venlo::test
{

namespace
{
constexpr uid_t nobody = 65534;
constexpr const char *mountOptions = "size=6m,mode=0777";

QString &diskPath()
{
    static QString path;
    return path;
}

void writeTo(const char *path, const QByteArray &text)
{
    const int fd = open(path, O_WRONLY | O_CLOEXEC);
    if (fd < 0)
        return;
    if (write(fd, text.constData(), static_cast<size_t>(text.size())) < 0)
        std::fprintf(stderr, "%s: %s\n", path, std::strerror(errno));
    close(fd);
}

/// A view of the file systems of this process's own. Who is not root needs a user namespace for
/// it, in which they stay who they are.
bool ownMounts()
{
    if (geteuid() == 0)
        return unshare(CLONE_NEWNS) == 0;
    const QByteArray user = QByteArray::number(geteuid());
    const QByteArray group = QByteArray::number(getegid());
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
        return false;
    writeTo("/proc/self/setgroups", "deny");
    writeTo("/proc/self/uid_map", user + ' ' + user + " 1\n");
    writeTo("/proc/self/gid_map", group + ' ' + group + " 1\n");
    return true;
}

void mountSmallDisk()
{
    if (!ownMounts() || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return;
    // Nothing else of the machine is below it, and everybody else goes on seeing what is there.
    constexpr const char *place = "/mnt";
    if (mount("none", place, "tmpfs", MS_NOSUID | MS_NODEV, mountOptions) == 0)
        diskPath() = QString::fromLatin1(place);
}

void giveUpRights()
{
    if (geteuid() == 0 && (setgroups(0, nullptr) != 0 || setresgid(nobody, nobody, nobody) != 0 ||
                           setresuid(nobody, nobody, nobody) != 0)) {
        std::perror("cannot become an ordinary user");
        std::exit(EXIT_FAILURE);
    }
    // The user namespace's creator has every right in it.
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> none{};
    if (syscall(SYS_capset, &header, none.data()) != 0)
        std::perror("capset");
    prctl(PR_SET_DUMPABLE, 1); // or the sanitizers could not look at the process
}
} // namespace

void becomeOrdinaryUser()
{
    mountSmallDisk();
    giveUpRights();
}

QString smallDisk()
{
    return diskPath();
}

} // namespace venlo::test
