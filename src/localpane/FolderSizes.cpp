#include "localpane/FolderSizes.h"

#include <limits>
#include <system_error>

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>

#include "ftp/LocalPath.h"

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
    if (!m_jobs.empty())
        m_slices.start();
}

void FolderSizes::stop()
{
    m_slices.stop();
    m_jobs.clear();
    m_waiting.clear();
    m_item = {};
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
    if (m_jobs.empty())
        stop();
}

void FolderSizes::begin()
{
    m_begun = true;
    m_bytes = 0;
    m_item = {};
    m_waiting.clear();
    const QFileInfo folder(m_jobs.front().path);
    if (!folder.isSymbolicLink() && !folder.isJunction())
        m_waiting.push_back(QDir(m_jobs.front().path).filesystemPath());
}

bool FolderSizes::step()
{
    std::error_code error;
    if (m_item == fs::directory_iterator()) {
        if (m_waiting.empty())
            return false;
        const fs::path folder = std::move(m_waiting.back());
        m_waiting.pop_back();
        m_item = fs::directory_iterator(folder, error);
    } else {
        add(*m_item, error);
        if (!error)
            m_item.increment(error);
    }
    if (!error && m_bytes <= largest)
        return true;
    m_bytes = 0;
    return false;
}

void FolderSizes::add(const fs::directory_entry &item, std::error_code &error)
{
    const fs::file_status status = item.symlink_status(error);
    if (error)
        return;
    if (fs::is_directory(status))
        m_waiting.push_back(item.path());
    else if (fs::is_regular_file(status))
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
