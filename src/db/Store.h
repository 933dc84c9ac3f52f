#pragma once

#include "db/JetCatalogue.h"
#include "db/JetShape.h"
#include "db/JetTranslator.h"
#include "db/Rows.h"
#include "db/SqliteConnection.h"

#include <QDate>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QVariantList>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace venlo
{

/// The file below the Database. Runs Jet statements (translated) and, for the rooms that keep
/// private data in the same file, native SQLite statements. Private tables and columns have a
/// blank in their name, so that no Jet statement reaches them. Stays the same object across
/// closing and opening. Every member but the questions throws DbError, also while it is closed.
class Store
{
public:
    struct Options {
        int busyMilliseconds = 5000; ///< how long another process's lock is waited for
        std::function<QDate()> today = [] { return QDate::currentDate(); };
    };
    using Mode = SqliteConnection::Mode;

    Store() : Store(Options()) {}
    explicit Store(Options options);
    ~Store();
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;

    void open(const QString &path, Mode mode = Mode::Existing);
    /// An unfinished transaction is undone.
    void close();
    [[nodiscard]] bool isOpen() const { return m_connection != nullptr; }

    /// A Jet statement that changes something; the number of rows affected.
    int execJet(const QString &statement);
    /// A Jet statement that gives rows.
    [[nodiscard]] Rows queryJet(const QString &statement);
    [[nodiscard]] JetStatement translate(const QString &statement);
    /// The same for a text with placeholders, which is translated once for all values of the same
    /// kinds. A value that would change the statement's meaning is a DbError with brokenBy().
    int execJet(const QString &sql, const QVariantList &values);
    [[nodiscard]] Rows queryJet(const QString &sql, const QVariantList &values);

    /// A native statement with bound values. Bytes are QByteArray, a QDateTime is stored as its
    /// day count.
    int exec(const QString &sql, const QVariantList &values = {});
    [[nodiscard]] Rows query(const QString &sql, const QVariantList &values = {});

    /// Tables that Jet statements can reach.
    [[nodiscard]] QStringList tableNames();
    /// A table by its name in any case; null when there is none. Private ones included. The
    /// pointer is good until the next statement.
    [[nodiscard]] const JetTable *table(const QString &anyCase);

    /// Transactions nest: an inner one that is rolled back undoes its own part only.
    void begin();
    void commit();
    void rollback() noexcept;
    [[nodiscard]] int depth() const { return m_depth; }
    /// Runs a small change that may be lost when the machine fails right after it, together with
    /// others: a commit costs the disk several turns. They are committed after groupLife, before
    /// any other change and on closing; a process that is killed meanwhile loses them. A change
    /// that throws is undone alone. Must not wait for anything.
    void grouped(const std::function<void()> &change);
    /// Commits what is grouped. Where that fails it is undone, and told to onGroupLost.
    void endGroup();
    void onGroupLost(std::function<void(const QString &words)> lost);
    /// How many groups were lost so far.
    [[nodiscard]] int lostGroups() const { return m_lostGroups; }
    static constexpr std::chrono::milliseconds groupLife{300};

    /// A number of the program's own in the file's header, 0 in a file without it.
    [[nodiscard]] int userVersion();
    void setUserVersion(int version);
    /// Words about what is wrong with the file's structure, empty when nothing is.
    [[nodiscard]] QString damage();
    /// Writes a compacted copy. The file must not exist or be empty. Keeps every other process
    /// from writing until this store is closed, so that nothing is missing from the copy.
    void copyCompacted(const QString &path);

    /// Another number once the tables may have changed.
    [[nodiscard]] qint64 catalogueLoads() const { return m_catalogueLoads; }
    /// How often a statement had to be prepared since opening.
    [[nodiscard]] qint64 preparedCount() const;

private:
    [[nodiscard]] SqliteConnection &connection();
    /// The same for a change that is none of the group.
    [[nodiscard]] SqliteConnection &writer();
    void beginGroup();
    void rollbackGroup() noexcept;
    [[nodiscard]] JetStatement translateFilled(const QString &sql, const QVariantList &values);
    int exec(const JetStatement &translated);
    [[nodiscard]] Rows query(const JetStatement &translated);
    void loadCatalogue();
    [[nodiscard]] bool catalogueStale();
    void runSchema(const QStringList &statements);

    Options m_options;
    QString m_path;
    std::unique_ptr<SqliteConnection> m_connection;
    JetCatalogue m_catalogue;
    QHash<QString, std::optional<JetShape>> m_shapes; ///< nothing where a text has none
    qlonglong m_schemaVersion = -1;
    qint64 m_catalogueLoads = 0;
    int m_depth = 0;
    std::unique_ptr<QTimer> m_groupTimer;
    bool m_groupOpen = false;
    int m_lostGroups = 0;
    std::function<void(const QString &)> m_groupLost;
};

} // namespace venlo
