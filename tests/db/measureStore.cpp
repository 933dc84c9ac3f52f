#include "db/DbFixture.h"
#include "db/Recordset.h"
#include "db/Store.h"

#include <QElapsedTimer>

#include <cstdio>

namespace
{
constexpr int folders = 1000;
constexpr int filesInEach = 20;

template <typename Action>
void measureOnce(const char *what, venlo::Database &db, const Action &action)
{
    const qint64 before = db.store().preparedCount();
    QElapsedTimer timer;
    timer.start();
    venlo::Transaction transaction(db);
    action();
    transaction.commit();
    std::printf("%-32s %6lld ms, %lld statements prepared\n", what, timer.elapsed(),
                db.store().preparedCount() - before);
}

/// An action for each file.
template <typename Action>
void measure(const char *what, venlo::Database &db, const Action &action)
{
    measureOnce(what, db, [&] {
        for (int folder = 0; folder < folders; ++folder) {
            for (int file = 0; file < filesInEach; ++file)
                action(QStringLiteral("/folder%1").arg(folder),
                       QStringLiteral("File%1.html").arg(file));
        }
    });
}

QString cacheTable()
{
    return QStringLiteral("site");
}
} // namespace

/// Times what 20,000 files ask of the store: the work tables, a site's cache, and a folder of the
/// cache that gets another name.
int main()
{
    venlo::test::DbFixture fixture;
    venlo::Database &db = fixture.db();
    const QString time = QStringLiteral("24/05/06 07:08");
    measure("insert remote files", db, [&](const QString &folder, const QString &name) {
        db.run(QStringLiteral("Insert Into tbFile (sPh, sFL, sUL, nSL, sUF, nSF, sEd) "
                              "Values ('?', '?', '', 0, '?', ?, '') "),
               {folder, name, time, 1234});
    });
    measure("update by folder and name", db, [&](const QString &folder, const QString &name) {
        db.run(QStringLiteral("Update tbFile Set nSL=?, sUL='?' Where sPh='?' And sFL='?'"),
               {1234, time, folder, name.toLower()});
    });
    measureOnce("mark", db, [&] {
        db.run(QStringLiteral("Update tbFile Set sEd='比較'"));
        db.run(QStringLiteral("Update tbFile Set sEd='追加' Where sUF=''"));
        db.run(QStringLiteral("Update tbFile Set sEd='削除' Where sUL=''"));
    });
    fixture.makeCacheTable(cacheTable());
    const auto cache = db.openTable(cacheTable());
    const QStringList columns{QStringLiteral("sDir"), QStringLiteral("bFd"),
                              QStringLiteral("sName"), QStringLiteral("dDate"),
                              QStringLiteral("nSize")};
    measure("insert into the cache", db, [&](const QString &folder, const QString &name) {
        cache->add(columns, {folder, 0, name, 45678.5, 1235});
    });
    measureOnce("relabel one folder of the cache", db, [&] {
        db.run(QStringLiteral("Update ? Set sDir='?' + Mid(sDir,?) Where sDir Like '?*'"),
               {cacheTable(), QStringLiteral("/renamed"), 11, QStringLiteral("/folder999")});
    });
    measureOnce("read the cache in order", db, [&] {
        (void)db.query(QStringLiteral("Select sDir, sName, dDate, nSize From ?"
                                      " Where bFd = 0 And sDir Like '?*' Order By sDir, sName"),
                       {cacheTable(), QStringLiteral("/")});
    });
    return 0;
}
