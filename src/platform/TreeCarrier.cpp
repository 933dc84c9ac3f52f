#include "platform/TreeCarrier.h"

#include "platform/Disk.h"
#include "platform/EntryCopy.h"
#include "platform/FilesystemPath.h"

namespace venlo
{

namespace fs = std::filesystem;

namespace
{
fs::file_type typeOf(const fs::path &path)
{
    std::error_code error;
    return disk::symlink_status(path, error).type();
}
} // namespace

TreeCarrier::TreeCarrier(const ShellFileOrder &order, ShellFileWatcher &watcher,
                         ShellFileFlow &flow)
    : m_watcher(watcher), m_flow(flow), m_move(order.verb == ShellVerb::Move),
      m_noConfirm(order.noConfirm), m_to(filesystemPath(order.to))
{
}

void TreeCarrier::carry(const Path &from)
{
    std::error_code error;
    const bool sameFolder = disk::equivalent(from.parent_path(), m_to, error);
    if (sameFolder && m_move)
        return; // it is where it is to go
    if (typeOf(from) == fs::file_type::directory && isBelow(m_to, from)) {
        m_flow.fail(from, QStringLiteral(
                              "ﾌｫﾙﾀﾞを自分自身またはその中のﾌｫﾙﾀﾞへ移動･複写することはできません"));
        return;
    }
    carryTo(from, sameFolder ? nameOfCopy(from) : m_to / from.filename());
}

void TreeCarrier::carryTo(const Path &from, const Path &to)
{
    m_copying = !m_move;
    m_arrived.clear();
    m_filled.clear();
    const int failures = m_flow.failures();
    carryEntry(from, to, false);
    // Nothing of a move goes unless everything that was to go has arrived.
    if (m_move && !m_flow.stopped() && m_flow.failures() == failures)
        takeSourcesAway();
}

/// inMerge: the person agreed to merge the folder this lies in.
void TreeCarrier::carryEntry(const Path &from, const Path &to, bool inMerge)
{
    if (m_flow.stopped() || !m_flow.begin(from))
        return;
    std::error_code error;
    const FileType type = disk::symlink_status(from, error).type();
    if (type == FileType::not_found || type == FileType::none) {
        fail(from, error ? error : std::make_error_code(std::errc::no_such_file_or_directory));
        return;
    }
    const FileType there = disk::symlink_status(to, error).type();
    if (there == FileType::none) {
        fail(to, error);
        return;
    }
    const bool replace = there != FileType::not_found;
    const bool folder = type == FileType::directory;
    if (replace && isSame(from, to)) {
        fail(from, QStringLiteral("元と先が同じものです"));
        return;
    }
    if (replace && folder && there == FileType::directory) {
        mergeFolders(from, to, inMerge);
        return;
    }
    if (replace && (folder || there == FileType::directory)) {
        fail(from, there == FileType::directory ? QStringLiteral("同じ名前のﾌｫﾙﾀﾞが既にあります")
                                                : QStringLiteral("同じ名前のﾌｧｲﾙが既にあります"));
        return;
    }
    if (replace && !mayReplace(from, to, false))
        return;
    if (!m_move || !renamed(from, to, replace))
        copyEntry(from, to, type, replace);
}

void TreeCarrier::mergeFolders(const Path &from, const Path &to, bool inMerge)
{
    if (!inMerge && !mayReplace(from, to, true))
        return;
    copyContent(from, to, true);
    arrived(lookAt(from), to);
}

/// True when the move of this entry is settled, done or failed; false when it has to be copied.
bool TreeCarrier::renamed(const Path &from, const Path &to, bool replace)
{
    std::error_code error;
    if (m_copying)
        return false;
    if (renameEntry(from, to, replace, error))
        return true;
    if (error != std::errc::cross_device_link) {
        fail(from, error);
        return true;
    }
    m_copying = true;
    return !m_flow.measure(from);
}

void TreeCarrier::copyEntry(const Path &from, const Path &to, FileType type, bool replace)
{
    if (m_flow.stopped())
        return;
    if (type == FileType::directory)
        copyFolder(from, to);
    else if (type == FileType::symlink)
        copyLink(from, to, replace);
    else if (type == FileType::regular)
        copyFile(from, to, replace);
    else
        fail(from, QStringLiteral("通常のﾌｧｲﾙではないため複写できません"));
}

void TreeCarrier::copyFolder(const Path &from, const Path &to)
{
    std::error_code error;
    if (!disk::create_directory(to, error)) {
        fail(to, error ? error : std::make_error_code(std::errc::file_exists));
        return;
    }
    // Until it is as private as the source nobody else is to look in.
    disk::permissions(to, fs::perms::owner_all, error);
    copyContent(from, to, true);
    // Last: filling it changed its time, and a read-only one could not have been filled.
    keepLook(from, to);
    if (m_flow.stopped())
        return;
    arrived(lookAt(from), to.parent_path());
}

void TreeCarrier::copyContent(const Path &from, const Path &to, bool inMerge)
{
    std::error_code error;
    // All names first: what is made meanwhile is not walked, and the folder is closed again.
    std::vector<Path> entries;
    for (disk::directory_iterator it(from, error); !error && it != disk::directory_iterator();
         it.increment(error))
        entries.push_back(it->path());
    if (error)
        fail(from, error);
    ++m_depth;
    for (const Path &entry : entries)
        carryEntry(entry, to / entry.filename(), inMerge);
    --m_depth;
}

bool TreeCarrier::mayReplace(const Path &from, const Path &to, bool folders)
{
    bool &all = folders ? m_yesToAllFolders : m_yesToAllFiles;
    if (m_noConfirm || all)
        return true;
    switch (m_watcher.clash({shownPath(to), shownPath(from), folders})) {
    case ShellAnswer::YesToAll:
        all = true;
        return true;
    case ShellAnswer::Yes:
        return true;
    case ShellAnswer::No:
        m_flow.leaveOut();
        return false;
    case ShellAnswer::Cancel:
        break;
    }
    m_flow.cancel();
    return false;
}

/// True when the folder is that one or lies in it.
bool TreeCarrier::isBelow(const Path &folder, const Path &top) const
{
    std::error_code error;
    for (Path at = disk::canonical(folder, error); !error; at = at.parent_path()) {
        if (disk::equivalent(at, top, error))
            return true;
        if (at == at.parent_path())
            break;
    }
    return false;
}

void TreeCarrier::fail(const Path &entry, const std::error_code &why)
{
    fail(entry, systemWords(why));
}

void TreeCarrier::fail(const Path &entry, const QString &why)
{
    m_flow.fail(entry, why, m_depth > 0);
}

} // namespace venlo
