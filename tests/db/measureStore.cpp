#include "db/DbFixture.h"
#include "db/Store.h"

#include <QElapsedTimer>

#include <cstdio>

namespace
{
constexpr int folders = 1000;
constexpr int filesInEach = 20;

template <typename Action>
void measure(const char *what, venlo::Database &db, const Action &action)
{
    const qint64 before = db.store().preparedCount();
    QElapsedTimer timer;
    timer.start();
    venlo::Transaction transaction(db);
    for (int folder = 0; folder < folders; ++folder) {
        for (int file = 0; file < filesInEach; ++file)
            action(QStringLiteral("/folder%1").arg(folder),
                   QStringLiteral("File%1.html").arg(file));
    }
    transaction.commit();
    std::printf("%-24s %6lld ms, %lld statements prepared\n", what, timer.elapsed(),
                db.store().preparedCount() - before);
}
} // namespace

/// Times what a comparison of 20,000 files asks of the store.
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
    return 0;
}
