#pragma once

#include "db/Rows.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QVariantList>

#include <list>
#include <memory>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace venlo
{

/// One open SQLite file: prepares, binds, steps. Owned by the Store, which alone uses it. Every
/// failure is a DbError in Japanese words with the library's own behind them. Prepared statements
/// are kept, the most recently used ones, so that a repeated statement is prepared once.
class SqliteConnection
{
public:
    enum class Mode { Existing, Create };

    SqliteConnection(const QString &path, Mode mode, int busyMilliseconds);
    ~SqliteConnection();
    SqliteConnection(const SqliteConnection &) = delete;
    SqliteConnection &operator=(const SqliteConnection &) = delete;

    /// Runs a statement; the number of rows it changed.
    int execute(const QString &sql, const QVariantList &values = {});
    /// Text is QString, integers qlonglong, reals double, bytes QByteArray.
    [[nodiscard]] Rows query(const QString &sql, const QVariantList &values = {});
    /// Drops the kept statements, as tables are about to change.
    void forgetStatements();

    [[nodiscard]] bool inTransaction() const;
    /// True when another file stands under the name now (a compaction of another process).
    [[nodiscard]] bool fileReplaced() const;
    /// How often a statement was prepared.
    [[nodiscard]] qint64 preparedCount() const { return m_prepared; }

private:
    struct CloseHandle {
        void operator()(sqlite3 *handle) const;
    };
    struct FinishStatement {
        void operator()(sqlite3_stmt *statement) const;
    };
    using Statement = std::unique_ptr<sqlite3_stmt, FinishStatement>;
    struct Kept {
        QString sql;
        Statement statement;
    };

    [[nodiscard]] sqlite3_stmt *prepared(const QString &sql);
    [[nodiscard]] Statement prepare(const QString &sql);
    void bind(sqlite3_stmt *statement, const QVariantList &values) const;
    void bindOne(sqlite3_stmt *statement, int at, const QVariant &value) const;
    [[nodiscard]] bool step(sqlite3_stmt *statement) const;
    [[noreturn]] void fail() const;

    std::unique_ptr<sqlite3, CloseHandle> m_handle;
    std::list<Kept> m_kept; ///< most recently used first
    QHash<QString, std::list<Kept>::iterator> m_byText;
    qint64 m_prepared = 0;
};

/// Gives a connection the comparison and the functions the translated statements use.
void addJetFunctions(sqlite3 *handle);

} // namespace venlo
