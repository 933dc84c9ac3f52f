// The tables that statements reach, as they are in the file by now.
#include "db/DbError.h"
#include "db/Store.h"

namespace venlo
{

QStringList Store::tableNames()
{
    if (catalogueStale())
        loadCatalogue();
    return m_catalogue.tableNames();
}

const JetTable *Store::table(const QString &anyCase)
{
    const JetTable *found = m_catalogue.table(anyCase);
    if (found || !catalogueStale())
        return found;
    loadCatalogue();
    return m_catalogue.table(anyCase);
}

void Store::loadCatalogue()
{
    const Rows rows = connection().query(
        QStringLiteral("SELECT m.name, c.name, c.type FROM sqlite_master m, "
                       "pragma_table_info(m.name) c WHERE m.type='table' "
                       "AND m.name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY m.rowid, c.cid"));
    std::vector<JetTable> tables;
    for (int row = 0; row < rows.count(); ++row) {
        const QString name = rows.at(0, row).toString();
        if (tables.empty() || tables.back().name != name)
            tables.push_back({name, {}});
        tables.back().columns.push_back(
            JetColumn::fromStored(rows.at(1, row).toString(), rows.at(2, row).toString()));
    }
    m_catalogue = JetCatalogue(std::move(tables));
    m_shapes.clear();
    ++m_catalogueLoads;
    m_schemaVersion =
        connection().query(QStringLiteral("PRAGMA schema_version")).at(0, 0).toLongLong();
}

/// Another process, or a transaction undone, can have changed the tables.
bool Store::catalogueStale()
{
    return connection().query(QStringLiteral("PRAGMA schema_version")).at(0, 0).toLongLong() !=
           m_schemaVersion;
}

void Store::runSchema(const QStringList &statements)
{
    connection().forgetStatements();
    begin();
    try {
        for (const QString &sql : statements)
            connection().execute(sql);
        commit();
    } catch (const DbError &) {
        rollback();
        throw;
    }
    connection().forgetStatements();
    loadCatalogue();
}

} // namespace venlo
