#pragma once

#include <chrono>
#include <mutex>
#include <stop_token>
#include <thread>
#include <vector>

#include <QHash>
#include <QString>

#include "shared/Result.h"
#include "sync/LocalFolder.h"

namespace venlo
{

/// Reads the folders of a local tree on a thread of its own while the server is asked, so that a
/// comparison waits for the slower of both and not for one after the other. It tells nothing and
/// decides nothing: what it cannot read, has not come to, or read too long ago is read when the
/// walk asks for it.
class LocalReadAhead
{
public:
    using Entries = std::vector<LocalEntry>;

    /// goodFor: how old a folder's entries may be when they are handed out.
    explicit LocalReadAhead(std::chrono::milliseconds goodFor = std::chrono::seconds(3));
    ~LocalReadAhead();
    LocalReadAhead(const LocalReadAhead &) = delete;
    LocalReadAhead &operator=(const LocalReadAhead &) = delete;

    void begin(const QString &root);
    /// Waits for the folder in hand and drops what was not asked for.
    void end();
    /// What a folder holds, as readLocalFolder has it. A folder is handed out once.
    [[nodiscard]] Result<Entries> take(const QString &folder);

private:
    using Clock = std::chrono::steady_clock;
    struct Read {
        Entries entries;
        Clock::time_point since; ///< before it was read
    };

    void readTree(const std::stop_token &stop, const QString &root);
    void keep(const QString &folder, Read &&read);

    const std::chrono::milliseconds m_goodFor;
    std::mutex m_mutex;
    QHash<QString, Read> m_read; ///< guarded by m_mutex
    std::jthread m_reader;       ///< the last member: it ends before what it uses
};

} // namespace venlo
