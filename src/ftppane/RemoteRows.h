#pragma once

#include <vector>

#include <QString>

#include "views/RowList.h"

namespace venlo
{

/// The columns of the remote list. The last one is not for show: it tells a folder from a file of
/// the same name where names are sorted.
struct RemoteColumn {
    enum : int { Name = 0, Modified = 1, Size = 2, SortKey = 3 };
    static constexpr int shown = 3; ///< how many are for show
};

/// The name under which a new folder begins.
[[nodiscard]] QString newFolderName();

[[nodiscard]] RowList::Layout remoteLayout();
/// What the fourth column holds for a name.
[[nodiscard]] QString remoteSortKey(const QString &name, bool folder);
/// The detail lines of the cache (name, date text and size text with tabs between, lines separated
/// by CR) as rows: folders first.
[[nodiscard]] std::vector<RowList::Row> remoteRows(const QString &folderLines,
                                                   const QString &fileLines);
/// The row of a folder that waits for its name, dated now.
[[nodiscard]] RowList::Row newFolderRow();

} // namespace venlo
