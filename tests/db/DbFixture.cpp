#include "db/DbFixture.h"

#include "db/DatabaseFile.h"
#include "db/DisplayFormat.h"

namespace venlo::test
{

namespace
{
QString cellText(const QVariant &cell)
{
    if (cell.isNull())
        return QStringLiteral("Null");
    if (cell.typeId() == QMetaType::Double)
        return FormatDateText(fromDayCount(cell.toDouble()));
    return cell.toString();
}
} // namespace

DbFixture::DbFixture() : m_db(m_person, folder())
{
    createInitialDatabase(path());
    bool ok = false;
    m_db.OpenDb(ok);
    if (!ok)
        qFatal("the fresh database does not open");
}

QString DbFixture::rows(const QString &sql, const QVariantList &values)
{
    return rowsText(m_db.query(sql, values));
}

void DbFixture::makeCacheTable(const QString &name)
{
    m_db.run(
        QStringLiteral("Create table ") + name +
        QStringLiteral(" (sDir Text(255), bFd Byte, sName Text(255), dDate Date, nSize Long)"));
    m_db.run(QStringLiteral("Create Index PrimaryKey On ") + name +
             QStringLiteral("(sDir, sName) With Primary"));
}

QString rowsText(const Rows &rows)
{
    QStringList lines;
    for (int row = 0; row < rows.count(); ++row) {
        QStringList cells;
        for (int field = 0; field < rows.fields(); ++field)
            cells.append(cellText(rows.at(field, row)));
        lines.append(cells.join(QLatin1Char('|')));
    }
    return lines.join(QStringLiteral(" / "));
}

} // namespace venlo::test
