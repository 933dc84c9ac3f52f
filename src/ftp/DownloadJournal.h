#pragma once

#include <memory>

#include <QFile>
#include <QString>
#include <QStringList>

class QLockFile;

namespace venlo
{

/// Remembers in the user data folder which temporary files a download writes, so that the next
/// start can delete what a killed program left behind. One journal a process, held by a lock as
/// long as the process lives, so that a second window never sweeps the first one's download.
class DownloadJournal
{
public:
    /// Sweeps what dead processes noted. userDataFolder may end with a separator.
    explicit DownloadJournal(const QString &userDataFolder);
    ~DownloadJournal();
    DownloadJournal(const DownloadJournal &) = delete;
    DownloadJournal &operator=(const DownloadJournal &) = delete;

    /// Notes the file in progress, and the one before it, which may be on its way to its place.
    /// A journal that cannot be written is no reason not to download.
    void begin(const QString &temporaryPath);
    /// A file that came to nothing.
    void forget(const QString &temporaryPath);
    /// Nothing is in progress any more. Once for many files that follow each other is enough: a
    /// note of a file that is not there does no harm while the process lives.
    void end();
    /// What the downloads of all living processes write at present, absolute paths.
    [[nodiscard]] QStringList live() const;

private:
    [[nodiscard]] bool open();
    void write();
    void empty();
    void sweep();
    void sweepLocks();

    QString m_folder;
    QFile m_file;
    QStringList m_noted; ///< the file in progress, and the one before
    qint64 m_length = 0; ///< bytes of the note
    std::unique_ptr<QLockFile> m_lock;
};

} // namespace venlo
