#include "db/JetDate.h"

#include "db/DisplayFormat.h"

#include <QTest>

class tst_JetDate : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void reads_data();
    void reads();
    void refuses_data();
    void refuses();
};

void tst_JetDate::reads_data()
{
    QTest::addColumn<QString>("literal");
    QTest::addColumn<QDate>("today");
    QTest::addColumn<QDateTime>("expected");
    const QDate today(2024, 6, 15);
    const auto row = [](const char *name, const char *literal, const QDate &now,
                        const QDateTime &expected) {
        QTest::newRow(name) << QString::fromLatin1(literal) << now << expected;
    };
    const auto utc = [](int year, int month, int day, const QTime &time = QTime(0, 0)) {
        return QDateTime({year, month, day}, time, Qt::UTC);
    };
    row("date and time", "24/05/06 07:08:09", today, utc(2024, 5, 6, {7, 8, 9}));
    row("to the minute", "24/05/06 07:08", today, utc(2024, 5, 6, {7, 8}));
    row("date alone", "24/05/06", today, utc(2024, 5, 6));
    row("single digits", "24/5/6 7:8:9", today, utc(2024, 5, 6, {7, 8, 9}));
    row("blanks around", " 24/05/06 ", today, utc(2024, 5, 6));
    row("near future", "25/01/01", today, utc(2025, 1, 1));
    row("99 in 2024 is 1999", "99/12/31", today, utc(1999, 12, 31));
    row("74/06/14 is 2074, just nearer", "74/06/14", today, utc(2074, 6, 14));
    row("74/06/17 is 1974, just nearer", "74/06/17", today, utc(1974, 6, 17));
    row("01 in 1998 is 2001", "01/02/03", {1998, 1, 1}, utc(2001, 2, 3));
    row("98 in 2101 is 2098", "98/02/03", {2101, 1, 1}, utc(2098, 2, 3));
    row("leap day takes a century that has it", "00/02/29", {2060, 1, 1}, utc(2000, 2, 29));
    row("four digits", "1901/02/03 04:05:06", today, utc(1901, 2, 3, {4, 5, 6}));
    row("four digits far off", "2199/12/31", today, utc(2199, 12, 31));
}

void tst_JetDate::reads()
{
    QFETCH(QString, literal);
    QFETCH(QDate, today);
    const auto days = venlo::dayCountOfLiteral(literal, today);
    QVERIFY(days.has_value());
    QTEST(venlo::fromDayCount(*days), "expected");
}

void tst_JetDate::refuses_data()
{
    QTest::addColumn<QString>("literal");
    for (const char *literal : {"",
                                " ",
                                "24/13/01",
                                "24/02/30",
                                "23/02/29",
                                "24/05",
                                "24/05/06/07",
                                "4/05/06",
                                "124/05/06",
                                "24-05-06",
                                "24/05/06 24:00",
                                "24/05/06 07",
                                "24/05/06 07:60",
                                "24/05/06 07:08:09:10",
                                "24/05/06 -1:00",
                                "+4/05/06",
                                "24/05/006",
                                "x",
                                "07:08",
                                "24/05/06 07:08 x",
                                "99999/01/01",
                                "0000/01/01"})
        QTest::newRow(literal) << QString::fromLatin1(literal);
}

void tst_JetDate::refuses()
{
    QFETCH(QString, literal);
    QVERIFY(!venlo::dayCountOfLiteral(literal, {2024, 6, 15}));
}

QTEST_APPLESS_MAIN(tst_JetDate)
#include "tst_JetDate.moc"
