#include "db/Store.h"

#include "db/DbFixture.h"

#include <QTest>

using venlo::Store;
using venlo::test::DbFixture;
using venlo::test::failure;
using venlo::test::rowsText;

namespace
{
const QString none = QStringLiteral("(none)");
} // namespace

class tst_Store : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void limits_data();
    void limits();
    void limitsHoldForComputedValues();
    void midCountsSixteenBitUnits();
    void midRefusesWhatHasNoMeaning();
    void yesNo_data();
    void yesNo();
    void keyColumnsAreNeverNull();
    void indexNamesArePerTable();
    void prefixUsesTheIndex_data();
    void prefixUsesTheIndex();
    void prefixMatchesExactly();
    void repeatedStatementsArePreparedOnce();
    void keptStatementsAreBounded();
    void privateTablesAndColumns();
    void nativeStatementsTakeBoundValues();
    void onlyOneNativeStatement();
    void todayComesFromOutside();
    void unstorableTexts();
    void tablesOfAnotherProcessAreSeen();
    void aReplacedFileIsOpenedAnew();
    void closedStoreSaysSo();
    void nothingBesideTheFile();
    void groupedChangesShareACommit();
    void anotherChangeEndsTheGroup();
    void aGroupedChangeThatThrows();
    void closingKeepsTheGroup();
    void aLostGroupIsTold();

private:
    Store &store() { return m_fixture->db().store(); }
    QString one(const QString &sql) { return rowsText(store().query(sql)); }
    void addGrouped(const QString &key)
    {
        store().grouped(
            [&] { store().execJet(QStringLiteral("Insert Into t (k) Values ('%1')").arg(key)); });
    }
    /// Keys that another process would see.
    QString seenElsewhere()
    {
        Store other;
        other.open(m_fixture->path());
        return rowsText(
            other.query(QStringLiteral("SELECT coalesce(group_concat(k), '(none)') FROM t")));
    }
    std::unique_ptr<DbFixture> m_fixture;
};

void tst_Store::init()
{
    m_fixture = std::make_unique<DbFixture>();
    store().execJet(QStringLiteral(
        "Create Table t (k Text(255), s Text(3), m Memo, b Byte, n Long, d Date, y YesNo)"));
}

void tst_Store::limits_data()
{
    QTest::addColumn<QString>("column");
    QTest::addColumn<QString>("literal");
    QTest::addColumn<QString>("stored");
    const auto row = [](const char *name, const char *column, const QString &literal,
                        const QString &stored) {
        QTest::newRow(name) << QString::fromLatin1(column) << literal << stored;
    };
    const QString q = QStringLiteral("'");
    const auto utf8 = [](const char *text) { return QString::fromUtf8(text); };
    row("text at its limit", "s", utf8("'abc'"), utf8("abc"));
    row("characters count, not bytes", "s", utf8("'あいう'"), utf8("あいう"));
    row("characters beyond 16 bits are one", "s", utf8("'😀😀😀'"), utf8("😀😀😀"));
    row("text above its limit", "s", utf8("'abcd'"), none);
    row("Japanese text above its limit", "s", utf8("'あいうえ'"), none);
    row("255 characters", "k", q + QString(255, QLatin1Char('x')) + q,
        QString(255, QLatin1Char('x')));
    row("256 characters", "k", q + QString(256, QLatin1Char('x')) + q, none);
    row("memo has no limit", "m", q + QString(70000, QLatin1Char('x')) + q,
        QString(70000, QLatin1Char('x')));
    row("a number is a text for a text column", "s", utf8("12"), utf8("12"));
    row("an empty text is a text", "s", utf8("''"), utf8(""));
    row("Null", "s", utf8("Null"), utf8("Null"));
    row("byte, lowest", "b", utf8("0"), utf8("0"));
    row("byte, highest", "b", utf8("255"), utf8("255"));
    row("byte, above", "b", utf8("256"), none);
    row("byte, below", "b", utf8("-1"), none);
    row("byte, a fraction", "b", utf8("1.5"), none);
    row("long, highest", "n", utf8("2147483647"), utf8("2147483647"));
    row("long, above", "n", utf8("2147483648"), none);
    row("long, lowest", "n", utf8("-2147483648"), utf8("-2147483648"));
    row("long, below", "n", utf8("-2147483649"), none);
    row("long, far above", "n", utf8("99999999999999999999"), none);
    row("long, a text that is a number", "n", utf8("'12'"), utf8("12"));
    row("long, a text that is none", "n", utf8("'twelve'"), none);
    row("date", "d", utf8("#2024/05/06 07:08:09#"), utf8("24/05/06 07:08:09"));
    row("yes", "y", utf8("True"), utf8("-1"));
    row("no", "y", utf8("False"), utf8("0"));
    row("no is the value of Null", "y", utf8("Null"), utf8("0"));
}

void tst_Store::limits()
{
    QFETCH(QString, column);
    QFETCH(QString, literal);
    QFETCH(QString, stored);
    const auto add = [&] {
        store().execJet(QStringLiteral("Insert Into t (") + column + QStringLiteral(") Values (") +
                        literal + QLatin1Char(')'));
    };
    if (stored == none) {
        QVERIFY(failure(add) != none);
        QCOMPARE(one(QStringLiteral("SELECT count(*) FROM t")), QStringLiteral("0"));
        return;
    }
    QCOMPARE(failure(add), none);
    QCOMPARE(
        rowsText(store().queryJet(QStringLiteral("Select ") + column + QStringLiteral(" From t"))),
        stored);
}

void tst_Store::limitsHoldForComputedValues()
{
    store().execJet(QStringLiteral("Insert Into t (s, n) Values ('abc', 2147483647)"));
    const QString words =
        failure([&] { store().execJet(QStringLiteral("Update t Set s='x' + s")); });
    QVERIFY2(words.contains(QStringLiteral("s: 3文字まで")), qPrintable(words));
    QVERIFY(failure([&] { store().execJet(QStringLiteral("Update t Set n=n + 1")); }) != none);
    QCOMPARE(rowsText(store().queryJet(QStringLiteral("Select s, n From t"))),
             QStringLiteral("abc|2147483647"));
}

/// Callers pass the length of a path as Qt measures it.
void tst_Store::midCountsSixteenBitUnits()
{
    const QString old = QStringLiteral("/絵😀");
    m_fixture->db().run(QStringLiteral("Insert Into t (k) Values ('?')"),
                        {QString(old + QStringLiteral("/下"))});
    m_fixture->db().run(QStringLiteral("Update t Set k='?' + Mid(k,?) Where k Like '?*'"),
                        {QStringLiteral("/n"), old.size() + 1, old});
    QCOMPARE(rowsText(store().queryJet(QStringLiteral("Select k From t"))),
             QStringLiteral("/n/下"));
}

void tst_Store::midRefusesWhatHasNoMeaning()
{
    store().execJet(QStringLiteral("Insert Into t (k) Values ('abcdef')"));
    const auto mid = [this](const char *arguments) {
        return rowsText(store().queryJet(QStringLiteral("Select Mid(k, ") +
                                         QString::fromLatin1(arguments) +
                                         QStringLiteral(") From t")));
    };
    QCOMPARE(mid("1"), QStringLiteral("abcdef"));
    QCOMPARE(mid("2, 3"), QStringLiteral("bcd"));
    QCOMPARE(mid("7"), QString());
    QCOMPARE(mid("900000000000"), QString());
    QCOMPARE(mid("5, 900000000000"), QStringLiteral("ef"));
    QCOMPARE(mid("2, 0"), QString());
    for (const char *wrong : {"0", "-1", "1, -1"})
        QVERIFY(failure([&] { (void)mid(wrong); }) != none);
}

void tst_Store::yesNo_data()
{
    QTest::addColumn<QString>("condition");
    QTest::addColumn<int>("count");
    const auto row = [](const char *condition, int count) {
        QTest::newRow(condition) << QString::fromLatin1(condition) << count;
    };
    row("y = True", 2);
    row("y = False", 1);
    row("y <> True", 1);
    row("True = y", 2);
    row("y = 1", 2);
    row("y = -1", 2);
    row("y = 0", 1);
    row("y", 2);
    row("Not y", 1);
    row("y And n=1", 1);
}

void tst_Store::yesNo()
{
    for (const char *values : {"1, 1", "2, -1", "3, 0"})
        store().execJet(QStringLiteral("Insert Into t (n, y) Values (") + QLatin1String(values) +
                        QLatin1Char(')'));
    QFETCH(QString, condition);
    QFETCH(int, count);
    const auto rows = store().queryJet(QStringLiteral("Select y From t Where ") + condition);
    QCOMPARE(rows.count(), count);
    for (int row = 0; row < rows.count(); ++row)
        QCOMPARE(rows.at(0, row).typeId(), int(QMetaType::LongLong));
}

void tst_Store::keyColumnsAreNeverNull()
{
    m_fixture->makeCacheTable(QStringLiteral("www"));
    const auto fails = [this](const char *jet) {
        return failure([&] { store().execJet(QString::fromLatin1(jet)); }) != none;
    };
    store().execJet(QStringLiteral("Insert Into www (sDir, sName) Values ('/', 'a')"));
    QVERIFY(fails("Insert Into www (sDir) Values ('/')"));
    QVERIFY(fails("Insert Into www (sName) Values ('a')"));
    QVERIFY(fails("Update www Set sName=Null"));
    QVERIFY(!fails("Update www Set nSize=Null"));
    store().execJet(QStringLiteral("Insert Into t (k) Values (Null)"));
    QVERIFY(fails("Create Index PrimaryKey On t(k) With Primary"));
    store().execJet(QStringLiteral("Update t Set k='x'"));
    QVERIFY(!fails("Create Index PrimaryKey On t(k) With Primary"));
    QVERIFY(fails("Insert Into t (k) Values (Null)"));
}

void tst_Store::indexNamesArePerTable()
{
    m_fixture->makeCacheTable(QStringLiteral("a"));
    m_fixture->makeCacheTable(QStringLiteral("b"));
    QVERIFY(failure([&] {
                store().execJet(
                    QStringLiteral("Create Index PrimaryKey On b(sDir, sName) With Primary"));
            }) != none);
    store().execJet(QStringLiteral("Drop Table a"));
    m_fixture->makeCacheTable(QStringLiteral("a"));
    store().execJet(QStringLiteral("Insert Into a (sDir, sName) Values ('/', 'x')"));
    QVERIFY(failure([&] {
                store().execJet(QStringLiteral("Insert Into a (sDir, sName) Values ('/', 'X')"));
            }) != none);
    store().execJet(QStringLiteral("Create Unique Index u On a(nSize)"));
    store().execJet(QStringLiteral("Update a Set nSize=1"));
    QVERIFY(failure([&] {
                store().execJet(
                    QStringLiteral("Insert Into a (sDir, sName, nSize) Values ('/', 'y', 1)"));
            }) != none);
}

void tst_Store::prefixUsesTheIndex_data()
{
    QTest::addColumn<QString>("jet");
    QTest::addColumn<QString>("index");
    const auto row = [](const char *name, const char *jet, const char *index) {
        QTest::newRow(name) << QString::fromUtf8(jet) << QString::fromLatin1(index);
    };
    row("files of a subtree",
        "Select sDir, sName, dDate, nSize From www Where bFd = 0 And sDir Like '/pub*' Order By "
        "sDir, sName",
        "www PrimaryKey (sDir>? AND sDir<?)");
    row("folders of a subtree",
        "Select sDir, sName, dDate From www Where bFd = 1 And (sDir Like '/pub*') Order By sDir, "
        "sName",
        "www PrimaryKey (sDir>? AND sDir<?)");
    row("delete of a subtree", "Delete From www Where sDir like '/pub*'",
        "www PrimaryKey (sDir>? AND sDir<?)");
    row("rename of a subtree", "Update www Set sDir='/n' + Mid(sDir,5) Where sDir Like '/pub*'",
        "www PrimaryKey (sDir>? AND sDir<?)");
    row("one directory", "Select sName From www Where sDir='/pub' And bFd=1 Order By sName",
        "www PrimaryKey (sDir=?)");
    row("one entry", "Select Count(*) From www Where sDir='/pub' And sName='a' And bFd=0",
        "www PrimaryKey (sDir=? AND sName=?)");
    row("merge of a file", "Update tbFile Set nSL=1, sUL='t' Where sPh='/a' And sFL='b'",
        "tbFile sPhFL (sPh=? AND sFL=?)");
    row("files of a folder",
        "Select sFL, nSL, sUL, nSF, sUF, sEd  From tbFile Where sPh='/a' Order By sFL",
        "tbFile sPhFL (sPh=?)");
    row("merge of a folder", "Update tbFold Set sUL='t' Where sPh='/a'", "tbFold sPh (sPh=?)");
    row("a site", "Select bSvDb From msSite Where sName='a'", "msSite sName (sName=?)");
    row("a pattern", "Select sLph From msSync Where sSync='a'", "msSync PrimaryKey (sSync=?)");
}

void tst_Store::prefixUsesTheIndex()
{
    m_fixture->makeCacheTable(QStringLiteral("www"));
    QFETCH(QString, jet);
    QFETCH(QString, index);
    const auto translated = store().translate(jet);
    const QString plan = rowsText(store().query(
        QStringLiteral("EXPLAIN QUERY PLAN ") + translated.sql.constFirst(), translated.values));
    QVERIFY2(plan.contains(QStringLiteral("USING INDEX ") + index) ||
                 plan.contains(QStringLiteral("USING COVERING INDEX ") + index),
             qPrintable(plan));
    QVERIFY2(!plan.contains(QStringLiteral("TEMP B-TREE")), qPrintable(plan));
}

void tst_Store::prefixMatchesExactly()
{
    const QStringList names{QStringLiteral("/pub"),    QStringLiteral("/PUBLIC"),
                            QStringLiteral("/pub/ａ"), QStringLiteral("/pu"),
                            QStringLiteral("/puc"),    QStringLiteral("/pub￿"),
                            QStringLiteral("/pub😀"),   QStringLiteral("/ＰＵＢ")};
    for (const QString &name : names)
        m_fixture->db().run(QStringLiteral("Insert Into t (k) Values ('?')"), {name});
    const auto count = [this](const QString &prefix) {
        return m_fixture->rows(QStringLiteral("Select Count(*) From t Where k Like '?*'"),
                               {prefix});
    };
    QCOMPARE(count(QStringLiteral("/Pub")), QStringLiteral("5"));
    QCOMPARE(count(QStringLiteral("/ｐｕｂ")), QStringLiteral("1"));
    QCOMPARE(count(QStringLiteral("/")), QStringLiteral("8"));
    QCOMPARE(count(QString()), QStringLiteral("8"));
    QCOMPARE(count(QStringLiteral("%")), QStringLiteral("0"));
    QCOMPARE(count(QStringLiteral("[/]")), QStringLiteral("0"));
}

void tst_Store::repeatedStatementsArePreparedOnce()
{
    store().begin();
    const auto add = [this](int i) {
        m_fixture->db().run(
            QStringLiteral("Insert Into t (k, n, d) Values ('?', ?, #?#)"),
            {QStringLiteral("k%1").arg(i), i,
             QStringLiteral("24/05/06 07:%1").arg(i % 60, 2, 10, QLatin1Char('0'))});
    };
    add(0);
    const qint64 before = store().preparedCount();
    for (int i = 1; i < 20000; ++i)
        add(i);
    store().commit();
    QVERIFY(store().preparedCount() - before <= 1); // the commit
    QCOMPARE(one(QStringLiteral("SELECT count(*), max(n) FROM t")), QStringLiteral("20000|19999"));
}

void tst_Store::keptStatementsAreBounded()
{
    const auto query = [this](int i) { (void)store().query(QStringLiteral("SELECT %1").arg(i)); };
    query(0);
    for (int i = 1; i <= 200; ++i)
        query(i);
    const qint64 before = store().preparedCount();
    query(200);
    QCOMPARE(store().preparedCount(), before);
    query(0);
    QCOMPARE(store().preparedCount(), before + 1);
}

void tst_Store::privateTablesAndColumns()
{
    m_fixture->makeCacheTable(QStringLiteral("www"));
    store().exec(QStringLiteral("ALTER TABLE \"www\" ADD COLUMN \"raw name\" BLOB"));
    store().exec(QStringLiteral("CREATE TABLE \"incomplete directories\" (dir TEXT)"));
    store().exec(QStringLiteral("INSERT INTO www (sDir, sName, \"raw name\") VALUES (?, ?, ?)"),
                 {QStringLiteral("/"), QStringLiteral("a"), QByteArray("\xFF\0\x01", 3)});
    QCOMPARE(store().query(QStringLiteral("SELECT \"raw name\" FROM www")).at(0, 0),
             QVariant(QByteArray("\xFF\0\x01", 3)));
    QCOMPARE(rowsText(store().queryJet(QStringLiteral("Select * From www"))),
             QStringLiteral("/|Null|a|Null|Null"));
    QVERIFY(!store().tableNames().contains(QStringLiteral("incomplete directories")));
    QVERIFY(store().tableNames().contains(QStringLiteral("www")));
    QVERIFY(store().table(QStringLiteral("Incomplete Directories")) != nullptr);
    store().execJet(QStringLiteral("Update www Set sName='b'"));
    QCOMPARE(one(QStringLiteral("SELECT length(\"raw name\") FROM www")), QStringLiteral("3"));
}

void tst_Store::nativeStatementsTakeBoundValues()
{
    QCOMPARE(
        store().exec(QStringLiteral("INSERT INTO t (k, n, d, y) VALUES (?, ?, ?, ?), (?, 1, 2, 0)"),
                     {QStringLiteral("it's"), 5, QDateTime({2024, 5, 6}, {7, 8, 9}, Qt::UTC), true,
                      QVariant()}),
        2);
    QCOMPARE(one(QStringLiteral("SELECT k, n, d, y FROM t WHERE n=5")),
             QStringLiteral("it's|5|24/05/06 07:08:09|1"));
    QCOMPARE(store().exec(QStringLiteral("UPDATE t SET n=9 WHERE n=77")), 0);
    QVERIFY(failure([&] { store().exec(QStringLiteral("DELETE FROM t WHERE n=?")); }) != none);
    QVERIFY(failure([&] {
                store().exec(QStringLiteral("DELETE FROM t WHERE n=?"), {1, 2});
            }) != none);
    QVERIFY(failure([&] {
                store().exec(QStringLiteral("DELETE FROM t WHERE n=?"),
                             QVariantList(1, QVariant(QStringList(QStringLiteral("x")))));
            }) != none);
    QCOMPARE(one(QStringLiteral("SELECT count(*) FROM t")), QStringLiteral("2"));
}

void tst_Store::onlyOneNativeStatement()
{
    QVERIFY(failure([&] { store().exec(QStringLiteral("DELETE FROM t; DROP TABLE t")); }) != none);
    QVERIFY(failure([&] { store().exec(QString()); }) != none);
    QCOMPARE(failure([&] { store().exec(QStringLiteral("DELETE FROM t; ")); }), none);
}

void tst_Store::todayComesFromOutside()
{
    Store::Options options;
    options.today = [] { return QDate(1990, 1, 1); };
    Store old(options);
    old.open(m_fixture->path());
    old.execJet(QStringLiteral("Insert Into t (d) Values (#60/01/01#)"));
    QCOMPARE(old.query(QStringLiteral("SELECT d FROM t")).at(0, 0).toDouble(), 21916.0);
}

void tst_Store::unstorableTexts()
{
    const auto fails = [this](const QString &text) {
        return failure([&] {
                   m_fixture->db().run(QStringLiteral("Insert Into t (m) Values ('?')"), {text});
               }) != none;
    };
    QVERIFY(fails(QStringLiteral("a") + QChar(QChar::Null) + QStringLiteral("b")));
    QVERIFY(fails(QString(QChar(0xD800))));
    QVERIFY(fails(QString(QChar(0xDC00)) + QLatin1Char('x')));
    QCOMPARE(one(QStringLiteral("SELECT count(*) FROM t")), QStringLiteral("0"));
    QVERIFY(!fails(QStringLiteral("😀")));
}

void tst_Store::tablesOfAnotherProcessAreSeen()
{
    Store other;
    other.open(m_fixture->path());
    other.execJet(QStringLiteral("Create Table late (a Long)"));
    QCOMPARE(m_fixture->rows(QStringLiteral("Select Count(*) From late")), QStringLiteral("0"));
    other.execJet(QStringLiteral("Create Table later (a Long)"));
    QVERIFY(store().tableNames().contains(QStringLiteral("later")));
    other.execJet(QStringLiteral("Drop Table late"));
    QVERIFY(failure([&] { (void)m_fixture->rows(QStringLiteral("Select a From late")); }) != none);
    QVERIFY(!store().tableNames().contains(QStringLiteral("late")));
}

/// Another process compacts the file: what is written here afterwards lands in the new one.
void tst_Store::aReplacedFileIsOpenedAnew()
{
    venlo::test::ScriptedPerson person;
    person.allowMessages();
    venlo::Database other(person, m_fixture->folder());
    bool ok = false;
    other.OpenDb(ok);
    QVERIFY(ok);
    other.CompactDb();
#ifdef Q_OS_WIN // a file that is open there cannot be replaced: nothing is compacted, nothing lost
    QCOMPARE(person.messages().size(), 0);
#else
    QCOMPARE(person.messages().size(), 1);
#endif
    store().execJet(QStringLiteral("Insert Into t (k) Values ('after')"));
    Store fresh;
    fresh.open(m_fixture->path());
    QCOMPARE(rowsText(fresh.queryJet(QStringLiteral("Select k From t"))), QStringLiteral("after"));
}

void tst_Store::closedStoreSaysSo()
{
    store().close();
    QVERIFY(!store().isOpen());
    const QString words = QStringLiteral("ﾃﾞｰﾀﾍﾞｰｽが開かれていません");
    QCOMPARE(failure([&] { store().execJet(QStringLiteral("Delete From t")); }), words);
    QCOMPARE(failure([&] { (void)store().queryJet(QStringLiteral("Select k From t")); }), words);
    QCOMPARE(failure([&] { (void)store().tableNames(); }), words);
    QCOMPARE(failure([&] { (void)store().table(QStringLiteral("t")); }), words);
    QCOMPARE(failure([&] { store().begin(); }), words);
    QCOMPARE(store().preparedCount(), 0);
    store().rollback();
    store().close();
}

void tst_Store::nothingBesideTheFile()
{
    store().execJet(QStringLiteral("Insert Into t (k) Values ('x')"));
    const QStringList alone{QStringLiteral("dbFtp.mdb")};
    QCOMPARE(QDir(m_fixture->folder()).entryList(QDir::Files), alone);
    store().begin();
    store().execJet(QStringLiteral("Insert Into t (k) Values ('y')"));
    store().close();
    QCOMPARE(QDir(m_fixture->folder()).entryList(QDir::Files), alone);
    store().open(m_fixture->path());
    QCOMPARE(one(QStringLiteral("SELECT k FROM t")), QStringLiteral("x"));
}

void tst_Store::groupedChangesShareACommit()
{
    addGrouped(QStringLiteral("a"));
    addGrouped(QStringLiteral("b"));
    QCOMPARE(one(QStringLiteral("SELECT count(*) FROM t")), QStringLiteral("2"));
    QCOMPARE(seenElsewhere(), none);
    QTRY_COMPARE(seenElsewhere(), QStringLiteral("a,b"));
    addGrouped(QStringLiteral("c"));
    store().endGroup();
    QCOMPARE(seenElsewhere(), QStringLiteral("a,b,c"));
}

void tst_Store::anotherChangeEndsTheGroup()
{
    addGrouped(QStringLiteral("a"));
    store().execJet(QStringLiteral("Insert Into t (k) Values ('b')"));
    QCOMPARE(seenElsewhere(), QStringLiteral("a,b"));
    addGrouped(QStringLiteral("c"));
    store().begin();
    QCOMPARE(seenElsewhere(), QStringLiteral("a,b,c"));
    // In a transaction there is nothing to group.
    addGrouped(QStringLiteral("d"));
    QCOMPARE(store().depth(), 1);
    store().rollback();
    QCOMPARE(seenElsewhere(), QStringLiteral("a,b,c"));
}

void tst_Store::aGroupedChangeThatThrows()
{
    addGrouped(QStringLiteral("a"));
    const QString words = failure([&] {
        store().grouped([&] {
            store().execJet(QStringLiteral("Insert Into t (k) Values ('b')"));
            store().execJet(QStringLiteral("Insert Into nowhere (k) Values ('b')"));
        });
    });
    QVERIFY(words != none);
    QCOMPARE(store().depth(), 0);
    addGrouped(QStringLiteral("c"));
    store().endGroup();
    QCOMPARE(seenElsewhere(), QStringLiteral("a,c"));
}

void tst_Store::closingKeepsTheGroup()
{
    addGrouped(QStringLiteral("a"));
    store().close();
    QCOMPARE(seenElsewhere(), QStringLiteral("a"));
}

void tst_Store::aLostGroupIsTold()
{
    QStringList told;
    store().onGroupLost([&](const QString &words) { told.append(words); });
    addGrouped(QStringLiteral("a"));
    // The store undid it, as it does when the disk is full.
    (void)store().query(QStringLiteral("ROLLBACK"));
    store().endGroup();
    QCOMPARE(told.size(), 1);
    QCOMPARE(seenElsewhere(), none);
    addGrouped(QStringLiteral("b"));
    store().endGroup();
    QCOMPARE(seenElsewhere(), QStringLiteral("b"));
    QCOMPARE(told.size(), 1);
}

QTEST_GUILESS_MAIN(tst_Store)
#include "tst_Store.moc"
