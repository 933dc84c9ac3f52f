#include "ftp/TemporaryFile.h"

#include "ftp/LocalPath.h"
#include "platform/EntryLook.h"
#include "platform/Files.h"
#include "platform/TemporaryName.h"

#include <QFileInfo>

namespace venlo
{

TemporaryFile::TemporaryFile(DownloadJournal &journal, const QString &folder)
    : m_journal(journal), m_file(localChild(folder, newTemporaryName()))
{
}

TemporaryFile::~TemporaryFile()
{
    if (!m_there)
        return;
    close();
    if (!m_file.remove() && isTemporaryName(localName(m_lies)))
        QFile::remove(m_lies);
    m_journal.forget(notedPath());
}

QString TemporaryFile::notedPath() const
{
    return QFileInfo(m_file.fileName()).absoluteFilePath();
}

/// A folder above the file may have been moved, and a link or nothing be in its place.
void TemporaryFile::close()
{
    if (!m_file.isOpen())
        return;
    m_lies = presentPath(m_file);
    m_file.close();
}

Result<void> TemporaryFile::open()
{
    m_journal.begin(notedPath());
    m_there = m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly);
    if (m_there)
        return {};
    m_journal.forget(notedPath());
    return Error{ErrorClass::Local, m_file.errorString(), 0};
}

Result<void> TemporaryFile::flush(const Aside &aside)
{
    bool flushed = m_file.flush();
    const auto putOnDisk = [&] { flushed = flushed && flushToDisk(m_file); };
    if (m_file.size() >= large)
        aside(putOnDisk);
    else
        putOnDisk();
    return flushed ? Result<void>() : Error{ErrorClass::Local, m_file.errorString(), 0};
}

Result<void> TemporaryFile::replace(const QString &target, qint64 size, const QDateTime &time,
                                    bool &timeSet)
{
    if (m_file.size() != size)
        return Error{ErrorClass::Retry, QStringLiteral("受信した大きさが一致しません"), 0};
    const EntryLook old(target);
    if (old.exists() && !old.isSymbolicLink())
        m_file.setPermissions(old.permissions());
    close();
    if (m_file.error() != QFileDevice::NoError)
        return Error{ErrorClass::Local, m_file.errorString(), 0};
    timeSet = !time.isValid() || setModifiedTime(m_file.fileName(), time);
    if (!replaceFile(m_file.fileName(), target, FolderFlush::Later))
        return Error{ErrorClass::Local, QStringLiteral("ﾌｧｲﾙを置き換えられません"), 0};
    m_there = false;
    return {};
}

} // namespace venlo
