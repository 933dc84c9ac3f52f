#include "db/Database.h"

#include "db/DatabaseFile.h"
#include "db/Recordset.h"
#include "db/Store.h"
#include "platform/Files.h"
#include "shared/FrontEnd.h"

#include <QFile>

namespace venlo
{

namespace
{
/// Why a file that is there cannot be opened, for the person; empty when it looks like ours.
QString complaint(FileKind kind, const QString &path)
{
    switch (kind) {
    case FileKind::Sqlite:
        return {};
    case FileKind::Missing:
        return path + QStringLiteral("  が存在しません");
    case FileKind::Unreadable:
        return path + QStringLiteral(" を読めません");
    case FileKind::Jet:
        return path + QStringLiteral(" は以前の形式(Jet)のﾃﾞｰﾀﾍﾞｰｽなので開けません\r"
                                     "ﾌｧｲﾙはそのまま残してあります ﾌｫﾙﾀﾞごと別の場所へ移して"
                                     "起動し直し、接続先と同期ﾊﾟﾀｰﾝを登録し直して下さい");
    case FileKind::Foreign:
        break;
    }
    return path + QStringLiteral(" はこのﾌﾟﾛｸﾞﾗﾑのﾃﾞｰﾀﾍﾞｰｽではありません");
}
} // namespace

Database::Database(FrontEnd &frontEnd, QString userDataFolder)
    : m_frontEnd(frontEnd), m_folder(std::move(userDataFolder)), m_store(std::make_unique<Store>())
{
}

Database::~Database() = default;

QString Database::path() const
{
    return m_folder + QStringLiteral("dbFtp.mdb");
}

bool Database::isOpen() const
{
    return m_store->isOpen();
}

Store &Database::store()
{
    return *m_store;
}

QString Database::lastError() const
{
    return m_lastError;
}

void Database::OpenDb(bool &ok)
{
    ok = false;
    m_store->close();
    QString words = complaint(kindOfFile(path()), path());
    if (words.isEmpty()) {
        try {
            makePrivateFile(path()); // first: the store gives its journal the same rights
            m_store->open(path());
            ok = holdsOurTables(*m_store);
            if (!ok)
                words = complaint(FileKind::Foreign, path());
        } catch (const DbError &error) {
            words = path() + QStringLiteral(" を開けません\r") + error.words();
        }
    }
    if (ok)
        return;
    m_store->close();
    m_lastError = words;
    m_frontEnd.message(words);
}

void Database::CloseDb()
{
    m_store->close();
}

void Database::reopen()
{
    try {
        m_store->open(path());
    } catch (const DbError &error) {
        m_lastError = error.words();
    }
}

/// A compacted copy that is whole, checked, private and on the disk.
bool Database::writeCompacted(const QString &copy)
{
    try {
        if (!m_store->isOpen())
            m_store->open(path());
        QFile file(copy);
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly) || !makePrivateFile(copy))
            throw DbError(copy + QStringLiteral(" : ") + file.errorString());
        file.close();
        m_store->copyCompacted(copy);
        Store check;
        check.open(copy);
        const QString damage = holdsOurTables(check) ? check.damage() : copy;
        check.close();
        if (!damage.isEmpty())
            throw DbError(damage);
        if (!file.open(QIODevice::ReadWrite) || !flushToDisk(file))
            throw DbError(copy + QStringLiteral(" : ") + file.errorString());
    } catch (const DbError &error) {
        m_lastError = error.words();
        return false;
    }
    return true;
}

void Database::CompactDb()
{
    const QString copy = path().chopped(4) + QStringLiteral("$$$") + QStringLiteral(".mdb");
    if (m_store->depth() > 0 || (QFile::exists(copy) && !QFile::remove(copy)))
        return;
    bool done = writeCompacted(copy);
    m_store->close();
    done = done && replaceFile(copy, path());
    if (!done)
        QFile::remove(copy);
    reopen();
    if (done)
        m_frontEnd.message(path() + QStringLiteral(" を最適化しました"));
}

void Database::ExecSql(const QString &sql, bool &ok)
{
    m_lastError.clear();
    try {
        m_store->execJet(sql);
        ok = true;
    } catch (const DbError &error) {
        m_lastError = error.words();
    }
}

void Database::ExecSql(const QString &sql, const QVariantList &values, bool &ok)
{
    m_lastError.clear();
    try {
        m_store->execJet(sql, values);
        ok = true;
    } catch (const DbError &error) {
        m_lastError = error.words();
    }
}

void Database::SelectRows(const QString &sql, Rows &rows, int &count)
{
    count = 0;
    rows = m_store->queryJet(sql);
    count = rows.count();
}

void Database::SelectValues(const QString &sql, const std::vector<QVariant *> &variables)
{
    m_lastError.clear();
    try {
        const Rows rows = m_store->queryJet(sql);
        if (rows.count() == 0)
            return;
        const auto fields = std::min(variables.size(), static_cast<size_t>(rows.fields()));
        for (size_t i = 0; i < fields; ++i)
            *variables[i] = rows.at(static_cast<int>(i), 0);
    } catch (const DbError &error) {
        m_lastError = error.words();
    }
}

int Database::run(const QString &sql, const QVariantList &values)
{
    return m_store->execJet(sql, values);
}

Rows Database::query(const QString &sql, const QVariantList &values)
{
    return m_store->queryJet(sql, values);
}

QStringList Database::tableNames() const
{
    return m_store->tableNames();
}

std::unique_ptr<Recordset> Database::openTable(const QString &table)
{
    return std::make_unique<Recordset>(*m_store, table);
}

} // namespace venlo
