#pragma once

#include <QString>

namespace venlo
{

class Database;

/// Name of a site's cache table: "." and "-" of the site's name become "_".
[[nodiscard]] QString siteTableName(const QString &siteName);

/// True for a site whose cache table would be one of the store's own tables; connecting to it
/// would empty a registry.
[[nodiscard]] bool isReservedSite(const QString &siteName);

/// Finds the site's cache table ignoring letter case, or creates it, and makes sure of the private
/// columns it carries ("raw name": the entry's bytes as received; "day only": the listing showed no
/// time of day). Returns the table's own spelling. Throws DbError.
[[nodiscard]] QString caOpenTbl(Database &database, const QString &siteName);

/// The native statement for directory and name of the files whose listing shows no time of day, in
/// directories from one text up to another. It reads none of the other rows.
[[nodiscard]] QString dayOnlyStatement(const QString &table);

/// Empties a site's cache table and forgets its incomplete directories. Throws DbError.
void emptySiteTable(Database &database, const QString &table);

} // namespace venlo
