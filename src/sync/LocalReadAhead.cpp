#include "sync/LocalReadAhead.h"

#include <exception>
#include <utility>

namespace venlo
{

namespace
{
/// Of a tree with more than this the rest is read by the walk: what waits here takes memory, about
/// 150 bytes an entry.
constexpr size_t mostEntries = 25'000;
} // namespace

LocalReadAhead::LocalReadAhead(std::chrono::milliseconds goodFor) : m_goodFor(goodFor) {}

LocalReadAhead::~LocalReadAhead() = default;

void LocalReadAhead::begin(const QString &root)
{
    end();
    m_reader = std::jthread([this, root](const std::stop_token &stop) {
        try {
            readTree(stop, root);
        } catch (const std::exception &) {
            // The walk comes to the same folder, and tells.
            return;
        }
    });
}

void LocalReadAhead::end()
{
    m_reader = {};
    m_read.clear();
}

void LocalReadAhead::readTree(const std::stop_token &stop, const QString &root)
{
    QStringList due{root};
    size_t held = 0;
    while (!due.isEmpty() && held < mostEntries && !stop.stop_requested()) {
        const QString folder = due.takeLast();
        const auto since = Clock::now();
        auto entries = readLocalFolder(folder);
        if (!entries)
            continue;
        held += entries.value().size();
        // The last one due is the next to be read: in the order of the walk.
        for (auto entry = entries.value().crbegin(); entry != entries.value().crend(); ++entry) {
            if (entry->kind == LocalEntry::Kind::Folder)
                due += entryPath(folder, *entry);
        }
        keep(folder, {std::move(entries.value()), since});
    }
}

void LocalReadAhead::keep(const QString &folder, Read &&read)
{
    const std::scoped_lock lock(m_mutex);
    m_read.emplace(folder, std::move(read));
}

Result<LocalReadAhead::Entries> LocalReadAhead::take(const QString &folder)
{
    {
        const std::scoped_lock lock(m_mutex);
        const auto found = m_read.find(folder);
        if (found != m_read.end()) {
            Read read = std::move(*found);
            m_read.erase(found);
            if (Clock::now() - read.since <= m_goodFor)
                return std::move(read.entries);
        }
    }
    // From here on the reader would be behind the walk.
    m_reader.request_stop();
    return readLocalFolder(folder);
}

} // namespace venlo
