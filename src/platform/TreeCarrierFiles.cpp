#include "platform/EntryCopy.h"
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
} // namespace

void TreeCarrier::copyFile(const Path &from, const Path &to, bool replace)
{
    const Path temporary = temporaryIn(to.parent_path());
    std::error_code error;
    // A copy that something else is given up for has to be on the disk first.
    const bool durable = m_move || replace;
    const auto tick = [this](qint64 bytes) { return m_flow.advance(bytes); };
    switch (copyFileWhole(from, temporary, durable, tick, error)) {
    case CopyEnd::Done:
        intoPlace(from, temporary, to, replace);
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
    std::error_code error;
    fs::copy_symlink(from, temporary, error);
    if (error) {
        fail(from, error);
        return;
    }
    keepLook(from, temporary);
    intoPlace(from, temporary, to, replace);
}

void TreeCarrier::intoPlace(const Path &from, const Path &temporary, const Path &to, bool replace)
{
    std::error_code error;
    if (renameEntry(temporary, to, replace, error)) {
        arrived(from, false);
        return;
    }
    std::error_code ignored;
    fs::remove(temporary, ignored);
    fail(to, error);
}

void TreeCarrier::arrived(const Path &from, bool folder)
{
    if (!m_move || m_flow.stopped())
        return;
    std::error_code error;
    const bool dated = fs::symlink_status(from, error).type() == FileType::regular;
    m_arrived.push_back(
        {from, dated ? fs::last_write_time(from, error) : fs::file_time_type(), folder});
}

/// In the order of arrival, which puts a folder behind what it held. A folder that still holds
/// something (left out by the person, or new) stays; so does a file that was changed meanwhile.
void TreeCarrier::takeSourcesAway()
{
    for (const Arrived &one : m_arrived) {
        std::error_code error;
        if (one.folder) {
            if (!fs::is_empty(one.path, error) || error)
                continue;
        } else if (fs::symlink_status(one.path, error).type() == FileType::regular &&
                   fs::last_write_time(one.path, error) != one.modified) {
            fail(one.path, QStringLiteral("移動中に変更されたため､元のﾌｧｲﾙを残しました"));
            continue;
        }
        if (!fs::remove(one.path, error) && error)
            fail(one.path, error);
        if (m_flow.stopped())
            return;
    }
}

} // namespace venlo
