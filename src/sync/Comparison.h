#pragma once

#include <memory>

#include <QString>

#include "sync/ComparisonResult.h"

namespace venlo
{

class ComparisonWork;
class Database;
class DirectoryCache;
class FrontEnd;
class Session;
struct Flags;

/// Compares a local folder with a directory of the connected server: refreshes the remote subtree,
/// gathers both trees into the work tables tbFold and tbFile and marks every row. It transfers and
/// deletes nothing. All rows are written in one transaction, so that a comparison that fails or is
/// killed leaves the tables as they were.
class Comparison
{
public:
    Comparison(Session &session, Database &database, DirectoryCache &cache, FrontEnd &frontEnd,
               Flags &flags);
    ~Comparison();
    Comparison(const Comparison &) = delete;
    Comparison &operator=(const Comparison &) = delete;

    /// Checks, asks (not under the batch flag), compares. ok: the tables are filled and marked.
    /// sFph may carry the server text in front. Waiting runs window events; a call from one of
    /// them does nothing.
    ComparisonResult ftSync(const QString &sLph, const QString &sFph, bool down, bool &ok);

private:
    [[nodiscard]] bool passesChecks(const QString &sLph, const QString &sFph);
    [[nodiscard]] bool confirmed(const QString &sLph, const QString &sFph, bool down);
    [[nodiscard]] bool refreshRemote();
    [[nodiscard]] bool fillAndMark();
    /// Merges a local folder and everything below it into the rows. Called with the root twice.
    /// ok false: a folder that cannot be read or a name that fits no row ("sySync Err").
    void sySync(const QString &current, const QString &root, bool &ok);

    Session &m_session;
    Database &m_database;
    DirectoryCache &m_cache;
    FrontEnd &m_frontEnd;
    Flags &m_flags;
    std::unique_ptr<ComparisonWork> m_work;
    bool m_running = false;
};

} // namespace venlo
