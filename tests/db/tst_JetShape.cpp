#include "db/DbFixture.h"
#include "db/FillParams.h"
#include "db/JetShape.h"

#include "db/JetDate.h"
#include "db/Store.h"

#include <QTest>

using venlo::JetShape;
using venlo::JetStatement;
using venlo::test::DbFixture;

/// A statement translated once gives for other values what translating it again would give.
class tst_JetShape : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sameAsTranslating_data();
    void sameAsTranslating();
    void noShape_data();
    void noShape();
    void otherValues_data();
    void otherValues();
    void datesBindByToday();
    void tablesThatChange();

private:
    void makeDatedTable();
    [[nodiscard]] std::optional<JetShape> shapeOf(const QString &sql, const QVariantList &values);

    DbFixture m_fixture;
};

namespace
{
const QString update = QStringLiteral("Update tbFile Set nSL=?, sUL='?' Where sPh='?' And sFL='?'");

QVariant text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}
} // namespace

std::optional<JetShape> tst_JetShape::shapeOf(const QString &sql, const QVariantList &values)
{
    return JetShape::of(sql, values, m_fixture.db().store().translate(venlo::filled(sql, values)));
}

void tst_JetShape::makeDatedTable()
{
    if (!m_fixture.db().tableNames().contains(QStringLiteral("www")))
        m_fixture.makeCacheTable(QStringLiteral("www"));
}

void tst_JetShape::sameAsTranslating_data()
{
    QTest::addColumn<QString>("sql");
    QTest::addColumn<QVariantList>("first");
    QTest::addColumn<QVariantList>("second");
    QTest::newRow("texts and numbers")
        << update << QVariantList{1, text("t"), text("/a"), text("b")}
        << QVariantList{2147483647LL, text(""), text("/深い/所"), text("半角ｶﾅ.txt")};
    QTest::newRow("constants between")
        << QStringLiteral("Insert Into tbFile (sPh, sFL, sUL, nSL, sUF, nSF, sEd)"
                          " Values ('?', '?', '', 0, '?', ?, '') ")
        << QVariantList{text("."), text("a"), text("26/01/01 01:01"), 5}
        << QVariantList{text("/x"), text("0"), text(""), 0};
    QTest::newRow("a value like a constant")
        << QStringLiteral("Update tbFold Set sEd='比較' Where sPh='?' Or sUL='比較'")
        << QVariantList{text("比較")} << QVariantList{text("削除")};
    QTest::newRow("empty at first") << update << QVariantList{0, text(""), text(""), text("")}
                                    << QVariantList{1, text("a"), text("b"), text("c")};
    QTest::newRow("null") << update << QVariantList{0, text("a"), text("b"), text("c")}
                          << QVariantList{1, QVariant(), text("b"), QVariant()};
    QTest::newRow("a dropped placeholder")
        << update << QVariantList{0, text("a?"), text("?"), text("c")}
        << QVariantList{1, text("??"), text("b?b"), text("?c?")};
    QTest::newRow("a query") << QStringLiteral(
                                    "Select sFL, nSL From tbFile Where sPh='?' Order By sFL")
                             << QVariantList{text("/a")} << QVariantList{text("/b # ; --")};
    QTest::newRow("dates") << QStringLiteral("Insert Into www (sDir, bFd, sName, dDate, nSize)"
                                             " Values ('?', ?, '?', #?#, ?)")
                           << QVariantList{text("/a"), 0, text("b"), text("26/11/21 05:10"), 7}
                           << QVariantList{text("/c"), 1, text("d"), text("99/02/28 23:59"), 0};
    QTest::newRow("a sign outside the value")
        << QStringLiteral("Update tbFile Set nSL=-? Where nSF>?") << QVariantList{1, 2}
        << QVariantList{30, 40};
}

void tst_JetShape::sameAsTranslating()
{
    QFETCH(QString, sql);
    QFETCH(QVariantList, first);
    QFETCH(QVariantList, second);
    makeDatedTable();
    const auto shape = shapeOf(sql, first);
    QVERIFY(shape);
    for (const QVariantList &values : {first, second}) {
        const auto bound = shape->bind(values, QDate::currentDate());
        QVERIFY(bound);
        const JetStatement again = m_fixture.db().store().translate(venlo::filled(sql, values));
        QCOMPARE(bound->kind, again.kind);
        QCOMPARE(bound->sql, again.sql);
        QCOMPARE(bound->values, again.values);
    }
}

void tst_JetShape::noShape_data()
{
    QTest::addColumn<QString>("sql");
    QTest::addColumn<QVariantList>("values");
    QTest::newRow("a table name") << QStringLiteral("Delete From ? Where sPh='?'")
                                  << QVariantList{text("tbFold"), text("a")};
    QTest::newRow("a part of a pattern")
        << QStringLiteral("Select sPh From tbFold Where sPh Like '?*'") << QVariantList{text("/a")};
    QTest::newRow("a whole pattern")
        << QStringLiteral("Select sPh From tbFold Where sPh Like '?'") << QVariantList{text("/a*")};
    QTest::newRow("a part of a text")
        << QStringLiteral("Update tbFold Set sUL='a?'") << QVariantList{text("b")};
    QTest::newRow("a part of a text that is empty")
        << QStringLiteral("Update tbFold Set sUL='?a'") << QVariantList{text("")};
    QTest::newRow("a quoted quote")
        << QStringLiteral("Update tbFold Set sUL='?''a'") << QVariantList{text("")};
    QTest::newRow("a part of a number")
        << QStringLiteral("Update tbFile Set nSL=1?") << QVariantList{2};
    QTest::newRow("a column") << QStringLiteral("Update tbFold Set ?='a'")
                              << QVariantList{text("sUL")};
    QTest::newRow("a value too many")
        << QStringLiteral("Update tbFold Set sUL='?'") << QVariantList{text("a"), text("b")};
    QTest::newRow("a number in quotes")
        << QStringLiteral("Update tbFold Set sUL='?'") << QVariantList{5};
    QTest::newRow("a negative number")
        << QStringLiteral("Update tbFile Set nSL=?") << QVariantList{-5};
    QTest::newRow("a date of its own")
        << QStringLiteral("Select dDate From www Where dDate<#24/05/06# And sDir='?'")
        << QVariantList{text("a")};
    QTest::newRow("a date of its own behind another")
        << QStringLiteral("Select dDate From www Where dDate<#?# And dDate>#24/05/06#")
        << QVariantList{text("24/05/06")};
    QTest::newRow("a part of a date")
        << QStringLiteral("Select dDate From www Where dDate<#24/05/?#") << QVariantList{6};
    QTest::newRow("a schema") << QStringLiteral("Create Table ? (a Long)")
                              << QVariantList{text("fresh")};
}

void tst_JetShape::noShape()
{
    QFETCH(QString, sql);
    QFETCH(QVariantList, values);
    makeDatedTable();
    QVERIFY(!shapeOf(sql, values));
}

void tst_JetShape::otherValues_data()
{
    QTest::addColumn<QVariantList>("values");
    QTest::newRow("too few") << QVariantList{1, text("a"), text("b")};
    QTest::newRow("a quote") << QVariantList{1, text("a"), text("it's"), text("c")};
    QTest::newRow("a text for a number")
        << QVariantList{text("1"), text("a"), text("b"), text("c")};
    QTest::newRow("a number for a text") << QVariantList{1, text("a"), 2, text("c")};
    QTest::newRow("a negative number") << QVariantList{-1, text("a"), text("b"), text("c")};
    QTest::newRow("nothing for a number")
        << QVariantList{QVariant(), text("a"), text("b"), text("c")};
    QTest::newRow("a real number") << QVariantList{1.5, text("a"), text("b"), text("c")};
    QTest::newRow("yes") << QVariantList{true, text("a"), text("b"), text("c")};
    QTest::newRow("a very long text")
        << QVariantList{1, QString(5000, QLatin1Char('x')), text("b"), text("c")};
}

/// They go the long way, which knows what to do with them.
void tst_JetShape::otherValues()
{
    QFETCH(QVariantList, values);
    const auto shape = shapeOf(update, {0, text("a"), text("b"), text("c")});
    QVERIFY(shape);
    QVERIFY(!shape->bind(values, QDate::currentDate()));
}

/// A year of two digits lies in the century that is nearest when the statement runs.
void tst_JetShape::datesBindByToday()
{
    makeDatedTable();
    const auto shape =
        shapeOf(QStringLiteral("Select sName From www Where dDate<#?#"), {text("24/05/06")});
    QVERIFY(shape);
    const auto dayOf = [&](const char *date, int thisYear) {
        const auto bound = shape->bind({text(date)}, QDate(thisYear, 1, 1));
        return bound ? bound->values.constFirst().toDouble() : -1;
    };
    QCOMPARE(dayOf("24/05/06", 2026), *venlo::dayCountOfLiteral(QLatin1String("2024/05/06"), {}));
    QCOMPARE(dayOf("24/05/06", 2126), *venlo::dayCountOfLiteral(QLatin1String("2124/05/06"), {}));
    QCOMPARE(dayOf("24/13/06", 2026), -1.0);
    QCOMPARE(dayOf("24/05/06#", 2026), -1.0);
    QCOMPARE(dayOf("", 2026), -1.0);
}

void tst_JetShape::tablesThatChange()
{
    venlo::Database &db = m_fixture.db();
    db.run(QStringLiteral("Create Table changing (a Text(10), b Long)"));
    const QString insert = QStringLiteral("Insert Into changing Values ('?', ?)");
    db.run(insert, {text("x"), 1});
    db.run(QStringLiteral("Drop Table changing"));
    db.run(QStringLiteral("Create Table changing (b Text(10), c Long, a Long)"));
    QVERIFY(!venlo::test::failure([&] { db.run(insert, {text("x"), 1}); }).isEmpty());
    db.run(QStringLiteral("Insert Into changing (b, a) Values ('?', ?)"), {text("x"), 1});
    QCOMPARE(m_fixture.rows(QStringLiteral("Select b, a From changing")), QStringLiteral("x|1"));
}

QTEST_GUILESS_MAIN(tst_JetShape)
#include "tst_JetShape.moc"
