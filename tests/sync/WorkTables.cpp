#include "sync/WorkTables.h"

#include "db/DatabaseFile.h"

namespace venlo::test
{

QString newDatabaseIn(const QTemporaryDir &folder)
{
    const QString path = folder.path() + QLatin1Char('/');
    createInitialDatabase(path + QStringLiteral("dbFtp.mdb"));
    return path;
}

void addPattern(Database &database, const PatternRow &row)
{
    database.run(QStringLiteral("Insert Into msSync (sSync, sLph, sName, sFph, bCfl, bCfd)"
                                " Values ('?', '?', '?', '?', ?, ?)"),
                 {row.sSync, row.sLph, row.sName, row.sFph, row.bCfl, row.bCfd});
}

WorkTables::WorkTables() : m_database(m_person, newDatabaseIn(m_folder))
{
    bool ok = false;
    m_database.OpenDb(ok);
    if (!ok)
        qFatal("the test's database does not open");
}

void WorkTables::addFolder(const QString &sPh, const QString &sUL, const QString &sUF,
                           const QString &sEd)
{
    m_database.run(
        QStringLiteral("Insert Into tbFold (sPh, sUL, sUF, sEd) Values ('?', '?', '?', '?')"),
        {sPh, sUL, sUF, sEd});
}

void WorkTables::addFile(const QString &sPh, const QString &sFL, const Copy &local,
                         const Copy &remote, const QString &sEd)
{
    m_database.run(QStringLiteral("Insert Into tbFile (sPh, sFL, sUL, nSL, sUF, nSF, sEd)"
                                  " Values ('?', '?', '?', ?, '?', ?, '?')"),
                   {sPh, sFL, local.time, local.size, remote.time, remote.size, sEd});
}

void WorkTables::addPattern(const QString &sSync, const QString &sLph, const QString &sFph,
                            bool bCfl, bool bCfd)
{
    test::addPattern(m_database, {sSync, sLph, QStringLiteral("site"), sFph, bCfl, bCfd});
}

ComparisonResult WorkTables::compared(bool down, const QString &sFph)
{
    ComparisonResult result;
    result.ok = true;
    result.pair = {QStringLiteral("/home/me/web"), sFph, down};
    return result;
}

SyncReview WorkTables::review(ComparisonResult comparison, ReviewOptions options)
{
    SyncReview review(std::move(comparison), options);
    review.load(m_database);
    return review;
}

QString workTablesText(Database &database)
{
    QString text;
    const auto folders =
        database.query(QStringLiteral("Select sPh, sUL, sUF, sEd From tbFold Order By sPh"));
    for (int i = 0; i < folders.count(); ++i) {
        text += QStringLiteral("D %1|%2|%3|%4\n")
                    .arg(folders.at(0, i).toString(), folders.at(1, i).toString(),
                         folders.at(2, i).toString(), folders.at(3, i).toString());
    }
    const auto files = database.query(QStringLiteral(
        "Select sPh, sFL, sUL, nSL, sUF, nSF, sEd From tbFile Order By sPh, sFL, nSF"));
    for (int i = 0; i < files.count(); ++i) {
        text += QStringLiteral("F %1|%2|%3|%4|%5|%6|%7\n")
                    .arg(files.at(0, i).toString(), files.at(1, i).toString(),
                         files.at(2, i).toString(), files.at(3, i).toString(),
                         files.at(4, i).toString(), files.at(5, i).toString(),
                         files.at(6, i).toString());
    }
    return text;
}

QString storedText(Database &database, const WorkRows &rows)
{
    Transaction transaction(database);
    rows.store(database);
    transaction.commit();
    return workTablesText(database);
}

int rowOf(const SyncReview &review, const QString &path)
{
    for (int i = 0; i < review.count(); ++i) {
        const SyncRow &row = review.row(i);
        const QString here =
            row.folder ? row.sPh + QLatin1Char('/') : relativeFile(row.sPh, row.name);
        if (here == path)
            return i;
    }
    return -1;
}

} // namespace venlo::test
