#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantList>

#include <memory>

namespace venlo
{

class Store;

/// Rows of one table addressed by column names and bound values, so that any text can be stored
/// and found, quotes included. Column limits are enforced as for statements. Made by
/// Database::openTable. Column names may name private columns too. All members throw DbError.
class Recordset
{
public:
    Recordset(Store &store, QString table);
    ~Recordset();

    /// Adds one row; a key that is there already is a DbError.
    void add(const QStringList &columns, const QVariantList &values);
    /// Deletes the rows whose key columns equal the values; the number deleted.
    int remove(const QStringList &keys, const QVariantList &values);
    /// Sets columns of the rows whose key columns equal the key values; the number changed.
    int change(const QStringList &columns, const QVariantList &values, const QStringList &keys,
               const QVariantList &keyValues);
    /// Fields of the first row whose key columns equal the values; empty when there is none.
    [[nodiscard]] QVariantList find(const QStringList &columns, const QStringList &keys,
                                    const QVariantList &values);

private:
    [[nodiscard]] QString insertion(const QStringList &columns) const;

    Store &m_store;
    QString m_table;
    QStringList m_added; ///< columns of the row added last, and the statement for it
    QString m_insertion;
    qint64 m_tablesThen = -1;
};

} // namespace venlo
