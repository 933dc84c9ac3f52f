#include "db/DisplayFormat.h"

#include <QTest>

#include <limits>

class tst_DisplayFormat : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void size_data();
    void size();
    void date_data();
    void date();
    void minuteIsCutNotRounded();
    void dayCount_data();
    void dayCount();
    void dayCountTakesTheWallClock();
    void everySecondOfADaySurvives();
    void noDateForNonsense();
};

void tst_DisplayFormat::size_data()
{
    QTest::addColumn<qint64>("size");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, qint64 size, const char *expected) {
        QTest::newRow(name) << size << QString::fromLatin1(expected);
    };
    row("an empty file is a bare B", 0, "B");
    row("1", 1, "1B");
    row("999", 999, "999B");
    row("1000 is still bytes", 1000, "1,000B");
    row("1001 is kilobytes", 1001, "1KB");
    row("1499 rounds down", 1499, "1KB");
    row("1500 rounds to even, up", 1500, "2KB");
    row("2500 rounds to even, down", 2500, "2KB");
    row("2501 rounds up", 2501, "3KB");
    row("3500 rounds to even, up", 3500, "4KB");
    row("999,500 rounds to even, up", 999500, "1,000KB");
    row("1,499,999", 1499999, "1,500KB");
    row("1,234,567,890", 1234567890, "1,234,568KB");
    row("largest 32-bit size", std::numeric_limits<qint32>::max(), "2,147,484KB");
    row("a size above 32 bits", Q_INT64_C(5000000000), "5,000,000KB");
    row("a negative size stays bytes", -1, "-1B");
    row("a negative size has separators", -1234567, "-1,234,567B");
    row("three negative digits have none", -999, "-999B");
    row("smallest 32-bit size", std::numeric_limits<qint32>::min(), "-2,147,483,648B");
    row("smallest 64-bit size", std::numeric_limits<qint64>::min(), "-9,223,372,036,854,775,808B");
}

void tst_DisplayFormat::size()
{
    QFETCH(qint64, size);
    QTEST(venlo::FormatSizeText(size), "expected");
}

void tst_DisplayFormat::date_data()
{
    QTest::addColumn<QDateTime>("time");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QDateTime &time, const char *expected) {
        QTest::newRow(name) << time << QString::fromLatin1(expected);
    };
    row("two digits each", QDateTime({2003, 4, 5}, {6, 7, 8}, Qt::UTC), "03/04/05 06:07:08");
    row("midnight", QDateTime({2024, 12, 31}, {0, 0, 0}, Qt::UTC), "24/12/31 00:00:00");
    row("24 hours", QDateTime({1999, 1, 1}, {23, 59, 59, 999}, Qt::UTC), "99/01/01 23:59:59");
    row("local time shows as it is", QDateTime({2024, 7, 1}, {13, 0}, Qt::LocalTime),
        "24/07/01 13:00:00");
    row("an invalid time is an empty text", QDateTime(), "");
}

void tst_DisplayFormat::date()
{
    QFETCH(QDateTime, time);
    QTEST(venlo::FormatDateText(time), "expected");
    QCOMPARE(venlo::FormatMinuteText(time), venlo::FormatDateText(time).left(14));
}

void tst_DisplayFormat::minuteIsCutNotRounded()
{
    QCOMPARE(venlo::FormatMinuteText(QDateTime({2024, 5, 6}, {7, 8, 59}, Qt::UTC)),
             QStringLiteral("24/05/06 07:08"));
}

void tst_DisplayFormat::dayCount_data()
{
    QTest::addColumn<QDateTime>("time");
    QTest::addColumn<double>("days");
    QTest::newRow("day zero") << QDateTime({1899, 12, 30}, {0, 0}, Qt::UTC) << 0.0;
    QTest::newRow("noon of day one") << QDateTime({1899, 12, 31}, {12, 0}, Qt::UTC) << 1.5;
    QTest::newRow("1601, where file times begin")
        << QDateTime({1601, 1, 1}, {0, 0}, Qt::UTC) << -109205.0;
    QTest::newRow("1970") << QDateTime({1970, 1, 1}, {6, 0}, Qt::UTC) << 25569.25;
    QTest::newRow("2024") << QDateTime({2024, 2, 29}, {18, 0}, Qt::UTC) << 45351.75;
}

void tst_DisplayFormat::dayCount()
{
    QFETCH(QDateTime, time);
    QFETCH(double, days);
    QCOMPARE(venlo::toDayCount(time), days);
    QCOMPARE(venlo::fromDayCount(days), time);
    QCOMPARE(venlo::fromDayCount(days).timeSpec(), Qt::UTC);
}

void tst_DisplayFormat::dayCountTakesTheWallClock()
{
    QCOMPARE(venlo::toDayCount(QDateTime({1970, 1, 1}, {6, 0}, Qt::LocalTime)), 25569.25);
}

void tst_DisplayFormat::everySecondOfADaySurvives()
{
    const QDateTime day({2024, 5, 6}, {0, 0}, Qt::UTC);
    for (int second = 0; second < 86400; second += 7) {
        const QDateTime time = day.addSecs(second);
        QCOMPARE(venlo::fromDayCount(venlo::toDayCount(time)), time);
    }
}

void tst_DisplayFormat::noDateForNonsense()
{
    QVERIFY(!venlo::fromDayCount(std::numeric_limits<double>::quiet_NaN()).isValid());
    QVERIFY(!venlo::fromDayCount(std::numeric_limits<double>::infinity()).isValid());
    QVERIFY(!venlo::fromDayCount(1e300).isValid());
}

QTEST_APPLESS_MAIN(tst_DisplayFormat)
#include "tst_DisplayFormat.moc"
