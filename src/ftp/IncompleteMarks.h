#pragma once

#include <QString>

#include <vector>

namespace venlo
{

class Database;

/// Directories whose cache rows are not the whole truth, kept in the database beside the rows. A
/// mark lives until its directory is listed whole or its rows go.
class IncompleteMarks
{
public:
    struct Mark {
        QString dir;
        QString why;
        bool refused = false; ///< the server refused to make it current (it may not exist)
    };

    explicit IncompleteMarks(Database &database);

    void set(const QString &site, const Mark &mark);
    void clear(const QString &site, const QString &dir);
    /// Forgets the marks of every directory whose path begins with prefix, as the cache's own
    /// prefix deletions forget the rows.
    void clearPrefix(const QString &site, const QString &prefix);
    /// Gives the marks of those directories their path below a prefix's new spelling.
    void movePrefix(const QString &site, const QString &prefix, const QString &newPrefix);
    /// Marks at or below dir, letter case ignored.
    [[nodiscard]] std::vector<Mark> under(const QString &site, const QString &dir);

private:
    Database &m_database;
};

} // namespace venlo
