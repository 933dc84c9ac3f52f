#include "db/FillParams.h"

#include <QTest>

using venlo::filled;
using venlo::FillParams;

class tst_FillParams : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void fills_data();
    void fills();
    void changesTheTextInPlace();
};

void tst_FillParams::fills_data()
{
    QTest::addColumn<QString>("sql");
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *sql, const QVariantList &values,
                        const char *expected) {
        QTest::newRow(name) << QString::fromUtf8(sql) << values << QString::fromUtf8(expected);
    };
    const QVariant null;
    row("values go in in order", "Where a='?' And b=?", {QStringLiteral("x"), 5},
        "Where a='x' And b=5");
    row("a value loses its question marks", "Where a='?' And b='?'",
        {QStringLiteral("w?h?y"), QStringLiteral("?z")}, "Where a='why' And b='z'");
    row("a value of question marks only is nothing", "a='?'", {QStringLiteral("???")}, "a=''");
    row("Null makes its placeholder vanish", "a='?', b='?'", {null, QStringLiteral("x")},
        "a='', b='x'");
    row("a null text is an empty text", "a='?'", {QString()}, "a=''");
    row("a quote goes in as it is", "a='?'", {QStringLiteral("it's")}, "a='it's'");
    row("a table name goes in the same way", "Delete From ? Where sDir Like '?*'",
        {QStringLiteral("本社"), QStringLiteral("/pub")},
        "Delete From 本社 Where sDir Like '/pub*'");
    row("placeholders without a value stay", "a=?, b=?", {1}, "a=1, b=?");
    row("values without a placeholder are left over", "Values ('?')",
        {QStringLiteral("a"), QStringLiteral("b")}, "Values ('a')");
    row("a yes/no value is a number", "a=?, b=?", {true, false}, "a=1, b=0");
    row("a size above 32 bits is written whole", "n=?", {Q_INT64_C(5000000000)}, "n=5000000000");
    row("no values change nothing", "Delete From tbFold", {}, "Delete From tbFold");
    row("an empty statement stays empty", "", {1}, "");
}

void tst_FillParams::fills()
{
    QFETCH(QString, sql);
    QFETCH(QVariantList, values);
    QTEST(filled(sql, values), "expected");
}

void tst_FillParams::changesTheTextInPlace()
{
    QString sql = QStringLiteral("a='?'");
    FillParams(sql, {QStringLiteral("x")});
    QCOMPARE(sql, QStringLiteral("a='x'"));
}

QTEST_APPLESS_MAIN(tst_FillParams)
#include "tst_FillParams.moc"
