#include "db/Store.h"

#include "db/BrokenValue.h"
#include "db/DbError.h"
#include "db/FillParams.h"

namespace venlo
{

namespace
{
/// Far more than the program has texts.
constexpr qsizetype keptShapes = 128;

/// Native statements that change tables, after which the catalogue is read anew.
bool changesTables(const QString &sql)
{
    const QStringView start = QStringView(sql).trimmed();
    const auto startsWith = [start](const char *verb) {
        return start.startsWith(QLatin1String(verb), Qt::CaseInsensitive);
    };
    return startsWith("CREATE") || startsWith("DROP") || startsWith("ALTER");
}

QString savepoint(const char *verb, int depth)
{
    return QStringLiteral("%1 venlo_%2").arg(QLatin1String(verb), QString::number(depth));
}
} // namespace

Store::Store(Options options) : m_options(std::move(options)) {}

Store::~Store() = default;

void Store::open(const QString &path, Mode mode)
{
    close();
    m_connection = std::make_unique<SqliteConnection>(path, mode, m_options.busyMilliseconds);
    m_path = path;
    try {
        loadCatalogue();
    } catch (const DbError &) {
        close();
        throw;
    }
}

void Store::close()
{
    endGroup();
    m_depth = 0;
    m_connection.reset();
    m_catalogue = {};
    m_shapes.clear();
}

/// Where another process compacted the file, the one that is open here has no name any more and
/// would take writes nobody sees again: the new one is opened.
SqliteConnection &Store::connection()
{
    if (m_connection && m_depth == 0 && !m_groupOpen && m_connection->fileReplaced())
        open(QString(m_path));
    if (!m_connection)
        throw DbError(QStringLiteral("ﾃﾞｰﾀﾍﾞｰｽが開かれていません"));
    if (m_depth > 0 && !m_connection->inTransaction())
        throw DbError(QStringLiteral("一連の更新は既に取り消されています"));
    return *m_connection;
}

SqliteConnection &Store::writer()
{
    if (m_depth == 0)
        endGroup();
    return connection();
}

int Store::execJet(const QString &statement)
{
    return exec(translate(statement));
}

Rows Store::queryJet(const QString &statement)
{
    return query(translate(statement));
}

int Store::execJet(const QString &sql, const QVariantList &values)
{
    return exec(translateFilled(sql, values));
}

Rows Store::queryJet(const QString &sql, const QVariantList &values)
{
    return query(translateFilled(sql, values));
}

int Store::exec(const JetStatement &translated)
{
    switch (translated.kind) {
    case JetStatement::Kind::Change:
        return writer().execute(translated.sql.constFirst(), translated.values);
    case JetStatement::Kind::Schema:
        runSchema(translated.sql);
        return 0;
    case JetStatement::Kind::Query:
        break;
    }
    throw DbError(QStringLiteral("Select は実行できません"));
}

Rows Store::query(const JetStatement &translated)
{
    if (translated.kind != JetStatement::Kind::Query)
        throw DbError(QStringLiteral("Select ではありません"));
    return connection().query(translated.sql.constFirst(), translated.values);
}

JetStatement Store::translateFilled(const QString &sql, const QVariantList &values)
{
    (void)connection();
    const auto shape = m_shapes.constFind(sql);
    const bool known = shape != m_shapes.constEnd();
    if (known && shape->has_value()) {
        if (auto bound = (*shape)->bind(values, m_options.today()))
            return std::move(*bound);
    }
    if (const auto broken = brokenValue(sql, values)) {
        throw DbError(
            QStringLiteral("\"%1\" に ' などの文字があるので文を実行できません").arg(*broken),
            *broken);
    }
    JetStatement translated = translate(filled(sql, values));
    if (!known) {
        if (m_shapes.size() >= keptShapes)
            m_shapes.clear();
        m_shapes.insert(sql, JetShape::of(sql, values, translated));
    }
    return translated;
}

JetStatement Store::translate(const QString &statement)
{
    (void)connection();
    try {
        return translateJet(statement, m_catalogue, m_options.today());
    } catch (const DbError &) {
        if (!catalogueStale())
            throw;
    }
    loadCatalogue();
    return translateJet(statement, m_catalogue, m_options.today());
}

int Store::exec(const QString &sql, const QVariantList &values)
{
    const int changed = writer().execute(sql, values);
    if (changesTables(sql)) {
        connection().forgetStatements();
        loadCatalogue();
    }
    return changed;
}

Rows Store::query(const QString &sql, const QVariantList &values)
{
    return connection().query(sql, values);
}

void Store::begin()
{
    writer().execute(m_depth == 0 ? QStringLiteral("BEGIN IMMEDIATE")
                                  : savepoint("SAVEPOINT", m_depth));
    ++m_depth;
}

void Store::commit()
{
    if (m_depth == 0)
        throw DbError(QStringLiteral("一連の更新が始まっていません"));
    connection().execute(m_depth == 1 ? QStringLiteral("COMMIT")
                                      : savepoint("RELEASE", m_depth - 1));
    --m_depth;
}

void Store::rollback() noexcept
{
    if (m_depth == 0 || !m_connection)
        return;
    --m_depth;
    try {
        if (m_connection->inTransaction()) {
            if (m_depth == 0) {
                m_connection->execute(QStringLiteral("ROLLBACK"));
            } else {
                m_connection->execute(savepoint("ROLLBACK TO", m_depth));
                m_connection->execute(savepoint("RELEASE", m_depth));
            }
        }
        if (catalogueStale())
            loadCatalogue();
    } catch (const DbError &) {
        // The store undid everything by itself; the statements that follow find out.
    }
}

int Store::userVersion()
{
    return query(QStringLiteral("PRAGMA user_version")).at(0, 0).toInt();
}

void Store::setUserVersion(int version)
{
    exec(QStringLiteral("PRAGMA user_version=%1").arg(version));
}

QString Store::damage()
{
    const QString words = query(QStringLiteral("PRAGMA quick_check(1)")).at(0, 0).toString();
    return words == QLatin1String("ok") ? QString() : words;
}

void Store::copyCompacted(const QString &path)
{
    if (m_depth > 0)
        throw DbError(QStringLiteral("一連の更新の途中です"));
    endGroup();
    (void)query(QStringLiteral("PRAGMA locking_mode=EXCLUSIVE"));
    exec(QStringLiteral("BEGIN EXCLUSIVE"));
    exec(QStringLiteral("COMMIT"));
    exec(QStringLiteral("VACUUM INTO ?"), {path});
}

qint64 Store::preparedCount() const
{
    return m_connection ? m_connection->preparedCount() : 0;
}

} // namespace venlo
