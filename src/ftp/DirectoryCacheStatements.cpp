// How statements reach the site's table, with any name of the server in them.
#include "ftp/DirectoryCache.h"
#include "ftp/ErrorLog.h"

#include <algorithm>

namespace venlo
{

Rows DirectoryCache::ask(const QString &sql, const QVariantList &values)
{
    if (goesIntoShape(values))
        return m_database.query(ofSite(sql), values);
    Rows rows;
    int count = 0;
    m_database.SelectRows(statement(sql, values), rows, count);
    return rows;
}

bool DirectoryCache::change(const QString &sql, const QVariantList &values)
{
    bool ok = false;
    if (goesIntoShape(values))
        m_database.ExecSql(ofSite(sql), values, ok);
    else
        m_database.ExecSql(statement(sql, values), ok);
    return ok;
}

/// Whether a statement's text with placeholders means the same as the one with values in it. Only
/// the first is known to the store from the last time.
bool DirectoryCache::goesIntoShape(const QVariantList &values) const
{
    const auto holds = [](const QString &text) {
        return text.contains(QLatin1Char('\'')) || text.contains(QLatin1Char('?'));
    };
    return !holds(m_session.currentSite()) &&
           std::none_of(values.begin(), values.end(),
                        [&](const QVariant &value) { return holds(value.toString()); });
}

/// The statement with the name of the site's table in its first place.
QString DirectoryCache::ofSite(const QString &sql) const
{
    QString text = sql;
    const auto at = text.indexOf(QLatin1Char('?'));
    return text.replace(at, 1, m_session.currentSite());
}

void DirectoryCache::tryChange(const QString &sql, const QVariantList &values)
{
    if (!change(sql, values))
        m_session.eventLog().note(QStringLiteral("cache not in step: ") + m_database.lastError());
}

QString DirectoryCache::statement(const QString &sql, const QVariantList &values) const
{
    const QStringList parts = sql.split(QLatin1Char('?'));
    QString text = parts.value(0) + m_session.currentSite();
    for (qsizetype i = 0; i < values.size(); ++i) {
        text += parts.value(i + 1);
        text += values.at(i).toString().replace(QLatin1Char('\''), QStringLiteral("''"));
    }
    return text + parts.value(values.size() + 1);
}

} // namespace venlo
