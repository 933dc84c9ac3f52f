#pragma once

#include <QString>

namespace venlo
{

class Store;

/// What stands under the database's name.
enum class FileKind {
    Missing,
    Unreadable,
    Jet,    ///< a database of the engine this store took the place of
    Sqlite, ///< of our kind, by its header
    Foreign
};
[[nodiscard]] FileKind kindOfFile(const QString &path);

/// Version of the tables that createInitialDatabase makes.
constexpr int tablesVersion = 1;

/// True when the open file holds the registries and the work tables in a version known here.
[[nodiscard]] bool holdsOurTables(Store &store);

/// The empty database of a new installation: registries and work tables, private to its owner.
/// Replaces a file that is there. Throws DbError.
void createInitialDatabase(const QString &path);

} // namespace venlo
