#include "gui/ReviewFixture.h"

#include "db/DatabaseFile.h"
#include "db/Store.h"

namespace venlo::test
{

namespace
{
QString pathOf(const SyncRow &row)
{
    return row.folder ? row.sPh + QLatin1Char('/') : relativeFile(row.sPh, row.name);
}
} // namespace

ReviewTables::ReviewTables()
{
    const QString folder = m_folder.path() + QLatin1Char('/');
    createInitialDatabase(folder + QStringLiteral("dbFtp.mdb"));
    m_database = std::make_unique<Database>(m_person, folder);
    bool ok = false;
    m_database->OpenDb(ok);
    if (!ok)
        qFatal("no database");
}

void ReviewTables::folder(const QString &sPh, const QString &local, const QString &remote,
                          const QString &mark)
{
    m_database->run(
        QStringLiteral("Insert Into tbFold (sPh, sUL, sUF, sEd) Values ('?', '?', '?', '?')"),
        {sPh, local, remote, mark});
}

void ReviewTables::file(const QString &sPh, const QString &name, const Side &local,
                        const Side &remote, const QString &mark)
{
    m_database->run(QStringLiteral("Insert Into tbFile (sPh, sFL, sUL, nSL, sUF, nSF, sEd) "
                                   "Values ('?', '?', '?', ?, '?', ?, '?')"),
                    {sPh, name, local.time, local.size, remote.time, remote.size, mark});
}

void ReviewTables::manyFiles(int count)
{
    const QString time = QStringLiteral("24/05/01 10:00");
    const QString add = QStringLiteral("追加");
    const QString insert = QStringLiteral("Insert Into tbFile (sPh, sFL, sUL, nSL, sUF, nSF, sEd) "
                                          "Values (?, ?, ?, ?, '', 0, ?)");
    Transaction transaction(*m_database);
    folder(QStringLiteral("."), time, time, QStringLiteral("比較"));
    for (int i = 0; i < count; ++i) {
        const QString sPh = QStringLiteral("/d%1").arg(i / 1000, 4, 10, QLatin1Char('0'));
        if (i % 1000 == 0)
            folder(sPh, time, time, QStringLiteral("比較"));
        const QString name = QStringLiteral("f%1.html").arg(i, 6, 10, QLatin1Char('0'));
        m_database->store().exec(insert, {sPh, name, time, i + 1, add});
    }
    transaction.commit();
}

std::unique_ptr<SyncReview> ReviewTables::review(bool down, SyncBlocks blocks,
                                                 ReviewOptions options)
{
    ComparisonResult result;
    result.ok = true;
    result.pair = {QStringLiteral("/home/hanako/site"), QStringLiteral("/www"), down};
    result.blocks = std::move(blocks);
    auto review = std::make_unique<SyncReview>(std::move(result), options);
    review->load(*m_database);
    return review;
}

void fillEveryKind(ReviewTables &tables)
{
    const QString older = QStringLiteral("24/05/01 10:00");
    const QString newer = QStringLiteral("24/05/02 11:30");
    const QString compare = QStringLiteral("比較");
    const QString add = QStringLiteral("追加");
    const QString remove = QStringLiteral("削除");
    tables.folder(QStringLiteral("."), older, older, compare);
    tables.file(QStringLiteral("."), QStringLiteral("added.html"), {newer, 3000}, {}, add);
    tables.file(QStringLiteral("."), QStringLiteral("gone.html"), {}, {older, 70}, remove);
    tables.folder(QStringLiteral("/both"), older, older, compare);
    tables.file(QStringLiteral("/both"), QStringLiteral("newer.html"), {newer, 5000}, {older, 5000},
                compare);
    tables.file(QStringLiteral("/both"), QStringLiteral("same.html"), {older, 900}, {older, 900},
                compare);
    tables.folder(QStringLiteral("/new"), newer, QString(), add);
    tables.file(QStringLiteral("/new"), QStringLiteral("a.css"), {newer, 10}, {}, add);
    tables.folder(QStringLiteral("/new/sub"), newer, QString(), add);
    tables.file(QStringLiteral("/new/sub"), QStringLiteral("b.css"), {newer, 20}, {}, add);
    tables.folder(QStringLiteral("/old"), QString(), older, remove);
    tables.file(QStringLiteral("/old"), QStringLiteral("c.css"), {}, {older, 30}, remove);
}

int rowOf(const SyncReview &review, const QString &path)
{
    for (int row = 0; row < review.count(); ++row) {
        if (pathOf(review.row(row)) == path)
            return row;
    }
    return -1;
}

RowEnd ScriptedWorker::work(const SyncReview &review, int row)
{
    const QString path = pathOf(review.row(row));
    worked += path;
    if (onRow)
        onRow(path);
    return end ? end(path) : RowEnd();
}

} // namespace venlo::test
