#include "sync/SyncWorld.h"

#include <QFile>

#include "sync/WorkTables.h"

namespace venlo::test
{

namespace
{
QString shown(const QVariant &time, const char *letter)
{
    return time.toString().isEmpty() ? QString() : QString::fromLatin1(letter);
}
} // namespace

ClientLimits SyncWorld::shortWaits()
{
    using std::chrono_literals::operator""s;
    ClientLimits limits;
    limits.connect = 5s;
    limits.reply = 3s;
    limits.idleData = 2s;
    return limits;
}

SyncWorld::SyncWorld(ClientLimits limits)
    : database(person, newDatabaseIn(m_data)), errorLog(userData()), eventLog(userData()),
      session(person, database, errorLog, eventLog, limits),
      cache(session, database, person, flags), operations(session, cache, person, flags),
      comparison(session, database, cache, person, flags), worker(session, operations, person),
      reviewHost(person), patternHost(database, session, person),
      runner(comparison, worker, reviewHost, database, person, flags)
{
    flags.batch = true;
    person.allowMessages();
    bool ok = false;
    database.OpenDb(ok);
    if (!ok)
        qFatal("the test's database does not open");
}

void SyncWorld::registerSite(const QString &server, const QString &user, const QString &password,
                             bool keepsCache)
{
    database.run(QStringLiteral("Insert Into msSite (sName, sSvr, sUsr, sPwd, sPxy, bPsv, bSvDb)"
                                " Values ('site', '?', '?', '?', '', ?, ?)"),
                 {server, user, password, true, keepsCache});
}

void SyncWorld::registerPattern(const QString &sSync, const QString &sFph, bool bCfl, bool bCfd)
{
    addPattern(database, {sSync, local(), QStringLiteral("site"), sFph, bCfl, bCfd});
}

bool SyncWorld::connectToSite()
{
    const Rows site =
        database.query(QStringLiteral("Select sSvr, sUsr, sPwd From msSite Where sName='site'"));
    bool ok = true;
    session.OpenInternet(QString(), ok, false);
    if (ok)
        session.Connect(QStringLiteral("site"), site.at(0, 0).toString(), site.at(1, 0).toString(),
                        site.at(2, 0).toString(), true, ok);
    return ok;
}

ComparisonResult SyncWorld::compare(bool down, const QString &sFph)
{
    bool ok = false;
    ComparisonResult result = comparison.ftSync(local(), sFph, down, ok);
    if (ok != result.ok)
        qFatal("the result and the flag differ");
    return result;
}

QString SyncWorld::plan(bool down, const QString &sFph)
{
    SyncReview review(compare(down, sFph));
    review.load(database);
    return review.print();
}

QString SyncWorld::tables()
{
    QString text;
    const Rows folders =
        database.query(QStringLiteral("Select sPh, sUL, sUF, sEd From tbFold Order By sPh"));
    for (int i = 0; i < folders.count(); ++i) {
        text += QStringLiteral("FD %1|%2|%3|%4\n")
                    .arg(folders.at(0, i).toString(), shown(folders.at(1, i), "L"),
                         shown(folders.at(2, i), "F"), folders.at(3, i).toString());
    }
    const Rows files = database.query(
        QStringLiteral("Select sPh, sFL, sUL, nSL, sUF, nSF, sEd From tbFile Order By sPh, sFL"));
    for (int i = 0; i < files.count(); ++i) {
        text += QStringLiteral("FL %1|%2|%3%4|%5%6|%7\n")
                    .arg(files.at(0, i).toString(), files.at(1, i).toString(),
                         shown(files.at(2, i), "L"), files.at(3, i).toString(),
                         shown(files.at(4, i), "F"), files.at(5, i).toString(),
                         files.at(6, i).toString());
    }
    return text;
}

QByteArray SyncWorld::errorLogText() const
{
    QFile file(errorLog.path());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QByteArray bytes = file.readAll(); // the first line may be UTF-16
    bytes.replace(QByteArray(1, '\0'), QByteArray());
    return bytes.mid(bytes.indexOf('\n') + 1);
}

bool SyncWorld::warned(const QString &part) const
{
    return !person.warnings().filter(part).isEmpty();
}

BatchRunner SyncWorld::batch(PatternHost &patterns, WindowHost *window)
{
    return BatchRunner(
        {person, flags, database, session, cache, operations, runner, patterns, window});
}

} // namespace venlo::test
