#include "ftp/SiteTable.h"

#include "db/Database.h"
#include "db/JetCatalogue.h"
#include "db/Store.h"

#include <QStringList>

#include <algorithm>

namespace venlo
{

namespace
{
const QLatin1String isDayOnlyFile("\"day only\" = 1 AND bFd = 0");

void addPrivateColumns(Database &database, const QString &table)
{
    Store &store = database.store();
    const Rows columns =
        store.query(QStringLiteral("SELECT name FROM pragma_table_info(?)"), {QVariant(table)});
    QStringList present;
    for (int row = 0; row < columns.count(); ++row)
        present.append(columns.at(0, row).toString());
    const QString quoted = quotedName(table);
    for (const auto &[name, type] :
         {std::pair{QStringLiteral("raw name"), QStringLiteral("BLOB")},
          std::pair{QStringLiteral("day only"), QStringLiteral("INTEGER")}}) {
        if (!present.contains(name))
            store.exec(
                QStringLiteral("ALTER TABLE %1 ADD COLUMN \"%2\" %3").arg(quoted, name, type));
    }
    const QString index = table + QStringLiteral(" day only");
    const Rows indexed = store.query(
        QStringLiteral("SELECT count(*) FROM sqlite_master WHERE type = 'index' AND name = ?"),
        {index});
    if (indexed.at(0, 0).toLongLong() == 0)
        store.exec(QStringLiteral("CREATE INDEX %1 ON %2(sDir, sName) WHERE ")
                       .arg(quotedName(index), quoted) +
                   isDayOnlyFile);
    store.exec(QStringLiteral("CREATE TABLE IF NOT EXISTS \"incomplete directories\" ("
                              "site TEXT NOT NULL, dir TEXT NOT NULL, why TEXT NOT NULL, "
                              "refused INTEGER NOT NULL, PRIMARY KEY (site, dir))"));
}
} // namespace

QString siteTableName(const QString &siteName)
{
    QString table = siteName;
    table.replace(QLatin1Char('.'), QLatin1Char('_'));
    table.replace(QLatin1Char('-'), QLatin1Char('_'));
    return table;
}

bool isReservedSite(const QString &siteName)
{
    const QString table = siteTableName(siteName).trimmed();
    for (const char *own :
         {"msSite", "msSync", "tbFold", "tbFile", "incomplete directories", "unfinished uploads"}) {
        if (table.compare(QLatin1String(own), Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

QString caOpenTbl(Database &database, const QString &siteName)
{
    QString table = siteTableName(siteName);
    const QStringList tables = database.tableNames();
    const auto same = [&](const QString &name) {
        return name.compare(table, Qt::CaseInsensitive) == 0;
    };
    const auto found = std::find_if(tables.begin(), tables.end(), same);
    if (found != tables.end()) {
        table = *found;
    } else {
        Transaction transaction(database);
        database.run(QStringLiteral("Create table ") + table +
                     QStringLiteral(" (sDir Text(255), bFd Byte, sName Text(255), dDate Date, "
                                    "nSize Long)"));
        database.run(QStringLiteral("Create Index PrimaryKey On ") + table +
                     QStringLiteral("(sDir, sName) With Primary"));
        transaction.commit();
    }
    addPrivateColumns(database, table);
    return table;
}

QString dayOnlyStatement(const QString &table)
{
    return QStringLiteral("SELECT sDir, sName FROM %1 WHERE sDir >= ? AND sDir < ? AND ")
               .arg(quotedName(table)) +
           isDayOnlyFile;
}

void emptySiteTable(Database &database, const QString &table)
{
    Transaction transaction(database);
    database.run(QStringLiteral("Delete From ?"), {table});
    database.store().exec(QStringLiteral("DELETE FROM \"incomplete directories\" WHERE site = ?"),
                          {QVariant(table)});
    transaction.commit();
}

} // namespace venlo
