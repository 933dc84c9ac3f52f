#include "platform/EntryLook.h"

#include "platform/DiskLook_windows.h"
#include "platform/FilesystemPath.h"

namespace venlo
{

namespace
{
/// To the millisecond, like the library's; none where the file system keeps none.
QDateTime timeOf(const FILETIME &time)
{
    constexpr qint64 msFrom1601To1970 = 11'644'473'600'000;
    constexpr std::uintmax_t stepsPerMs = 10'000; // of 100 ns
    const std::uintmax_t steps = disk::sizeOf(time.dwHighDateTime, time.dwLowDateTime);
    return steps == 0 ? QDateTime()
                      : QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(steps / stepsPerMs) -
                                                       msFrom1601To1970);
}

bool isMarked(const WIN32_FIND_DATAW &found, DWORD attribute)
{
    return (found.dwFileAttributes & attribute) != 0;
}
} // namespace

std::optional<EntryLook::Itself> EntryLook::lookAtShortcut(const QString &path)
{
    if (!path.endsWith(QLatin1String(".lnk"), Qt::CaseInsensitive))
        return std::nullopt;
    WIN32_FIND_DATAW found = {};
    if (!disk::lookUp(filesystemPath(path), found))
        return Itself();
    Itself itself;
    itself.there = true;
    itself.folder = isMarked(found, FILE_ATTRIBUTE_DIRECTORY);
    itself.junction = isMarked(found, FILE_ATTRIBUTE_REPARSE_POINT) &&
                      found.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT;
    itself.link = disk::typeOf(found) == disk::file_type::symlink && !itself.junction;
    itself.hidden = isMarked(found, FILE_ATTRIBUTE_HIDDEN);
    itself.readOnly = isMarked(found, FILE_ATTRIBUTE_READONLY);
    if (!itself.folder)
        itself.size = static_cast<qint64>(disk::sizeOf(found.nFileSizeHigh, found.nFileSizeLow));
    itself.modified = timeOf(found.ftLastWriteTime);
    itself.created = timeOf(found.ftCreationTime);
    return itself;
}

EntryLook::EntryLook(const QString &path) : m_info(path), m_itself(lookAtShortcut(path)) {}

EntryLook::EntryLook(const QFileInfo &info)
    : m_info(info), m_itself(lookAtShortcut(info.filePath()))
{
}

bool EntryLook::exists() const
{
    return m_itself ? m_itself->there : m_info.exists();
}

bool EntryLook::isFile() const
{
    return m_itself ? m_itself->there && !m_itself->folder : m_info.isFile();
}

bool EntryLook::isDir() const
{
    return m_itself ? m_itself->folder : m_info.isDir();
}

bool EntryLook::isSymbolicLink() const
{
    return m_itself ? m_itself->link : m_info.isSymbolicLink();
}

bool EntryLook::isJunction() const
{
    return m_itself ? m_itself->junction : m_info.isJunction();
}

bool EntryLook::isHidden() const
{
    return m_itself ? m_itself->hidden : m_info.isHidden();
}

bool EntryLook::isReadable() const
{
    return m_itself ? m_itself->there : m_info.isReadable();
}

bool EntryLook::isWritable() const
{
    return m_itself ? m_itself->there && !m_itself->readOnly : m_info.isWritable();
}

QFile::Permissions EntryLook::permissions() const
{
    if (!m_itself)
        return m_info.permissions();
    constexpr QFile::Permissions read =
        QFile::ReadOwner | QFile::ReadUser | QFile::ReadGroup | QFile::ReadOther;
    constexpr QFile::Permissions write =
        QFile::WriteOwner | QFile::WriteUser | QFile::WriteGroup | QFile::WriteOther;
    if (isWritable())
        return read | write;
    return m_itself->there ? read : QFile::Permissions();
}

qint64 EntryLook::size() const
{
    return m_itself ? m_itself->size : m_info.size();
}

QDateTime EntryLook::lastModified() const
{
    return m_itself ? m_itself->modified : m_info.lastModified();
}

QDateTime EntryLook::birthTime() const
{
    return m_itself ? m_itself->created : m_info.birthTime();
}

} // namespace venlo
