#pragma once

#include "db/DbError.h"
#include "db/FillParams.h"
#include "db/Rows.h"

#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <vector>

namespace venlo
{

class FrontEnd;
class Recordset;
class Store;

/// The one open database file "dbFtp.mdb" and the query operations every room uses. Statements are
/// Jet SQL (see JetTranslator); one statement a call. Owns the file's handle; shows only the
/// messages of opening and compacting.
class Database
{
public:
    /// userDataFolder ends with a separator.
    Database(FrontEnd &frontEnd, QString userDataFolder);
    ~Database();
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    /// Opens user data folder + "dbFtp.mdb"; ok false after the message when it is missing or no
    /// database of ours.
    void OpenDb(bool &ok);
    void CloseDb();
    /// Rewrites the file without its free space; the old or the new file is whole at any moment.
    void CompactDb();

    /// Runs a statement that returns no rows. ok becomes true only after it ran; a failing
    /// statement leaves it as it was and is noted for lastError().
    void ExecSql(const QString &sql, bool &ok);
    /// The same for a text with placeholders, filled as run() fills it.
    void ExecSql(const QString &sql, const QVariantList &values, bool &ok);
    /// All rows; count is 0 first. Throws DbError.
    void SelectRows(const QString &sql, Rows &rows, int &count);
    /// The first row's fields into the given variables; nothing is written when there is no row or
    /// the statement fails.
    void SelectValues(const QString &sql, const std::vector<QVariant *> &variables);

    /// Fills and runs a statement; the number of rows affected. Throws DbError. A text value that
    /// holds a quote, or one outside quotes (a table name) that holds a blank or a parenthesis, is
    /// refused before the store sees the statement (it could mean something else than was asked),
    /// with brokenBy() naming it.
    int run(const QString &sql, const QVariantList &values = {});
    /// Fills and queries, as run().
    [[nodiscard]] Rows query(const QString &sql, const QVariantList &values = {});

    /// Names of the tables a statement can reach, in their own spelling.
    [[nodiscard]] QStringList tableNames() const;
    /// A record set on a whole table, for adding and changing rows without SQL text. Throws
    /// DbError when there is no such table.
    [[nodiscard]] std::unique_ptr<Recordset> openTable(const QString &table);

    /// Words of the last trapped failure, empty when none.
    [[nodiscard]] QString lastError() const;
    [[nodiscard]] QString path() const;
    [[nodiscard]] bool isOpen() const;
    /// The store below, for rooms that keep private columns or tables in the same file.
    [[nodiscard]] Store &store();

private:
    void reopen();
    [[nodiscard]] bool writeCompacted(const QString &copy);

    FrontEnd &m_frontEnd;
    QString m_folder;
    std::unique_ptr<Store> m_store;
    QString m_lastError;
};

/// Everything between construction and commit() happens or nothing does. Nests: only the outermost
/// commit() reaches the disk, and an inner one that is not committed undoes its own part only.
/// Rolls back when it is destroyed without commit(). Construction and commit() throw DbError.
class Transaction
{
public:
    explicit Transaction(Database &database);
    ~Transaction();
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;
    void commit();

private:
    Database &m_database;
    bool m_done = false;
};

} // namespace venlo
