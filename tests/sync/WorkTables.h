#pragma once

#include <QTemporaryDir>

#include "db/Database.h"
#include "support/ScriptedPerson.h"
#include "sync/ComparisonResult.h"
#include "sync/SyncReview.h"
#include "sync/WorkRows.h"

namespace venlo::test
{

/// Makes the initial database in a folder; the folder with "/" at its end.
[[nodiscard]] QString newDatabaseIn(const QTemporaryDir &folder);

/// A registered pattern.
struct PatternRow {
    QString sSync;
    QString sLph;
    QString sName;
    QString sFph;
    bool bCfl = false;
    bool bCfd = false;
};
void addPattern(Database &database, const PatternRow &row);

/// A database of its own whose work tables a test fills by hand, as a comparison would leave them.
class WorkTables
{
public:
    WorkTables();

    void addFolder(const QString &sPh, const QString &sUL, const QString &sUF, const QString &sEd);
    struct Copy {
        QString time;
        qint64 size = 0;
    };
    void addFile(const QString &sPh, const QString &sFL, const Copy &local, const Copy &remote,
                 const QString &sEd);
    void addPattern(const QString &sSync, const QString &sLph, const QString &sFph, bool bCfl,
                    bool bCfd);
    [[nodiscard]] Database &database() { return m_database; }

    /// A comparison that went well.
    [[nodiscard]] static ComparisonResult compared(bool down, const QString &sFph);
    /// The review of the tables as they are.
    [[nodiscard]] SyncReview review(ComparisonResult comparison, ReviewOptions options = {});

private:
    QTemporaryDir m_folder;
    ScriptedPerson m_person;
    Database m_database;
};

/// One line a row: "D path|local time|remote time|mark", then "F folder|name|local time|local
/// size|remote time|remote size|mark".
[[nodiscard]] QString workTablesText(Database &database);
/// The same once these rows are stored.
[[nodiscard]] QString storedText(Database &database, const WorkRows &rows);

/// Row of a path ("/a/" for a folder, "/a/b.txt" for a file); -1 when there is none.
[[nodiscard]] int rowOf(const SyncReview &review, const QString &path);

} // namespace venlo::test
