#include "db/SqliteConnection.h"

#include "db/DbError.h"
#include "db/DisplayFormat.h"

#include <sqlite3.h>

#include <QDateTime>

namespace venlo
{

namespace
{
constexpr size_t keptStatements = 64;

QString japaneseWords(int code)
{
    switch (code) {
    case SQLITE_CONSTRAINT_UNIQUE:
    case SQLITE_CONSTRAINT_PRIMARYKEY:
        return QStringLiteral("同じｷｰの行が既にあります");
    case SQLITE_CONSTRAINT_CHECK:
    case SQLITE_CONSTRAINT_NOTNULL:
    case SQLITE_CONSTRAINT_TRIGGER:
        return QStringLiteral("値を列に入れられません");
    default:
        break;
    }
    switch (code & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return QStringLiteral("ﾃﾞｰﾀﾍﾞｰｽは他のﾌﾟﾛｸﾞﾗﾑが使用中です");
    case SQLITE_READONLY:
    case SQLITE_PERM:
        return QStringLiteral("ﾃﾞｰﾀﾍﾞｰｽに書き込めません");
    case SQLITE_FULL:
        return QStringLiteral("ﾃﾞｨｽｸの空きがありません");
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return QStringLiteral("ﾃﾞｰﾀﾍﾞｰｽが壊れています");
    case SQLITE_CANTOPEN:
        return QStringLiteral("ﾃﾞｰﾀﾍﾞｰｽを開けません");
    default:
        return QStringLiteral("ﾃﾞｰﾀﾍﾞｰｽのｴﾗｰです");
    }
}

/// NUL would cut a text where the store measures and compares it; half a surrogate pair would
/// make two names one.
void requireStorable(const QString &text)
{
    if (text.contains(QChar(QChar::Null)))
        throw DbError(QStringLiteral("文字列に NUL があります"));
    if (!text.isValidUtf16())
        throw DbError(QStringLiteral("文字列に文字でないものがあります"));
}

/// All of it: a byte order mark in front belongs to a name like any other character.
QString wholeText(QByteArrayView utf8)
{
    QString text = QString::fromUtf8(utf8);
    if (utf8.startsWith("\xef\xbb\xbf"))
        text.prepend(QChar(QChar::ByteOrderMark));
    return text;
}

QVariant cell(sqlite3_stmt *statement, int column)
{
    switch (sqlite3_column_type(statement, column)) {
    case SQLITE_INTEGER:
        return QVariant::fromValue<qlonglong>(sqlite3_column_int64(statement, column));
    case SQLITE_FLOAT:
        return sqlite3_column_double(statement, column);
    case SQLITE_TEXT: {
        const auto *text = sqlite3_column_text(statement, column);
        return wholeText(
            {reinterpret_cast<const char *>(text), sqlite3_column_bytes(statement, column)});
    }
    case SQLITE_BLOB: {
        const auto *bytes = static_cast<const char *>(sqlite3_column_blob(statement, column));
        return QByteArray(bytes, sqlite3_column_bytes(statement, column));
    }
    default:
        return {};
    }
}

/// Lets a statement go in a state in which it can run again, holding no lock and no value.
class Run
{
public:
    explicit Run(sqlite3_stmt *statement) : m_statement(statement) {}
    ~Run()
    {
        sqlite3_reset(m_statement);
        sqlite3_clear_bindings(m_statement);
    }
    Run(const Run &) = delete;
    Run &operator=(const Run &) = delete;

private:
    sqlite3_stmt *m_statement;
};
} // namespace

void SqliteConnection::CloseHandle::operator()(sqlite3 *handle) const
{
    sqlite3_close_v2(handle);
}

void SqliteConnection::FinishStatement::operator()(sqlite3_stmt *statement) const
{
    sqlite3_finalize(statement);
}

/// A rollback journal that is deleted at every commit: between statements the data is one file,
/// whichever way the process ends, and it works on network drives, where a write-ahead log does
/// not. A killed process leaves a journal that the next opening rolls back.
SqliteConnection::SqliteConnection(const QString &path, Mode mode, int busyMilliseconds)
{
    int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    if (mode == Mode::Create)
        flags |= SQLITE_OPEN_CREATE;
    sqlite3 *handle = nullptr;
    const int opened = sqlite3_open_v2(path.toUtf8().constData(), &handle, flags, nullptr);
    m_handle.reset(handle);
    if (opened != SQLITE_OK)
        fail();
    sqlite3_busy_timeout(handle, busyMilliseconds);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    addJetFunctions(handle);
    (void)query(QStringLiteral("PRAGMA journal_mode=DELETE"));
    // KiB: the pages of a large comparison's transaction, so that few are written twice.
    execute(QStringLiteral("PRAGMA cache_size=-16384"));
    execute(QStringLiteral("PRAGMA synchronous=FULL"));
    if (sqlite3_db_readonly(handle, "main") != 0)
        throw DbError(japaneseWords(SQLITE_READONLY));
    forgetStatements();
}

SqliteConnection::~SqliteConnection()
{
    forgetStatements();
}

int SqliteConnection::execute(const QString &sql, const QVariantList &values)
{
    sqlite3_stmt *statement = prepared(sql);
    const Run run(statement);
    bind(statement, values);
    const auto before = sqlite3_total_changes(m_handle.get());
    while (step(statement)) {
    }
    return sqlite3_total_changes(m_handle.get()) == before ? 0 : sqlite3_changes(m_handle.get());
}

Rows SqliteConnection::query(const QString &sql, const QVariantList &values)
{
    sqlite3_stmt *statement = prepared(sql);
    const Run run(statement);
    bind(statement, values);
    std::vector<QVariant> cells;
    const int fields = sqlite3_column_count(statement);
    while (step(statement)) {
        for (int i = 0; i < fields; ++i)
            cells.push_back(cell(statement, i));
    }
    return {fields, std::move(cells)};
}

void SqliteConnection::forgetStatements()
{
    m_byText.clear();
    m_kept.clear();
}

bool SqliteConnection::inTransaction() const
{
    return sqlite3_get_autocommit(m_handle.get()) == 0;
}

bool SqliteConnection::fileReplaced() const
{
    int moved = 0;
    const int asked = sqlite3_file_control(m_handle.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved);
    return asked == SQLITE_OK && moved != 0;
}

sqlite3_stmt *SqliteConnection::prepared(const QString &sql)
{
    const auto found = m_byText.constFind(sql);
    if (found != m_byText.constEnd()) {
        m_kept.splice(m_kept.begin(), m_kept, *found);
        return m_kept.front().statement.get();
    }
    m_kept.push_front({sql, prepare(sql)});
    m_byText.insert(sql, m_kept.begin());
    if (m_kept.size() > keptStatements) {
        m_byText.remove(m_kept.back().sql);
        m_kept.pop_back();
    }
    return m_kept.front().statement.get();
}

SqliteConnection::Statement SqliteConnection::prepare(const QString &sql)
{
    const QByteArray text = sql.toUtf8();
    sqlite3_stmt *raw = nullptr;
    const char *tail = nullptr;
    const int done =
        sqlite3_prepare_v3(m_handle.get(), text.constData(), static_cast<int>(text.size()) + 1,
                           SQLITE_PREPARE_PERSISTENT, &raw, &tail);
    Statement statement(raw);
    if (done != SQLITE_OK)
        fail();
    const QByteArray rest = QByteArray(tail).trimmed();
    if (!statement || !(rest.isEmpty() || rest == ";"))
        throw DbError(QStringLiteral("一度に実行できる文は一つだけです"));
    ++m_prepared;
    return statement;
}

void SqliteConnection::bind(sqlite3_stmt *statement, const QVariantList &values) const
{
    if (sqlite3_bind_parameter_count(statement) != values.size())
        throw DbError(QStringLiteral("値の数が文と一致しません"));
    for (int i = 0; i < static_cast<int>(values.size()); ++i)
        bindOne(statement, i + 1, values[i]);
}

void SqliteConnection::bindOne(sqlite3_stmt *statement, int at, const QVariant &value) const
{
    int done = SQLITE_OK;
    if (value.isNull()) {
        done = sqlite3_bind_null(statement, at);
    } else if (value.typeId() == QMetaType::QByteArray) {
        const QByteArray bytes = value.toByteArray();
        done = sqlite3_bind_blob64(statement, at, bytes.constData(),
                                   static_cast<sqlite3_uint64>(bytes.size()), SQLITE_TRANSIENT);
    } else if (value.typeId() == QMetaType::Double || value.typeId() == QMetaType::Float) {
        done = sqlite3_bind_double(statement, at, value.toDouble());
    } else if (value.typeId() == QMetaType::QDateTime) {
        done = sqlite3_bind_double(statement, at, toDayCount(value.toDateTime()));
    } else if (value.typeId() == QMetaType::QString) {
        const auto &text = *static_cast<const QString *>(value.constData());
        requireStorable(text);
        const QByteArray utf8 = text.toUtf8();
        done = sqlite3_bind_text64(statement, at, utf8.constData(),
                                   static_cast<sqlite3_uint64>(utf8.size()), SQLITE_TRANSIENT,
                                   SQLITE_UTF8);
    } else {
        bool number = false;
        const qlonglong integer = value.toLongLong(&number);
        if (!number)
            throw DbError(QStringLiteral("この種類の値は入れられません"));
        done = sqlite3_bind_int64(statement, at, integer);
    }
    if (done != SQLITE_OK)
        fail();
}

bool SqliteConnection::step(sqlite3_stmt *statement) const
{
    const int done = sqlite3_step(statement);
    if (done != SQLITE_ROW && done != SQLITE_DONE)
        fail();
    return done == SQLITE_ROW;
}

void SqliteConnection::fail() const
{
    sqlite3 *handle = m_handle.get();
    const int code = handle ? sqlite3_extended_errcode(handle) : SQLITE_NOMEM;
    const char *words = handle ? sqlite3_errmsg(handle) : sqlite3_errstr(code);
    throw DbError(QStringLiteral("%1 (%2)").arg(japaneseWords(code), QString::fromUtf8(words)));
}

} // namespace venlo
