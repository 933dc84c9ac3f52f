#pragma once

#include <QHash>
#include <QSet>
#include <QString>

#include "sync/SyncBlocks.h"
#include "sync/SyncPair.h"

namespace venlo
{

/// What a comparison found out besides the rows of the work tables.
struct ComparisonResult {
    bool ok = false;        ///< the work tables are filled and marked
    bool cancelled = false; ///< the person said no, or stopped it
    /// Something cannot be compared (an unreliable listing, a name the statements cannot hold):
    /// however the rest ends, the run has not carried out everything.
    bool unreliable = false;
    SyncPair pair; ///< with the remote folder in normal form
    SyncBlocks blocks;
    /// Local folders that are spelled in other letter case than the rows: folded relative path of
    /// the row -> relative path as the local side spells it.
    QHash<QString, QString> localSpelling;
    /// pathKey() of files whose upload was begun and never confirmed: what the server has of them
    /// may be a part, however new and large it looks.
    QSet<QString> unfinished;
};

} // namespace venlo
