#include "db/Recordset.h"

#include "db/DbError.h"
#include "db/Store.h"

namespace venlo
{

namespace
{
constexpr QLatin1String comma(",");

/// The table as it is now: columns can have been added since the record set was opened.
const JetTable &tableOf(Store &store, const QString &name)
{
    const JetTable *table = store.table(name);
    if (!table)
        throw DbError(QStringLiteral("ﾃｰﾌﾞﾙ \"%1\" がありません").arg(name));
    return *table;
}

const JetColumn &columnOf(const JetTable &table, const QString &name)
{
    const JetColumn *column = table.column(name);
    if (!column)
        throw DbError(QStringLiteral("列 \"%1\" がありません").arg(name));
    return *column;
}

void requireSameCount(const QStringList &columns, const QVariantList &values)
{
    if (columns.isEmpty() || columns.size() != values.size())
        throw DbError(QStringLiteral("列の数と値の数が一致しません"));
}

QString placeholder(const JetColumn &column)
{
    return column.type == JetType::YesNo ? QStringLiteral("venlo_yesno(?)") : QStringLiteral("?");
}

QString nameList(const JetTable &table, const QStringList &columns)
{
    QStringList names;
    for (const QString &name : columns)
        names.append(quotedName(columnOf(table, name).name));
    return names.join(comma);
}

/// The rows whose keys equal the values; adds what is compared to bound.
QString where(const JetTable &table, const QStringList &keys, const QVariantList &values,
              QVariantList &bound)
{
    requireSameCount(keys, values);
    QStringList tests;
    for (qsizetype i = 0; i < keys.size(); ++i) {
        const QString name = quotedName(columnOf(table, keys[i]).name);
        if (values[i].isNull()) {
            tests.append(name + QStringLiteral(" IS NULL"));
        } else {
            tests.append(name + QStringLiteral("=?"));
            bound.append(values[i]);
        }
    }
    return QStringLiteral(" WHERE ") + tests.join(QStringLiteral(" AND "));
}
} // namespace

Recordset::Recordset(Store &store, QString table) : m_store(store), m_table(std::move(table))
{
    m_table = tableOf(m_store, m_table).name;
}

Recordset::~Recordset() = default;

QString Recordset::insertion(const QStringList &columns) const
{
    const JetTable &table = tableOf(m_store, m_table);
    QStringList places;
    for (const QString &name : columns)
        places.append(placeholder(columnOf(table, name)));
    return QStringLiteral("INSERT INTO ") + quotedName(table.name) + QStringLiteral(" (") +
           nameList(table, columns) + QStringLiteral(") VALUES (") + places.join(comma) +
           QLatin1Char(')');
}

void Recordset::add(const QStringList &columns, const QVariantList &values)
{
    requireSameCount(columns, values);
    if (m_tablesThen != m_store.catalogueLoads() || m_added != columns) {
        m_insertion = insertion(columns);
        m_added = columns;
        m_tablesThen = m_store.catalogueLoads();
    }
    m_store.exec(m_insertion, values);
}

int Recordset::remove(const QStringList &keys, const QVariantList &values)
{
    const JetTable &table = tableOf(m_store, m_table);
    QVariantList bound;
    const QString condition = where(table, keys, values, bound);
    return m_store.exec(QStringLiteral("DELETE FROM ") + quotedName(table.name) + condition, bound);
}

int Recordset::change(const QStringList &columns, const QVariantList &values,
                      const QStringList &keys, const QVariantList &keyValues)
{
    requireSameCount(columns, values);
    const JetTable &table = tableOf(m_store, m_table);
    QStringList sets;
    for (const QString &name : columns) {
        const JetColumn &column = columnOf(table, name);
        sets.append(quotedName(column.name) + QLatin1Char('=') + placeholder(column));
    }
    QVariantList bound = values;
    const QString condition = where(table, keys, keyValues, bound);
    return m_store.exec(QStringLiteral("UPDATE ") + quotedName(table.name) +
                            QStringLiteral(" SET ") + sets.join(comma) + condition,
                        bound);
}

QVariantList Recordset::find(const QStringList &columns, const QStringList &keys,
                             const QVariantList &values)
{
    const JetTable &table = tableOf(m_store, m_table);
    QVariantList bound;
    const QString condition = where(table, keys, values, bound);
    const Rows rows = m_store.query(QStringLiteral("SELECT ") + nameList(table, columns) +
                                        QStringLiteral(" FROM ") + quotedName(table.name) +
                                        condition + QStringLiteral(" LIMIT 1"),
                                    bound);
    QVariantList row;
    for (int field = 0; rows.count() > 0 && field < rows.fields(); ++field)
        row.append(rows.at(field, 0));
    return row;
}

} // namespace venlo
