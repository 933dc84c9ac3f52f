#pragma once

#include "db/Database.h"
#include "support/ScriptedPerson.h"

#include <QTemporaryDir>
#include <QVariantList>

namespace venlo::test
{

/// A user data folder of its own with a fresh database, and the Database opened on it.
class DbFixture
{
public:
    DbFixture();

    [[nodiscard]] QString folder() const { return m_dir.path() + QLatin1Char('/'); }
    [[nodiscard]] QString path() const { return folder() + QStringLiteral("dbFtp.mdb"); }
    [[nodiscard]] Database &db() { return m_db; }
    [[nodiscard]] ScriptedPerson &person() { return m_person; }
    /// Rows of a query as one text, see rowsText.
    [[nodiscard]] QString rows(const QString &sql, const QVariantList &values = {});
    /// A site's cache table by the two statements that make one.
    void makeCacheTable(const QString &name);

private:
    QTemporaryDir m_dir;
    ScriptedPerson m_person;
    Database m_db;
};

/// Fields joined with "|", rows with " / ". Null shows as "Null", a date as its date text.
[[nodiscard]] QString rowsText(const Rows &rows);

/// Words of the failure, "(none)" when the action does not throw DbError.
template <typename Action>
[[nodiscard]] QString failure(const Action &action)
{
    try {
        action();
    } catch (const DbError &error) {
        return error.words();
    }
    return QStringLiteral("(none)");
}

} // namespace venlo::test
