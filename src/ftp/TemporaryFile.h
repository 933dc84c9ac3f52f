#pragma once

#include "ftp/DownloadJournal.h"
#include "shared/Result.h"

#include <QDateTime>
#include <QFile>
#include <QString>

#include <functional>

namespace venlo
{

/// A download in the making: a file under a temporary name beside its target, noted in the
/// journal while it is written. Deleted with this object unless it took the target's place.
class TemporaryFile
{
public:
    TemporaryFile(DownloadJournal &journal, const QString &folder);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    [[nodiscard]] Result<void> open();
    [[nodiscard]] QIODevice &device() { return m_file; }
    /// Bytes that a disk takes longer to put down than an eye sees.
    static constexpr qint64 large = 8LL * 1024 * 1024;
    using Aside = std::function<void(const std::function<void()> &work)>;
    /// Forces the content to the disk, which is due before it takes the place of something else.
    /// aside runs what may take long.
    [[nodiscard]] Result<void> flush(const Aside &aside);
    /// Sets the time where it is valid and replaces the target in one step. On failure the target
    /// is as it was. timeSet turns false when the file system does not take the time, which is no
    /// failure. What is left to do once for many: the journal's end(), and flushFolder().
    [[nodiscard]] Result<void> replace(const QString &target, qint64 size, const QDateTime &time,
                                       bool &timeSet);

private:
    void close();
    [[nodiscard]] QString notedPath() const;

    DownloadJournal &m_journal;
    QFile m_file;
    QString m_lies; ///< where the system says it is, once it is closed
    bool m_there = false;
};

} // namespace venlo
