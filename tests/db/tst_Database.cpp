#include "db/Database.h"

#include "db/DatabaseFile.h"
#include "db/DbFixture.h"
#include "db/Store.h"

#include <QFile>
#include <QTest>

using venlo::Database;
using venlo::Rows;
using venlo::Store;
using venlo::test::DbFixture;
using venlo::test::failure;
using venlo::test::ScriptedPerson;

namespace
{
const QString none = QStringLiteral("(none)");

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString brokenBy(Database &db, const QString &sql, const QVariantList &values)
{
    try {
        db.run(sql, values);
    } catch (const venlo::DbError &error) {
        return error.brokenBy();
    }
    return none;
}
} // namespace

class tst_Database : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void opens();
    void missingFile();
    void otherFiles_data();
    void otherFiles();
    void databaseOfSomethingElse();
    void newerTables();
    void lockedFile();
#ifdef Q_OS_UNIX
    void failedOpeningClosesWhatWasOpen();
#endif
    void execSqlSetsOkAfterwards();
    void execSqlLeavesOkAlone();
    void selectRowsCounts();
    void selectRowsThrows();
    void selectValuesFillsWhatIsThere();
    void selectValuesWritesNothingWithoutRow();
    void brokenValues_data();
    void brokenValues();
    void soundValues();
    void aBreakStaysInItsStatement();
};

void tst_Database::opens()
{
    DbFixture fixture;
    QVERIFY(fixture.db().isOpen());
    QCOMPARE(fixture.db().path(), fixture.path());
    QVERIFY(fixture.db().lastError().isEmpty());
    QVERIFY(fixture.person().messages().isEmpty());
#ifdef Q_OS_UNIX
    const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    QVERIFY(!(QFile::permissions(fixture.path()) & others));
#endif
    fixture.db().CloseDb();
    fixture.db().CloseDb();
    QVERIFY(!fixture.db().isOpen());
}

void tst_Database::missingFile()
{
    QTemporaryDir dir;
    ScriptedPerson person;
    Database db(person, dir.path() + QLatin1Char('/'));
    person.expectMessage(dir.path() + QStringLiteral("/dbFtp.mdb  が存在しません"));
    bool ok = true;
    db.OpenDb(ok);
    QVERIFY(!ok);
    QVERIFY(person.verify());
    QVERIFY(!db.isOpen());
    QVERIFY(!QFile::exists(db.path()));
}

void tst_Database::otherFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("words");
    const QString foreign = QStringLiteral(" はこのﾌﾟﾛｸﾞﾗﾑのﾃﾞｰﾀﾍﾞｰｽではありません");
    const QString jet = QStringLiteral(
        " は以前の形式(Jet)のﾃﾞｰﾀﾍﾞｰｽなので開けません\rﾌｧｲﾙはそのまま残してあります "
        "ﾌｫﾙﾀﾞごと別の場所へ移して起動し直し、接続先と同期ﾊﾟﾀｰﾝを登録し直して下さい");
    const QByteArray start("\0\x01\0\0", 4);
    QTest::newRow("Jet 3 and 4") << start + QByteArray("Standard Jet DB\0", 16) +
                                        QByteArray(4000, 'x')
                                 << jet;
    QTest::newRow("the engine after Jet")
        << start + QByteArray("Standard ACE DB\0", 16) + QByteArray(4000, 'x') << jet;
    QTest::newRow("empty") << QByteArray() << foreign;
    QTest::newRow("short") << QByteArray("SQLite") << foreign;
    QTest::newRow("a picture") << QByteArray("\x89PNG\r\n") + QByteArray(4000, 'x') << foreign;
    QTest::newRow("the words elsewhere")
        << QByteArray(5, 'x') + QByteArray("Standard Jet DB") + QByteArray(4000, 'x') << foreign;
}

void tst_Database::otherFiles()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, words);
    QTemporaryDir dir;
    ScriptedPerson person;
    Database db(person, dir.path() + QLatin1Char('/'));
    QFile file(db.path());
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
    file.close();
    person.expectMessage(db.path() + words);
    bool ok = true;
    db.OpenDb(ok);
    QVERIFY(!ok);
    QVERIFY(person.verify());
    QVERIFY(!db.isOpen());
    QCOMPARE(contentOf(db.path()), content);
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files).size(), 1);
}

void tst_Database::databaseOfSomethingElse()
{
    QTemporaryDir dir;
    ScriptedPerson person;
    Database db(person, dir.path() + QLatin1Char('/'));
    {
        Store store;
        store.open(db.path(), Store::Mode::Create);
        store.exec(QStringLiteral("CREATE TABLE msSite (sName TEXT)"));
    }
    person.expectMessage(db.path() + QStringLiteral(" はこのﾌﾟﾛｸﾞﾗﾑのﾃﾞｰﾀﾍﾞｰｽではありません"));
    bool ok = true;
    db.OpenDb(ok);
    QVERIFY(!ok);
    QVERIFY(person.verify());
}

void tst_Database::newerTables()
{
    DbFixture fixture;
    fixture.db().store().setUserVersion(venlo::tablesVersion + 1);
    fixture.person().expectMessage(fixture.path() +
                                   QStringLiteral(" はこのﾌﾟﾛｸﾞﾗﾑのﾃﾞｰﾀﾍﾞｰｽではありません"));
    bool ok = true;
    fixture.db().OpenDb(ok);
    QVERIFY(!ok);
    QVERIFY(fixture.person().verify());
}

void tst_Database::lockedFile()
{
    DbFixture fixture;
    Store::Options options;
    options.busyMilliseconds = 50;
    Store other(options);
    other.open(fixture.path());
    fixture.db().store().exec(QStringLiteral("BEGIN EXCLUSIVE"));
    const QString words = failure([&] { other.execJet(QStringLiteral("Delete From tbFold")); });
    QVERIFY2(words.startsWith(QStringLiteral("ﾃﾞｰﾀﾍﾞｰｽは他のﾌﾟﾛｸﾞﾗﾑが使用中です")),
             qPrintable(words));
    fixture.db().store().exec(QStringLiteral("COMMIT"));
    QCOMPARE(failure([&] { other.execJet(QStringLiteral("Delete From tbFold")); }), none);

    other.exec(QStringLiteral("BEGIN EXCLUSIVE"));
    ScriptedPerson person;
    person.allowMessages();
    Database waiting(person, fixture.folder());
    bool ok = true;
    waiting.OpenDb(ok);
    QVERIFY(!ok);
    QCOMPARE(person.messages().size(), 1);
    QVERIFY(person.messages().constFirst().startsWith(
        fixture.path() + QStringLiteral(" を開けません\rﾃﾞｰﾀﾍﾞｰｽは他の")));
}

#ifdef Q_OS_UNIX
void tst_Database::failedOpeningClosesWhatWasOpen()
{
    DbFixture fixture;
    QVERIFY(QFile::remove(fixture.path()));
    fixture.person().allowMessages();
    bool ok = true;
    fixture.db().OpenDb(ok);
    QVERIFY(!ok);
    QVERIFY(!fixture.db().isOpen());
    QVERIFY(failure([&] { fixture.db().run(QStringLiteral("Delete From tbFold")); }) != none);
}
#endif

void tst_Database::execSqlSetsOkAfterwards()
{
    DbFixture fixture;
    bool ok = false;
    fixture.db().ExecSql(QStringLiteral("Delete From tbFold"), ok);
    QVERIFY(ok);
    QVERIFY(fixture.db().lastError().isEmpty());
}

void tst_Database::execSqlLeavesOkAlone()
{
    DbFixture fixture;
    for (const bool before : {false, true}) {
        for (const char *sql : {"Delete From nowhere", "Select sPh From tbFold", ""}) {
            bool ok = before;
            fixture.db().ExecSql(QLatin1String(sql), ok);
            QCOMPARE(ok, before);
            QVERIFY(!fixture.db().lastError().isEmpty());
        }
    }
    QVERIFY(fixture.person().messages().isEmpty());
}

void tst_Database::selectRowsCounts()
{
    DbFixture fixture;
    Rows rows;
    int count = 7;
    fixture.db().SelectRows(QStringLiteral("Select sPh From tbFold"), rows, count);
    QCOMPARE(count, 0);
    for (const char *name : {"b", "a"})
        fixture.db().run(QStringLiteral("Insert Into tbFold (sPh, sEd) Values ('?', '1')"),
                         {QLatin1String(name)});
    fixture.db().SelectRows(QStringLiteral("Select sPh, sUL, sEd From tbFold Order By sPh"), rows,
                            count);
    QCOMPARE(count, 2);
    QCOMPARE(rows.at(0, 0), QVariant(QStringLiteral("a")));
    QCOMPARE(rows.at(0, 1), QVariant(QStringLiteral("b")));
    QVERIFY(rows.at(1, 0).isNull());
    QCOMPARE(rows.at(2, 1), QVariant(QStringLiteral("1")));
}

void tst_Database::selectRowsThrows()
{
    DbFixture fixture;
    Rows rows;
    int count = 7;
    for (const char *sql : {"Select sX From tbFold", "Delete From tbFold"}) {
        const QString words =
            failure([&] { fixture.db().SelectRows(QLatin1String(sql), rows, count); });
        QVERIFY(words != none);
        QCOMPARE(count, 0);
        count = 7;
    }
}

void tst_Database::selectValuesFillsWhatIsThere()
{
    DbFixture fixture;
    fixture.db().run(QStringLiteral("Insert Into tbFold (sPh, sUL) Values ('a', 'x')"));
    QVariant first;
    QVariant second = 5;
    QVariant third = 6;
    const QString sql = QStringLiteral("Select sPh, sUF From tbFold");
    fixture.db().SelectValues(sql, {&first});
    QCOMPARE(first, QVariant(QStringLiteral("a")));
    fixture.db().SelectValues(sql, {&first, &second, &third});
    QVERIFY(second.isNull());
    QCOMPARE(third, QVariant(6));
}

void tst_Database::selectValuesWritesNothingWithoutRow()
{
    DbFixture fixture;
    for (const char *sql : {"Select sPh From tbFold", "Select sX From tbFold",
                            "Select sSvr, sUsr, sPwd, sPx, bPsv, From msSite Where sName='x'"}) {
        QVariant value = 5;
        fixture.db().SelectValues(QLatin1String(sql), {&value});
        QCOMPARE(value, QVariant(5));
    }
    QVERIFY(!fixture.db().lastError().isEmpty());
    QVERIFY(fixture.person().messages().isEmpty());
}

void tst_Database::brokenValues_data()
{
    QTest::addColumn<QString>("sql");
    QTest::addColumn<QString>("value");
    const QString where = QStringLiteral("Delete From tbFold Where sPh='?'");
    const QString table = QStringLiteral("Delete From ?");
    const auto row = [](const char *name, const QString &sql, const char *value) {
        QTest::newRow(name) << sql << QString::fromUtf8(value);
    };
    row("a quote", where, "it's");
    row("two statements", where, "'; Drop Table msSite");
    row("two texts joined", where, "a' + 'b");
    row("another condition", where, "x' Or 'a'='a");
    row("a doubled quote", where, "it''s");
    row("a quote alone", where, "'");
    row("a quote in a table name", table, "o'brien");
    row("a condition in a table name", table, "tbFold Where");
    row("a blank behind a table name", table, "msSite ");
    row("a parenthesis in a table name", table, "tbFold(");
    row("a line end in a table name", table, "tbFold\n");
}

void tst_Database::brokenValues()
{
    QFETCH(QString, sql);
    QFETCH(QString, value);
    DbFixture fixture;
    fixture.db().run(QStringLiteral("Insert Into tbFold (sPh) Values ('a')"));
    const qint64 before = fixture.db().store().preparedCount();
    QCOMPARE(brokenBy(fixture.db(), sql, {value}), value);
    QVERIFY(failure([&] { (void)fixture.db().query(sql, {value}); }).contains(value));
    QCOMPARE(fixture.db().store().preparedCount(), before);
    QCOMPARE(fixture.rows(QStringLiteral("Select Count(*) From tbFold")), QStringLiteral("1"));
    QCOMPARE(fixture.db().tableNames().size(), 4);
}

void tst_Database::soundValues()
{
    DbFixture fixture;
    for (const char *name :
         {"a (1)", "a \"b\"", "a;b -- c", "a#b", "100%", "[x]", "`", "Drop Table msSite", "ｶﾅ’"}) {
        const QString text = QString::fromUtf8(name);
        fixture.db().run(QStringLiteral("Insert Into tbFold (sPh, sUL) Values ('?', '#?#')"),
                         {text, text});
        QCOMPARE(fixture.rows(QStringLiteral("Select sUL From tbFold Where sPh='?'"), {text}),
                 QLatin1Char('#') + text + QLatin1Char('#'));
    }
    QCOMPARE(fixture.db().tableNames().size(), 4);
}

void tst_Database::aBreakStaysInItsStatement()
{
    DbFixture fixture;
    for (const char *value : {"'; Drop Table msSite", "'; Drop Table msSite;", "x' -- ",
                              "x'); Delete From msSync; --"}) {
        bool ok = false;
        fixture.db().ExecSql(venlo::filled(QStringLiteral("Delete From msSync Where sSync='?'"),
                                           {QLatin1String(value)}),
                             ok);
        QVERIFY(!ok);
    }
    QCOMPARE(fixture.db().tableNames().size(), 4);
}

QTEST_GUILESS_MAIN(tst_Database)
#include "tst_Database.moc"
