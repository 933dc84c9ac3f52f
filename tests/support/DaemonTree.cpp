// The part of FtpDaemon that works on the served folder. Paths are raw bytes, because servers have
// names that are no text in any encoding of ours.
#include "support/FtpDaemon.h"

#include "support/RawFiles.h"

#include <cerrno>
#include <filesystem>

#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

namespace venlo::test
{

namespace
{

namespace fs = std::filesystem;

/// Gives one item to the daemon's account; without root it is this user's own already.
void giveAway(const fs::path &path)
{
    if (::geteuid() == 0 && ::lchown(path.c_str(), daemonUid, daemonUid) != 0)
        qWarning("cannot hand %s to the daemon: errno %d", path.c_str(), errno);
}

} // namespace

QByteArray FtpDaemon::rawPath(const QByteArray &path) const
{
    const bool needsSlash = !path.isEmpty() && !path.startsWith('/');
    return QFile::encodeName(m_options.root) + (needsSlash ? "/" : "") + path;
}

void FtpDaemon::own() const
{
    std::error_code error;
    const fs::path root(rawPath({}).toStdString());
    giveAway(root);
    for (const auto &entry : fs::recursive_directory_iterator(root, error))
        giveAway(entry.path());
}

void FtpDaemon::removeRoot() const
{
    std::error_code error;
    if (m_ownRoot)
        fs::remove_all(rawPath({}).toStdString(), error);
}

bool FtpDaemon::makeFolder(const QByteArray &path) const
{
    fs::path current(rawPath({}).toStdString());
    const QList<QByteArray> parts = path.split('/');
    for (const QByteArray &part : parts) {
        if (part.isEmpty())
            continue;
        current /= part.toStdString();
        if (::mkdir(current.c_str(), 0755) == 0)
            giveAway(current);
        else if (errno != EEXIST)
            return false;
    }
    return fs::is_directory(current);
}

bool FtpDaemon::put(const QByteArray &path, const QByteArray &bytes,
                    const QDateTime &modified) const
{
    const auto slash = path.lastIndexOf('/');
    if (slash > 0 && !makeFolder(path.left(slash)))
        return false;
    if (!writeFile(rawPath(path), bytes, modified))
        return false;
    giveAway(rawPath(path).toStdString());
    return true;
}

QByteArray FtpDaemon::file(const QByteArray &path) const
{
    return readFile(rawPath(path));
}

bool FtpDaemon::exists(const QByteArray &path) const
{
    std::error_code error;
    return fs::symlink_status(rawPath(path).toStdString(), error).type() !=
           fs::file_type::not_found;
}

} // namespace venlo::test
