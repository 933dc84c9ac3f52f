#include "sync/ReviewOptions.h"

#include "db/Database.h"

namespace venlo
{

namespace
{
/// True once the options are decided.
bool readOptions(Database &database, const QString &sql, const QVariantList &values,
                 ReviewOptions &options)
{
    try {
        const Rows rows = database.query(sql, values);
        if (rows.count() == 0)
            return false;
        options.bCfl = rows.at(0, 0).toLongLong() != 0;
        options.bCfd = rows.at(1, 0).toLongLong() != 0;
        return true;
    } catch (const DbError &) {
        options = {false, true, true};
        return true;
    }
}
} // namespace

ReviewOptions optionsOfPattern(Database &database, const QString &sSync)
{
    ReviewOptions options;
    const auto sql = QStringLiteral("Select bCfl, bCfd From msSync Where sSync='?'");
    (void)readOptions(database, sql, {sSync}, options);
    return options;
}

ReviewOptions optionsOfPair(Database &database, const QString &sLph, const QString &sFphGiven,
                            const QString &sFphNormal)
{
    ReviewOptions options;
    const auto sql = QStringLiteral("Select bCfl, bCfd From msSync Where sLph='?' And sFph='?'");
    if (!readOptions(database, sql, {sLph, sFphGiven}, options))
        (void)readOptions(database, sql, {sLph, sFphNormal}, options);
    return options;
}

} // namespace venlo
