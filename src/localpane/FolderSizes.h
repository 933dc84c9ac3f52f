#pragma once

#include <deque>
#include <filesystem>
#include <vector>

#include <QObject>
#include <QString>
#include <QTimer>

#include "platform/Disk.h"

namespace venlo
{

/// Adds up what lies below folders, a few milliseconds at a time between other events. Links are
/// not followed, and what vanishes meanwhile is left out. A folder that cannot be read whole, or
/// that holds more than 2^31-1 bytes, counts as 0.
class FolderSizes : public QObject
{
    Q_OBJECT

public:
    struct Job {
        QString key;  ///< told with the result
        QString path; ///< of the folder
    };
    explicit FolderSizes(QObject *parent = nullptr);

    /// Drops what is in hand and begins with these.
    void start(std::deque<Job> jobs);
    void stop();
    /// While it rests it opens nothing; the folder in hand is begun anew afterwards.
    void setResting(bool resting);
    /// Something is left to measure.
    [[nodiscard]] bool running() const { return !m_jobs.empty(); }

Q_SIGNALS:
    void measured(const QString &key, qint64 bytes);
    /// All were told.
    void ended();

private:
    void slice();
    void begin();
    /// One entry; false when the folder in hand is through.
    [[nodiscard]] bool step();
    void list(const std::filesystem::path &folder, std::error_code &error);
    void add(const disk::directory_entry &item, std::error_code &error);
    void finish(qint64 bytes);

    std::deque<Job> m_jobs;
    QTimer m_slices;
    std::vector<std::filesystem::path> m_waiting; ///< folders below the one in hand
    std::vector<disk::directory_entry> m_entries; ///< of the folder opened last
    qint64 m_bytes = 0;
    bool m_begun = false;
    bool m_resting = false;
};

} // namespace venlo
