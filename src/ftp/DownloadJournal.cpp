#include "ftp/DownloadJournal.h"

#include "platform/Files.h"
#include "platform/TemporaryName.h"

#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QUuid>

#include <algorithm>

namespace venlo
{

namespace
{
constexpr QLatin1String prefix("Downloads-");
constexpr QLatin1String suffix(".pending");
constexpr QLatin1String lockSuffix(".lock");
constexpr qint64 longestNote = 131072; // bytes
constexpr QChar separator(u'\0');      // which no path holds

/// A lock that only the end of its process makes stale.
std::unique_ptr<QLockFile> lockOf(const QString &journal)
{
    auto lock = std::make_unique<QLockFile>(journal + lockSuffix);
    lock->setStaleLockTime(0);
    return lock;
}

QStringList journalsIn(const QDir &folder, const QString &ending)
{
    QStringList names = folder.entryList(QDir::Files | QDir::Hidden, QDir::Name);
    names.removeIf([&ending](const QString &name) {
        return !name.startsWith(prefix) || !name.endsWith(ending);
    });
    return names;
}

QStringList notedIn(QFile &journal)
{
    return QString::fromUtf8(journal.read(longestNote)).split(separator, Qt::SkipEmptyParts);
}

/// True when nothing is left to do for a path.
bool sweepPath(const QString &path)
{
    const QFileInfo target(path);
    if (!isTemporaryName(target.fileName()) || !target.isAbsolute())
        return true;
    if (!QFileInfo::exists(target.path()))
        return false; // a drive that is not there now may come back
    return QFile::remove(path) || !QFileInfo::exists(path);
}

/// True when nothing is left to do for the journal.
bool sweepNoted(const QString &journal)
{
    QFile file(journal);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QStringList noted = notedIn(file);
    return std::count_if(noted.begin(), noted.end(), sweepPath) == noted.size();
}
} // namespace

DownloadJournal::DownloadJournal(const QString &userDataFolder) : m_folder(userDataFolder)
{
    sweep();
}

DownloadJournal::~DownloadJournal()
{
    if (!m_file.isOpen())
        return;
    m_file.close();
    m_file.remove();
}

void DownloadJournal::sweep()
{
    const QDir folder(m_folder);
    for (const QString &name : journalsIn(folder, suffix)) {
        const QString journal = folder.filePath(name);
        const auto lock = lockOf(journal);
        if (lock->tryLock(0) && sweepNoted(journal))
            QFile::remove(journal);
    }
    sweepLocks();
}

/// A process that was killed before its journal was there leaves a lock alone.
void DownloadJournal::sweepLocks()
{
    const QDir folder(m_folder);
    for (const QString &name : journalsIn(folder, suffix + lockSuffix)) {
        const QString journal = folder.filePath(name.chopped(lockSuffix.size()));
        if (!QFile::exists(journal))
            (void)lockOf(journal)->tryLock(0); // takes a dead one's place, and goes with it
    }
}

QStringList DownloadJournal::live() const
{
    const QDir folder(m_folder);
    QStringList paths;
    for (const QString &name : journalsIn(folder, suffix)) {
        QFile journal(folder.filePath(name));
        const bool own = journal.fileName() == m_file.fileName();
        if (own || lockOf(journal.fileName())->tryLock(0) || !journal.open(QIODevice::ReadOnly))
            continue;
        paths.append(notedIn(journal));
    }
    return paths;
}

bool DownloadJournal::open()
{
    if (m_file.isOpen())
        return true;
    if (m_lock)
        return false; // tried before
    const QString name = prefix + QUuid::createUuid().toString(QUuid::Id128).left(16) + suffix;
    m_file.setFileName(QDir(m_folder).filePath(name));
    m_lock = lockOf(m_file.fileName());
    if (!m_lock->tryLock(0))
        return false;
    makePrivateFile(m_lock->fileName());
    return m_file.open(QIODevice::ReadWrite | QIODevice::Unbuffered,
                       QFileDevice::ReadOwner | QFileDevice::WriteOwner);
}

void DownloadJournal::begin(const QString &temporaryPath)
{
    if (!open())
        return;
    m_noted = QStringList(temporaryPath) + m_noted.mid(0, 1);
    write();
}

void DownloadJournal::forget(const QString &temporaryPath)
{
    if (m_noted.removeAll(temporaryPath) > 0)
        write();
}

void DownloadJournal::write()
{
    const QByteArray note = m_noted.join(separator).toUtf8();
    if (note.size() < m_length)
        empty();
    if (!note.isEmpty() && m_file.seek(0))
        m_length = std::max(m_length, m_file.write(note));
}

void DownloadJournal::end()
{
    m_noted.clear();
    empty();
}

void DownloadJournal::empty()
{
    if (m_length > 0 && m_file.resize(0))
        m_length = 0;
}

} // namespace venlo
