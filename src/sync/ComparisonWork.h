#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include "sync/ComparisonResult.h"
#include "sync/LocalReadAhead.h"
#include "sync/WorkRows.h"

namespace venlo
{

class Database;
class FrontEnd;

/// What the steps of one comparison hand to each other. Owned by Comparison, one a run.
class ComparisonWork
{
public:
    ComparisonWork(Database &store, FrontEnd &person) : database(store), frontEnd(person) {}

    Database &database;
    FrontEnd &frontEnd;
    ComparisonResult result;
    LocalReadAhead local;
    WorkRows rows;
    /// What the FTP side has: folded relative path as in the work tables -> its spelling.
    QHash<QString, QString> remoteFolders;
    QHash<QString, QString> remoteFiles;

    /// Takes an item out of the synchronisation and says so by name.
    void block(const QString &relative, const QString &why, bool throughParents = true);
    /// A name whose "?" the statements drop: every row of the remaining name is blocked.
    void blockIfStripped(const QString &relative);
    /// Lets windows live now and then; true once the person asked to stop.
    [[nodiscard]] bool stopped();
    /// Shows that a name holds a quote, which breaks the statement it is put into.
    void tellBroken(const QStringList &names);

private:
    int m_steps = 0;
};

} // namespace venlo
