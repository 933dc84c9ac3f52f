#include "db/DatabaseFile.h"

#include "db/DbFixture.h"
#include "db/Recordset.h"
#include "db/Store.h"

#include <QFile>
#include <QTest>

using venlo::test::DbFixture;
using venlo::test::failure;
using venlo::test::rowsText;

class tst_DatabaseFile : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void theBuildMadeOne();
    void registriesAndWorkTables_data();
    void registriesAndWorkTables();
    void textsOfTheRegistriesAre255Long();
    void otherTextsHaveNoLimit();
    void siteNamesCanBeTwice();
    void workRowsCanBeTwice();
    void replacesWhatIsThere();
    void saysWhyItCannot();
    void kinds();
};

/// What an installation gets, as the build made it.
void tst_DatabaseFile::theBuildMadeOne()
{
    const QString made = QStringLiteral(VENLO_INITIAL_DATABASE);
    QCOMPARE(venlo::kindOfFile(made), venlo::FileKind::Sqlite);
    QVERIFY(QFile::permissions(made).testFlag(QFile::ReadOther)); // every user copies it
    QTemporaryDir dir;
    const QString copy = dir.filePath(QStringLiteral("dbFtp.mdb"));
    QVERIFY(QFile::copy(made, copy));
    venlo::Store store;
    store.open(copy);
    QVERIFY(venlo::holdsOurTables(store));
    QCOMPARE(store.userVersion(), venlo::tablesVersion);
    for (const QString &table : store.tableNames())
        QCOMPARE(rowsText(store.queryJet(QStringLiteral("Select Count(*) From ") + table)),
                 QStringLiteral("0"));
    QFile ini(QStringLiteral(VENLO_USER_DATA_INI));
    QVERIFY(ini.open(QIODevice::ReadOnly));
    QCOMPARE(ini.readAll().trimmed(), QByteArray("%usr%"));
}

void tst_DatabaseFile::registriesAndWorkTables_data()
{
    QTest::addColumn<QString>("columns");
    const auto row = [](const char *table, const char *columns) {
        QTest::newRow(table) << QString::fromLatin1(columns);
    };
    row("msSite", "sName, sSvr, sUsr, sPwd, sPxy, bPsv, bSvDb, sMemo");
    row("msSync", "sSync, sLph, sName, sFph, bCfl, bCfd, sMemo");
    row("tbFold", "sPh, sUL, sUF, sEd");
    row("tbFile", "sPh, sFL, sUL, nSL, sUF, nSF, sEd");
}

void tst_DatabaseFile::registriesAndWorkTables()
{
    DbFixture fixture;
    const venlo::JetTable *table =
        fixture.db().store().table(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(table);
    QStringList names;
    for (const auto &column : table->columns)
        names.append(column.name);
    QTEST(names.join(QStringLiteral(", ")), "columns");
}

void tst_DatabaseFile::textsOfTheRegistriesAre255Long()
{
    DbFixture fixture;
    for (const char *column :
         {"msSite.sName", "msSite.sSvr", "msSite.sUsr", "msSite.sPwd", "msSite.sPxy",
          "msSync.sSync", "msSync.sLph", "msSync.sName", "msSync.sFph"}) {
        const auto parts = QString::fromLatin1(column).split(QLatin1Char('.'));
        const auto set = [&](int length) {
            const auto table = fixture.db().openTable(parts[0]);
            const QString text(length, QChar(0x3042));
            if (parts[1] == QLatin1String("sSync") || parts[0] == QLatin1String("msSite"))
                table->add({parts[1]}, {text});
            else
                table->add({QStringLiteral("sSync"), parts[1]}, {parts[1], text});
        };
        QVERIFY2(failure([&] { set(256); }) != QLatin1String("(none)"), column);
        QCOMPARE(failure([&] { set(255); }), QStringLiteral("(none)"));
    }
}

void tst_DatabaseFile::otherTextsHaveNoLimit()
{
    DbFixture fixture;
    const QString text(5000, QLatin1Char('x'));
    for (const char *column :
         {"msSite.sMemo", "tbFold.sPh", "tbFold.sUL", "tbFold.sUF", "tbFold.sEd", "tbFile.sPh",
          "tbFile.sFL", "tbFile.sUL", "tbFile.sUF", "tbFile.sEd"}) {
        const auto parts = QString::fromLatin1(column).split(QLatin1Char('.'));
        fixture.db().openTable(parts[0])->add({parts[1]}, {text});
    }
    QCOMPARE(fixture.rows(QStringLiteral("Select Count(*) From tbFile")), QStringLiteral("5"));
}

void tst_DatabaseFile::siteNamesCanBeTwice()
{
    DbFixture fixture;
    for (int i = 0; i < 2; ++i)
        fixture.db().run(QStringLiteral("Insert Into msSite (sName) Values ('a')"));
    QCOMPARE(fixture.rows(QStringLiteral("Select bPsv, bSvDb From msSite")),
             QStringLiteral("0|0 / 0|0"));
}

void tst_DatabaseFile::workRowsCanBeTwice()
{
    DbFixture fixture;
    for (int i = 0; i < 2; ++i) {
        fixture.db().run(QStringLiteral("Insert Into tbFold (sPh) Values ('a')"));
        fixture.db().run(QStringLiteral("Insert Into tbFile (sPh, sFL) Values ('a', 'b')"));
    }
    QCOMPARE(fixture.rows(QStringLiteral("Select Count(*) From tbFile")), QStringLiteral("2"));
}

void tst_DatabaseFile::replacesWhatIsThere()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("a.mdb"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("something else");
    file.close();
    venlo::createInitialDatabase(path);
    QCOMPARE(venlo::kindOfFile(path), venlo::FileKind::Sqlite);
}

void tst_DatabaseFile::saysWhyItCannot()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("no folder/a.mdb"));
    const QString words = failure([&] { venlo::createInitialDatabase(path); });
    QVERIFY2(words.startsWith(path), qPrintable(words));
}

void tst_DatabaseFile::kinds()
{
    QTemporaryDir dir;
    QCOMPARE(venlo::kindOfFile(dir.filePath(QStringLiteral("none"))), venlo::FileKind::Missing);
    QCOMPARE(venlo::kindOfFile(dir.path()), venlo::FileKind::Foreign);
}

QTEST_GUILESS_MAIN(tst_DatabaseFile)
#include "tst_DatabaseFile.moc"
