#include <QFile>

#include "platform/Disk.h"
#include "platform/EntryCopy.h"
#include "platform/EntryNames.h"
#include "platform/FilesystemPath.h"
#include "platform/TemporaryName.h"
#include "platform/TreeCarrier.h"

namespace venlo
{

namespace fs = std::filesystem;

namespace
{
fs::path temporaryIn(const fs::path &folder)
{
    return folder / newTemporaryName().toStdString();
}

/// What cannot be looked at counts as absent: counting on from there would never end.
bool isThere(const fs::path &path)
{
    std::error_code error;
    const fs::file_type type = disk::symlink_status(path, error).type();
    return type != fs::file_type::not_found && type != fs::file_type::none;
}
} // namespace

TreeCarrier::Path TreeCarrier::nameOfCopy(const Path &from) const
{
    std::error_code error;
    const QString name = shownPath(from.filename());
    const qsizetype dot = fs::is_directory(disk::symlink_status(from, error))
                              ? -1
                              : name.lastIndexOf(QLatin1Char('.'));
    const QString extension = dot > 0 ? name.mid(dot) : QString();
    constexpr qsizetype longest = 215; // bytes of 255, with room for what is added and a number
    const QString stem = shortenedName(dot > 0 ? name.left(dot) : name,
                                       longest - QFile::encodeName(extension).size()) +
                         QStringLiteral(" - ｺﾋﾟｰ");
    const QString folder = shownPath(m_to) + QLatin1Char('/');
    Path path = filesystemPath(folder + stem + extension);
    for (int number = 2; isThere(path); ++number)
        path = filesystemPath(folder + stem + QStringLiteral(" (%1)").arg(number) + extension);
    return path;
}

void TreeCarrier::copyFile(const Path &from, const Path &to, bool replace)
{
    const Path temporary = temporaryIn(to.parent_path());
    const Source source = lookAt(from);
    std::error_code error;
    // A copy that something else is given up for has to be on the disk first.
    const bool durable = m_move || replace;
    const auto tick = [this](qint64 bytes) { return m_flow.advance(bytes); };
    switch (copyFileWhole(from, temporary, durable, tick, error)) {
    case CopyEnd::Done:
        intoPlace(source, temporary, to, replace);
        break;
    case CopyEnd::Failed:
        fail(from, error);
        break;
    case CopyEnd::Cancelled:
        m_flow.cancel();
        break;
    }
}

void TreeCarrier::copyLink(const Path &from, const Path &to, bool replace)
{
    const Path temporary = temporaryIn(to.parent_path());
    const Source source = lookAt(from);
    std::error_code error;
    disk::copy_symlink(from, temporary, error);
    if (error) {
        fail(from, error);
        return;
    }
    keepLook(from, temporary);
    intoPlace(source, temporary, to, replace);
}

void TreeCarrier::intoPlace(const Source &from, const Path &temporary, const Path &to, bool replace)
{
    std::error_code error;
    if (renameEntry(temporary, to, replace, error)) {
        arrived(from, to.parent_path());
        return;
    }
    std::error_code ignored;
    disk::remove(temporary, ignored);
    fail(to, error);
}

TreeCarrier::Source TreeCarrier::lookAt(const Path &path)
{
    std::error_code error;
    Source found{path, disk::symlink_status(path, error).type(), {}, 0};
    if (found.type == FileType::regular) {
        found.modified = disk::last_write_time(path, error);
        found.size = disk::file_size(path, error);
    }
    return found;
}

/// Both are one file or folder, or a link would take the place of what it points to: afterwards
/// there would be none. A link may well give way to what it points to.
bool TreeCarrier::isSame(const Path &from, const Path &to)
{
    std::error_code error;
    return disk::symlink_status(to, error).type() != FileType::symlink &&
           disk::equivalent(from, to, error);
}

void TreeCarrier::arrived(const Source &from, const Path &into)
{
    if (!m_move || m_flow.stopped())
        return;
    m_arrived.push_back(from);
    if (m_copying)
        m_filled.insert(into);
}

/// The names of the copies are on the disk too before the first source goes. False when cancelled.
bool TreeCarrier::copiesAreSafe()
{
    for (const Path &folder : m_filled) {
        flushFolder(folder);
        if (!m_flow.advance(0))
            return false;
    }
    return true;
}

/// In the order of arrival, which puts a folder behind what it held.
void TreeCarrier::takeSourcesAway()
{
    if (!copiesAreSafe())
        return;
    for (const Source &one : m_arrived) {
        takeAway(one, &one != &m_arrived.back());
        if (m_flow.stopped())
            return;
    }
}

/// A folder that still holds something (left out by the person, or new) stays; so does a file that
/// is no longer as it was when its copy was begun.
void TreeCarrier::takeAway(const Source &source, bool more)
{
    const Source now = lookAt(source.path);
    if (now.type == FileType::not_found)
        return;
    if (now != source) {
        m_flow.fail(source.path, QStringLiteral("移動中に変更されたため､元のﾌｧｲﾙを残しました"),
                    more);
        return;
    }
    std::error_code error;
    if (now.type == FileType::directory && (!disk::is_empty(source.path, error) || error))
        return;
    if (!disk::remove(source.path, error) && error)
        m_flow.fail(source.path, systemWords(error), more);
}

} // namespace venlo
