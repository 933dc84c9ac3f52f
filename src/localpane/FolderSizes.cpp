#include "localpane/FolderSizes.h"

#include <limits>
#include <system_error>

#include <QElapsedTimer>
#include <QFileInfo>

#include "ftp/LocalPath.h"
#include "platform/FilesystemPath.h"

namespace venlo
{

namespace
{
namespace fs = std::filesystem;
constexpr qint64 sliceMilliseconds = 5;
constexpr qint64 largest = std::numeric_limits<qint32>::max();
} // namespace

FolderSizes::FolderSizes(QObject *parent) : QObject(parent)
{
    m_slices.setInterval(0);
    connect(&m_slices, &QTimer::timeout, this, &FolderSizes::slice);
}

void FolderSizes::start(std::deque<Job> jobs)
{
    stop();
    m_jobs = std::move(jobs);
    if (!m_jobs.empty() && !m_resting)
        m_slices.start();
}

void FolderSizes::setResting(bool resting)
{
    m_resting = resting;
    m_begun = false;
    if (resting)
        m_slices.stop();
    else if (!m_jobs.empty())
        m_slices.start();
}

void FolderSizes::stop()
{
    m_slices.stop();
    m_jobs.clear();
    m_waiting.clear();
    m_entries.clear();
    m_begun = false;
}

void FolderSizes::slice()
{
    QElapsedTimer clock;
    clock.start();
    while (!m_jobs.empty() && clock.elapsed() < sliceMilliseconds) {
        if (!m_begun)
            begin();
        else if (!step())
            finish(m_bytes);
    }
    if (!m_jobs.empty())
        return;
    stop();
    Q_EMIT ended();
}

void FolderSizes::begin()
{
    m_begun = true;
    m_bytes = 0;
    m_entries.clear();
    m_waiting.clear();
    const QFileInfo folder(m_jobs.front().path);
    if (!folder.isSymbolicLink() && !folder.isJunction())
        m_waiting.push_back(filesystemPath(m_jobs.front().path));
}

bool FolderSizes::step()
{
    std::error_code error;
    if (m_entries.empty()) {
        if (m_waiting.empty())
            return false;
        const fs::path folder = std::move(m_waiting.back());
        m_waiting.pop_back();
        list(folder, error);
    } else {
        const disk::directory_entry item = std::move(m_entries.back());
        m_entries.pop_back();
        add(item, error);
    }
    // Temporary files come and go while a folder is measured.
    if (error == std::errc::no_such_file_or_directory)
        error.clear();
    if (!error && m_bytes <= largest)
        return true;
    m_bytes = 0;
    return false;
}

/// The names in one go: on Windows a folder that stays open between two slices, and all above it,
/// could be neither renamed nor deleted.
void FolderSizes::list(const fs::path &folder, std::error_code &error)
{
    disk::directory_iterator item(folder, error);
    for (const disk::directory_iterator end; !error && item != end; item.increment(error))
        m_entries.push_back(*item);
}

void FolderSizes::add(const disk::directory_entry &item, std::error_code &error)
{
    const fs::file_status status = item.symlink_status(error);
    if (error)
        return;
    if (status.type() == fs::file_type::directory)
        m_waiting.push_back(item.path());
    else if (status.type() == fs::file_type::regular)
        m_bytes += static_cast<qint64>(item.file_size(error));
}

void FolderSizes::finish(qint64 bytes)
{
    const QString key = m_jobs.front().key;
    m_jobs.pop_front();
    m_begun = false;
    Q_EMIT measured(key, bytes);
}

} // namespace venlo
