#include "db/Database.h"

#include "db/DbFixture.h"
#include "db/Recordset.h"
#include "db/Store.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

using venlo::test::DbFixture;
using venlo::test::rowsText;

namespace
{
const QString countFolders = QStringLiteral("Select Count(*) From tbFold");

QString temporaryPath(const DbFixture &fixture)
{
    return fixture.folder() + QStringLiteral("dbFtp$$$.mdb");
}

/// A file that is much larger than its content.
void fillAndEmpty(DbFixture &fixture)
{
    venlo::Transaction transaction(fixture.db());
    for (int i = 0; i < 2000; ++i)
        fixture.db().run(QStringLiteral("Insert Into tbFile (sPh, sFL) Values ('?', '?')"),
                         {QString(100, QLatin1Char('x')), QString::number(i)});
    fixture.db().run(QStringLiteral("Delete From tbFile"));
    fixture.db().run(QStringLiteral("Insert Into tbFold (sPh) Values ('kept')"));
    transaction.commit();
}
} // namespace

class tst_CompactDb : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void makesTheFileSmaller();
    void removesALeftOver();
    void leftOverThatCannotGoEndsIt();
    void failureKeepsTheOldFile();
    void everySnapshotIsWhole();
    void killedAtAnyPoint();
    void recordSetsSurvive();
    void notInsideATransaction();
    void anotherProcessWriting();
};

void tst_CompactDb::makesTheFileSmaller()
{
    DbFixture fixture;
    fillAndEmpty(fixture);
    const auto before = QFileInfo(fixture.path()).size();
    fixture.person().expectMessage(fixture.path() + QStringLiteral(" を最適化しました"));
    fixture.db().CompactDb();
    QVERIFY(fixture.person().verify());
    QVERIFY(QFileInfo(fixture.path()).size() < before / 2);
    QVERIFY(fixture.db().isOpen());
    QCOMPARE(fixture.rows(countFolders), QStringLiteral("1"));
    QCOMPARE(fixture.db().store().userVersion(), 1);
    QCOMPARE(QDir(fixture.folder()).entryList(QDir::Files),
             QStringList(QStringLiteral("dbFtp.mdb")));
#ifdef Q_OS_UNIX
    const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    QVERIFY(!(QFile::permissions(fixture.path()) & others));
#endif
    // Limits and keys are those of the old file.
    fixture.db().run(QStringLiteral("Insert into mssync (sSync, sLph) Values ('a', 'b')"));
    bool ok = false;
    fixture.db().ExecSql(QStringLiteral("Insert into mssync (sSync, sLph) Values ('A', 'b')"), ok);
    QVERIFY(!ok);
}

void tst_CompactDb::removesALeftOver()
{
    DbFixture fixture;
    QFile left(temporaryPath(fixture));
    QVERIFY(left.open(QIODevice::WriteOnly));
    left.write("left over");
    left.close();
    fixture.person().expectMessage(fixture.path() + QStringLiteral(" を最適化しました"));
    fixture.db().CompactDb();
    QVERIFY(fixture.person().verify());
    QVERIFY(!left.exists());
    QCOMPARE(fixture.rows(countFolders), QStringLiteral("0"));
}

void tst_CompactDb::leftOverThatCannotGoEndsIt()
{
    DbFixture fixture;
    fillAndEmpty(fixture);
    QVERIFY(QDir().mkpath(temporaryPath(fixture)));
    const auto before = QFileInfo(fixture.path()).size();
    fixture.db().CompactDb();
    QVERIFY(fixture.person().messages().isEmpty());
    QCOMPARE(QFileInfo(fixture.path()).size(), before);
    QVERIFY(fixture.db().isOpen());
    QCOMPARE(fixture.rows(countFolders), QStringLiteral("1"));
}

/// A file with a hole in it cannot be copied: it stays as it is, and open.
void tst_CompactDb::failureKeepsTheOldFile()
{
    DbFixture fixture;
    fillAndEmpty(fixture);
    fixture.db().store().begin();
    for (int i = 0; i < 3000; ++i)
        fixture.db().store().exec(QStringLiteral("INSERT INTO tbFile (sPh, sFL) VALUES (?, 'x')"),
                                  {QString(200, QLatin1Char('y'))});
    fixture.db().store().commit();
    fixture.db().CloseDb();
    QFile file(fixture.path());
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.seek(file.size() / 2));
    file.write(QByteArray(16384, '\xFF'));
    file.seek(0);
    const QByteArray before = file.readAll();
    file.close();
    bool ok = false;
    fixture.db().OpenDb(ok);
    QVERIFY(ok);
    fixture.db().CompactDb();
    QVERIFY(fixture.person().messages().isEmpty());
    QVERIFY(!fixture.db().lastError().isEmpty());
    QVERIFY(!QFile::exists(temporaryPath(fixture)));
    QVERIFY(fixture.db().isOpen());
    QCOMPARE(fixture.rows(countFolders), QStringLiteral("1"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), before);
}

/// The message comes when all is done: what lies under the name then is complete without this
/// process.
void tst_CompactDb::everySnapshotIsWhole()
{
    DbFixture fixture;
    fillAndEmpty(fixture);
    const QString copy = fixture.folder() + QStringLiteral("copy.mdb");
    fixture.person().allowMessages();
    fixture.db().CompactDb();
    QVERIFY(QFile::copy(fixture.path(), copy));
    venlo::Store store;
    store.open(copy);
    QVERIFY(store.damage().isEmpty());
    QCOMPARE(rowsText(store.queryJet(countFolders)), QStringLiteral("1"));
}

/// Whenever the process ends, what stands under the name is a whole database.
void tst_CompactDb::killedAtAnyPoint()
{
    DbFixture fixture;
    fillAndEmpty(fixture);
    fixture.db().CloseDb();
    int leftOvers = 0;
    for (int round = 0; round < 25; ++round) {
        QProcess process;
        process.start(QStringLiteral(VENLO_COMPACT_AGAIN), {fixture.folder()});
        QVERIFY(process.waitForReadyRead(30000));
        QVERIFY(!process.waitForFinished(1 + 3 * round));
        process.kill();
        QVERIFY(process.waitForFinished(30000));
        leftOvers += QFile::exists(temporaryPath(fixture)) ? 1 : 0;
        venlo::Store store;
        store.open(fixture.path());
        QCOMPARE(store.damage(), QString());
        QCOMPARE(rowsText(store.queryJet(countFolders)), QStringLiteral("1"));
    }
    qInfo("killed in the middle of a copy %d times", leftOvers);
}

void tst_CompactDb::recordSetsSurvive()
{
    DbFixture fixture;
    const auto folders = fixture.db().openTable(QStringLiteral("tbFold"));
    venlo::Store &store = fixture.db().store();
    fixture.person().allowMessages();
    fixture.db().CompactDb();
    folders->add({QStringLiteral("sPh")}, {QStringLiteral("a")});
    QCOMPARE(rowsText(store.queryJet(countFolders)), QStringLiteral("1"));
}

void tst_CompactDb::notInsideATransaction()
{
    DbFixture fixture;
    {
        venlo::Transaction transaction(fixture.db());
        fixture.db().run(QStringLiteral("Insert Into tbFold (sPh) Values ('a')"));
        fixture.db().CompactDb();
        QVERIFY(fixture.person().messages().isEmpty());
        transaction.commit();
    }
    QCOMPARE(fixture.rows(countFolders), QStringLiteral("1"));
}

void tst_CompactDb::anotherProcessWriting()
{
    DbFixture fixture;
    venlo::Store other;
    other.open(fixture.path());
    other.begin();
    other.execJet(QStringLiteral("Insert Into tbFold (sPh) Values ('late')"));
    fixture.db().CompactDb();
    QVERIFY(fixture.person().messages().isEmpty());
    QVERIFY(fixture.db().lastError().startsWith(QStringLiteral("ﾃﾞｰﾀﾍﾞｰｽは他の")));
    other.commit();
    QCOMPARE(fixture.rows(countFolders), QStringLiteral("1"));
}

QTEST_GUILESS_MAIN(tst_CompactDb)
#include "tst_CompactDb.moc"
