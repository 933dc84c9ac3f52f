#include "db/JetTranslator.h"

#include "db/DbError.h"
#include "db/DbFixture.h"

#include <QTest>

using venlo::JetCatalogue;
using venlo::JetColumn;
using venlo::JetStatement;
using venlo::JetTable;
using venlo::JetType;

namespace
{
JetCatalogue catalogue()
{
    const JetTable entries{QStringLiteral("Www"),
                           {JetColumn{QStringLiteral("sDir"), JetType::Text, 255},
                            JetColumn{QStringLiteral("bFd"), JetType::Byte},
                            JetColumn{QStringLiteral("dDate"), JetType::Date},
                            JetColumn{QStringLiteral("raw name"), JetType::Private}}};
    const JetTable sites{QStringLiteral("msSite"),
                         {JetColumn{QStringLiteral("sName"), JetType::Text, 255},
                          JetColumn{QStringLiteral("bPsv"), JetType::YesNo},
                          JetColumn{QStringLiteral("sMemo"), JetType::Memo}}};
    const JetTable japanese{QStringLiteral("本社ＡＢ"),
                            {JetColumn{QStringLiteral("sDir"), JetType::Memo}}};
    const JetTable reserved{QStringLiteral("Where"),
                            {JetColumn{QStringLiteral("sDir"), JetType::Memo}}};
    const JetTable odd{QStringLiteral("2024-a;b,\"c\"#[x]--"),
                       {JetColumn{QStringLiteral("sDir"), JetType::Memo}}};
    const JetTable hidden{QStringLiteral("hidden table"),
                          {JetColumn{QStringLiteral("sDir"), JetType::Memo}}};
    return JetCatalogue({entries, sites, japanese, reserved, odd, hidden});
}

JetStatement translated(const QString &jet)
{
    return venlo::translateJet(jet, catalogue(), QDate(2024, 6, 15));
}
} // namespace

class tst_JetTranslator : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void translates_data();
    void translates();
    void refuses_data();
    void refuses();
    void saysWhere();
    void literalsDoNotChangeTheStatement();
    void longChainsTakeLinearTime();
    void nestingIsBounded();
    void lengthIsBounded();
    void anyTextEndsInAnswerOrError();
};

void tst_JetTranslator::translates_data()
{
    QTest::addColumn<QString>("jet");
    QTest::addColumn<QString>("sql");
    QTest::addColumn<QVariantList>("values");
    const auto row = [](const char *name, const char *jet, const char *sql,
                        const QVariantList &values = {}) {
        QTest::newRow(name) << QString::fromUtf8(jet) << QString::fromUtf8(sql) << values;
    };
    const auto text = [](const char *utf8) { return QVariant(QString::fromUtf8(utf8)); };
    row("select", "Select sDir From Www", "SELECT \"sDir\" FROM \"Www\"");
    row("any case of everything", "sELECT SDIR fROM wWW", "SELECT \"sDir\" FROM \"Www\"");
    row("all columns but the private ones", "Select * From Www",
        "SELECT \"sDir\",\"bFd\",\"dDate\" FROM \"Www\"");
    row("count", "Select Count(*) From Www", "SELECT COUNT(*) FROM \"Www\"");
    row("a text is lifted out", "Select sDir From Www Where sDir='x'",
        "SELECT \"sDir\" FROM \"Www\" WHERE \"sDir\" = ?", {text("x")});
    row("a doubled quote is one", "Delete From Www Where sDir='it''s'",
        "DELETE FROM \"Www\" WHERE \"sDir\" = ?", {text("it's")});
    row("double quotes, comments and question marks are text",
        "Delete From Www Where sDir='\"--/*?;'", "DELETE FROM \"Www\" WHERE \"sDir\" = ?",
        {text("\"--/*?;")});
    row("numbers", "Delete From Www Where bFd=-1 Or bFd=2.5 Or bFd=1E3",
        "DELETE FROM \"Www\" WHERE \"bFd\" = -(?) OR \"bFd\" = ? OR \"bFd\" = ?",
        {Q_INT64_C(1), 2.5, 1000.0});
    row("a date", "Delete From Www Where dDate<#24/05/06 12:00#",
        "DELETE FROM \"Www\" WHERE \"dDate\" < ?", {45418.5});
    row("prefix pattern is a range", "Delete From Www Where sDir like '/pub*'",
        "DELETE FROM \"Www\" WHERE (\"sDir\" >= ? AND \"sDir\" < ? AND venlo_like(\"sDir\", ?))",
        {text("/pub"), text("/puc"), text("/pub*")});
    row("pattern without a beginning", "Delete From Www Where sDir Like '*a'",
        "DELETE FROM \"Www\" WHERE venlo_like(\"sDir\", ?)", {text("*a")});
    row("not like", "Delete From Www Where sDir Not Like '*a'",
        "DELETE FROM \"Www\" WHERE NOT venlo_like(\"sDir\", ?)", {text("*a")});
    row("pattern put together", "Delete From Www Where sDir Like 'a' + '*'",
        "DELETE FROM \"Www\" WHERE venlo_like(\"sDir\", ? || ?)", {text("a"), text("*")});
    row("text is joined", "Update Www Set sDir='/n' + Mid(sDir,5) Where sDir Like '/old*'",
        "UPDATE \"Www\" SET \"sDir\"=? || venlo_mid(\"sDir\", ?) WHERE (\"sDir\" >= ? AND \"sDir\" "
        "< ? AND venlo_like(\"sDir\", ?))",
        {text("/n"), Q_INT64_C(5), text("/old"), text("/ole"), text("/old*")});
    row("mid with a length", "Select Mid(sDir, 2, 3) From Www",
        "SELECT venlo_mid(\"sDir\", ?, ?) FROM \"Www\"", {Q_INT64_C(2), Q_INT64_C(3)});
    row("numbers are added", "Select bFd + 1 - 2 From Www", "SELECT \"bFd\" + ? - ? FROM \"Www\"",
        {Q_INT64_C(1), Q_INT64_C(2)});
    row("two minus signs are no comment", "Select bFd --1 From Www",
        "SELECT \"bFd\" - -(?) FROM \"Www\"", {Q_INT64_C(1)});
    row("yes/no compares by truth", "Select sName From msSite Where bPsv = True",
        "SELECT \"sName\" FROM \"msSite\" WHERE ((\"bPsv\") <> 0) = ((-1) <> 0)");
    row("yes/no as a condition", "Select sName From msSite Where Not bPsv",
        "SELECT \"sName\" FROM \"msSite\" WHERE NOT (\"bPsv\")");
    row("yes/no is set to yes or no", "Update msSite Set bPsv=1",
        "UPDATE \"msSite\" SET \"bPsv\"=venlo_yesno(?)", {Q_INT64_C(1)});
    row("a comparison as a value is -1", "Select bFd=1 From Www",
        "SELECT -(\"bFd\" = ?) FROM \"Www\"", {Q_INT64_C(1)});
    row("and, or, not, parentheses",
        "Delete From Www Where Not (bFd=1 And sDir='a') Or (sDir Is Null)",
        "DELETE FROM \"Www\" WHERE NOT ((\"bFd\" = ? AND \"sDir\" = ?)) OR ((\"sDir\") IS NULL)",
        {Q_INT64_C(1), text("a")});
    row("is not null", "Delete From Www Where sDir Is Not Null",
        "DELETE FROM \"Www\" WHERE (\"sDir\") IS NOT NULL");
    row("texts without a column compare without case", "Delete From Www Where 'a'='A'",
        "DELETE FROM \"Www\" WHERE ? COLLATE venlo = ?", {text("a"), text("A")});
    row("order", "Select sDir From Www Order By sDir, BFD Desc, dDate Asc",
        "SELECT \"sDir\" FROM \"Www\" ORDER BY \"sDir\",\"bFd\" DESC,\"dDate\"");
    row("insert", "Insert Into Www (sDir, bFd) Values ('a', 1)",
        "INSERT INTO \"Www\" (\"sDir\",\"bFd\") VALUES (?,?)", {text("a"), Q_INT64_C(1)});
    row("insert without columns", "Insert Into msSite Values ('a', True, Null)",
        "INSERT INTO \"msSite\" (\"sName\",\"bPsv\",\"sMemo\") VALUES (?,venlo_yesno(-1),NULL)",
        {text("a")});
    row("delete with a star", "Delete * From Www", "DELETE FROM \"Www\"");
    row("Japanese table in another case", "Delete From 本社ａｂ", "DELETE FROM \"本社ＡＢ\"");
    row("a reserved word as table", "Delete From Where Where sDir=''",
        "DELETE FROM \"Where\" WHERE \"sDir\" = ?", {text("")});
    row("a table like nothing else", "Select sDir From 2024-a;b,\"c\"#[x]-- Where sDir=''",
        "SELECT \"sDir\" FROM \"2024-a;b,\"\"c\"\"#[x]--\" WHERE \"sDir\" = ?", {text("")});
    row("blanks around", " \t\r\nDelete  From\tWww \r\n", "DELETE FROM \"Www\"");
    row("one semicolon at the end", "Delete From Www Where bFd=1; ",
        "DELETE FROM \"Www\" WHERE \"bFd\" = ?", {Q_INT64_C(1)});
    row("drop", "Drop Table www", "DROP TABLE \"Www\"");
}

void tst_JetTranslator::translates()
{
    QFETCH(QString, jet);
    QFETCH(QString, sql);
    const JetStatement statement = translated(jet);
    QCOMPARE(statement.sql, QStringList(sql));
    QTEST(statement.values, "values");
}

void tst_JetTranslator::refuses_data()
{
    QTest::addColumn<QString>("jet");
    const auto row = [](const char *name, const char *jet) {
        QTest::newRow(name) << QString::fromUtf8(jet);
    };
    row("nothing", "");
    row("blanks", "  ");
    row("semicolon alone", ";");
    row("unknown verb", "Pragma x");
    row("attach", "Attach 'x' As y");
    row("two statements", "Delete From Www Where bFd=1; Drop Table Www");
    row("two semicolons", "Delete From Www Where bFd=1;;");
    row("semicolon inside", "Delete From Www ; Where bFd=1");
    row("a semicolon right behind a table is part of its name", "Delete From Www;");
    row("comment", "Delete From Www -- x");
    row("block comment", "Delete From Www /* x */");
    row("text behind the end", "Delete From Www Where bFd=1 x");
    row("comma before From", "Select sDir, From Www");
    row("unknown column", "Select sX From Www");
    row("unknown column in Where", "Delete From Www Where sX=1");
    row("unknown column in Order By", "Select sDir From Www Order By sX");
    row("unknown column in Set", "Update Www Set sX=1");
    row("private column", "Select raw name From Www");
    row("private column in brackets", "Select [raw name] From Www");
    row("private column in double quotes", "Select \"raw name\" From Www");
    row("private table", "Select sDir From hidden table");
    row("the store's own table", "Select sDir From sqlite_master");
    row("the store's own table in capitals", "Delete From SQLITE_MASTER");
    row("rowid", "Select rowid From Www");
    row("unknown table", "Select sDir From Nowhere");
    row("no table", "Select sDir From");
    row("no table before a parenthesis", "Insert Into (sDir) Values ('a')");
    row("a table with a quote", "Delete From o'brien");
    row("a placeholder left over", "Delete From Www Where sDir=?");
    row("a placeholder left over as table", "Delete From ?");
    row("two tables", "Select sDir From Www, msSite");
    row("join", "Select sDir From Www Inner Join msSite On a=b");
    row("subquery", "Delete From Www Where sDir=(Select sName From msSite)");
    row("union", "Select sDir From Www Union Select sName From msSite");
    row("distinct", "Select Distinct sDir From Www");
    row("limit", "Select sDir From Www Limit 1");
    row("group", "Select sDir From Www Group By sDir");
    row("alias", "Select sDir As x From Www");
    row("unknown function", "Select load_extension('x') From Www");
    row("count of a column", "Select Count(sDir) From Www");
    row("between", "Delete From Www Where bFd Between 1 And 2");
    row("in", "Delete From Www Where bFd In (1,2)");
    row("the store's own operators", "Delete From Www Where sDir == 'a'");
    row("joining with bars", "Select sDir || 'a' From Www");
    row("collate", "Select sDir From Www Order By sDir Collate Binary");
    row("two comparisons", "Delete From Www Where bFd=1=1");
    row("open text", "Delete From Www Where sDir='a");
    row("a quote in a text", "Delete From Www Where sDir='it's'");
    row("open date", "Delete From Www Where dDate=#24/05/06");
    row("no date", "Delete From Www Where dDate=##");
    row("open parenthesis", "Delete From Www Where (bFd=1");
    row("parenthesis too many", "Delete From Www Where bFd=1)");
    row("number with letters", "Delete From Www Where bFd=1x");
    row("number without exponent", "Delete From Www Where bFd=1E");
    row("hexadecimal number", "Delete From Www Where bFd=0x10");
    row("text against number", "Delete From Www Where bFd='a'");
    row("number against text", "Delete From Www Where sDir=1");
    row("text plus number", "Select sDir + 1 From Www");
    row("text minus text", "Select sDir - sDir From Www");
    row("like of a number", "Delete From Www Where bFd Like '1*'");
    row("text as condition", "Delete From Www Where sDir");
    row("text behind Not", "Delete From Www Where Not sDir");
    row("text behind And", "Delete From Www Where bFd=1 And sDir");
    row("mid of a number", "Select Mid(bFd, 1) From Www");
    row("mid from a text", "Select Mid(sDir, 'a') From Www");
    row("mid without a start", "Select Mid(sDir) From Www");
    row("a date for a text column", "Update Www Set sDir=#24/05/06#");
    row("a text for a yes/no column", "Update msSite Set bPsv='a'");
    row("a text for a date column", "Update Www Set dDate='24/05/06'");
    row("fewer values than columns", "Insert Into Www (sDir, bFd) Values ('a')");
    row("more values than columns", "Insert Into Www (sDir) Values ('a', 1)");
    row("no values", "Insert Into Www (sDir) Values ()");
    row("one column twice", "Insert Into Www (sDir, SDIR) Values ('a', 'b')");
    row("a column as inserted value", "Insert Into Www (sDir) Values (sDir)");
    row("insert from a select", "Insert Into Www (sDir) Select sName From msSite");
    row("a table that is there", "Create Table wWW (a Long)");
    row("a Japanese table that is there in another case", "Create Table 本社ａｂ (a Long)");
    row("a table under the store's own prefix", "Create Table sqlite_x (a Long)");
    row("a table without columns", "Create Table t ()");
    row("unknown type", "Create Table t (a Blob)");
    row("text of no characters", "Create Table t (a Text(0))");
    row("text of 256 characters", "Create Table t (a Text(256))");
    row("text of a fraction", "Create Table t (a Text(1.5))");
    row("one column twice in a table", "Create Table t (a Long, A Long)");
    row("a reserved word as column", "Create Table t (From Long)");
    row("constraint", "Create Table t (a Long Primary Key)");
    row("default", "Create Table t (a Long Default 1)");
    row("table from a select", "Create Table t As Select 1");
    row("index on nothing", "Create Index i On Www()");
    row("index on an unknown column", "Create Index i On Www(x)");
    row("index on an unknown table", "Create Index i On x(sDir)");
    row("index with something else", "Create Index i On Www(sDir) With Cheese");
    row("view", "Create View v As Select sDir From Www");
    row("trigger", "Create Trigger x");
    row("drop of an index", "Drop Index i");
    row("drop of nothing", "Drop Table Nowhere");
    row("alter", "Alter Table Www Add Column x Long");
    row("vacuum", "Vacuum");
    row("a character of no meaning", "Select sDir From Www Where sDir=@a");
}

void tst_JetTranslator::refuses()
{
    QFETCH(QString, jet);
    const QString words = venlo::test::failure([&] { (void)translated(jet); });
    QVERIFY2(words.startsWith(QStringLiteral("SQL文の ")), qPrintable(words));
}

void tst_JetTranslator::saysWhere()
{
    const auto words = [](const char *jet) {
        return venlo::test::failure([&] { (void)translated(QString::fromUtf8(jet)); });
    };
    QCOMPARE(words("Select sX From Www"),
             QStringLiteral("SQL文の 8 文字目: 列 \"sX\" がありません"));
    QCOMPARE(words("Delete From  Nix Where"),
             QStringLiteral("SQL文の 14 文字目: ﾃｰﾌﾞﾙ \"Nix\" がありません"));
    QCOMPARE(words("Delete From Www Where sDir='"),
             QStringLiteral("SQL文の 28 文字目: 文字列が ' で閉じられていません"));
    QCOMPARE(words("Delete From Www Where"),
             QStringLiteral("SQL文の 22 文字目: 文が途中で終わっています"));
    QCOMPARE(words("Delete From Www Having x"),
             QStringLiteral("SQL文の 17 文字目: \"Having\" はここに書けません"));
}

void tst_JetTranslator::literalsDoNotChangeTheStatement()
{
    const QString form =
        QStringLiteral("Insert Into Www (sDir, bFd, dDate) Values ('%1', %2, #%3#)");
    const auto sql = [&form](const char *a, const char *b, const char *c) {
        return translated(form.arg(QLatin1String(a), QLatin1String(b), QLatin1String(c))).sql;
    };
    QCOMPARE(sql("a", "1", "24/05/06"), sql("", "250", "1999/01/01 12:00"));
}

void tst_JetTranslator::longChainsTakeLinearTime()
{
    QString jet = QStringLiteral("Delete From Www Where bFd=1");
    for (int i = 0; i < 40000; ++i)
        jet += QStringLiteral(" Or bFd=1");
    QCOMPARE(translated(jet).values.size(), 40001);
}

void tst_JetTranslator::nestingIsBounded()
{
    const auto nested = [](int depth, const char *open, const char *close) {
        return QStringLiteral("Delete From Www Where ") +
               QString::fromLatin1(open).repeated(depth) + QStringLiteral("bFd=1") +
               QString::fromLatin1(close).repeated(depth);
    };
    QCOMPARE(translated(nested(40, "(", ")")).values.size(), 1);
    for (const char *open : {"(", "Not ", "-", "Mid("}) {
        const QString jet = nested(100000, open, "");
        QVERIFY(venlo::test::failure([&] {
                    (void)translated(jet);
                }).startsWith(QStringLiteral("SQL文の ")));
    }
}

void tst_JetTranslator::lengthIsBounded()
{
    const QString jet = QStringLiteral("Delete From Www Where sDir='%1'");
    QCOMPARE(translated(jet.arg(QString(500000, QLatin1Char('x')))).values.size(), 1);
    const QString long1 = jet.arg(QString(2000000, QLatin1Char('x')));
    QCOMPARE(venlo::test::failure([&] { (void)translated(long1); }),
             QStringLiteral("SQL文の 1048577 文字目: 文が長すぎます"));
}

/// Every beginning of every good statement, and each with one character taken out, either
/// translates or is a DbError.
void tst_JetTranslator::anyTextEndsInAnswerOrError()
{
    const QStringList statements{
        QStringLiteral("Select Count(*) From Www Where sDir='a' And (bFd=-1 Or dDate<#24/05/06#);"),
        QStringLiteral(
            "Update Www Set sDir='/n' + Mid(sDir,5,2), bFd=1E3 Where Not sDir Like '/o?*'"),
        QStringLiteral("Insert Into msSite (sName, bPsv, sMemo) Values ('it''s', True, Null)"),
        QStringLiteral("Create Index PrimaryKey On Www(sDir, bFd) With Primary"),
        QStringLiteral("Create table t (sDir Text(255), bFd Byte, dDate Date, b YesNo)")};
    int answered = 0;
    int refused = 0;
    const auto attempt = [&](const QString &jet) {
        try {
            answered += translated(jet).sql.isEmpty() ? 0 : 1;
        } catch (const venlo::DbError &) {
            ++refused;
        }
    };
    for (const QString &statement : statements) {
        for (qsizetype i = 0; i < statement.size(); ++i) {
            attempt(statement.left(i));
            attempt(QString(statement).remove(i, 1));
        }
    }
    QVERIFY(answered > 20);
    QVERIFY(refused > 300);
}

QTEST_APPLESS_MAIN(tst_JetTranslator)
#include "tst_JetTranslator.moc"
