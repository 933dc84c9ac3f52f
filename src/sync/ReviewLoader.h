#pragma once

#include <QHash>
#include <QString>

namespace venlo
{

class Database;
class SyncReview;
struct SyncRow;

/// Fills a review from the marked work tables and works out what covers what and what is held
/// back. Every step is linear in the number of rows.
class ReviewLoader
{
public:
    explicit ReviewLoader(SyncReview &review) : m_review(review) {}
    /// Throws DbError.
    void load(Database &database);

private:
    void addFolder(SyncRow row);
    void addFiles(Database &database, int folder);
    void add(SyncRow row);
    void noteRemoteSpelling(const SyncRow &row);
    void holdBack();
    void holdRow(SyncRow &row) const;
    void holdMixedFolders();
    void holdDoubles();
    void holdDotNames();

    SyncReview &m_review;
    QHash<QString, int> m_folders; ///< folded path -> row
};

} // namespace venlo
