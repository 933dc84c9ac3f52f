#include <QTest>

#include "startup/settings/SettingsValue.h"

namespace venlo
{

class tst_SettingsValue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void text_data();
    void text();
    void boolean_data();
    void boolean();
    void notBoolean_data();
    void notBoolean();
    void date_data();
    void date();
    void notDate_data();
    void notDate();
    void twoDigitYearIsNear();
    void number_data();
    void number();
    void numbersComeBack_data();
    void numbersComeBack();
};

namespace
{
QString latin(const char *text)
{
    return QString::fromLatin1(text);
}
} // namespace

void tst_SettingsValue::text_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("text") << QVariant(QStringLiteral("運用 <&>")) << QStringLiteral("運用 <&>");
    QTest::newRow("true") << QVariant(true) << latin("True");
    QTest::newRow("false") << QVariant(false) << latin("False");
    QTest::newRow("whole number") << QVariant(-1200) << latin("-1200");
    QTest::newRow("large whole number") << QVariant(qint64{9876543210}) << latin("9876543210");
    QTest::newRow("fraction") << QVariant(1234.5) << latin("1234.5");
    QTest::newRow("double without a fraction") << QVariant(600.0) << latin("600");
    QTest::newRow("date and time")
        << QVariant(QDateTime(QDate(2024, 2, 9), QTime(3, 4, 5))) << latin("2024/02/09 03:04:05");
    QTest::newRow("date") << QVariant(QDate(2024, 2, 9)) << latin("2024/02/09 00:00:00");
    QTest::newRow("nothing") << QVariant() << QString();
}

void tst_SettingsValue::text()
{
    QFETCH(QVariant, value);
    QTEST(settingText(value), "text");
}

void tst_SettingsValue::boolean_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("value");
    QTest::newRow("True") << latin("True") << true;
    QTest::newRow("FALSE") << latin("FALSE") << false;
    QTest::newRow("blanks around") << latin(" true ") << true;
    QTest::newRow("-1") << latin("-1") << true;
    QTest::newRow("0") << latin("0") << false;
    QTest::newRow("0.5") << latin("0.5") << true;
    QTest::newRow("00") << latin("00") << false;
}

void tst_SettingsValue::boolean()
{
    QFETCH(QString, text);
    QFETCH(bool, value);
    const auto read = settingBoolean(text);
    QVERIFY(read.has_value());
    QCOMPARE(*read, value);
}

void tst_SettingsValue::notBoolean_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("a word") << latin("yes");
    QTest::newRow("half the word") << latin("Tru");
    QTest::newRow("a number and more") << latin("1 px");
    QTest::newRow("nothing") << QString();
    QTest::newRow("not a number") << latin("nan");
    QTest::newRow("infinite") << latin("inf");
}

void tst_SettingsValue::notBoolean()
{
    QFETCH(QString, text);
    QVERIFY(!settingBoolean(text).has_value());
}

void tst_SettingsValue::date_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QDateTime>("value");
    const QDate day(2024, 2, 9);
    QTest::newRow("as written") << latin("2024/02/09 03:04:05") << QDateTime(day, QTime(3, 4, 5));
    QTest::newRow("date only") << latin("2024/02/09") << QDateTime(day, QTime(0, 0));
    QTest::newRow("one digit") << latin("2024/2/9 3:04:05") << QDateTime(day, QTime(3, 4, 5));
    QTest::newRow("no seconds") << latin("2024/2/9 3:04") << QDateTime(day, QTime(3, 4));
    QTest::newRow("dashes") << latin("2024-02-09T03:04:05") << QDateTime(day, QTime(3, 4, 5));
    QTest::newRow("blanks around") << latin(" 2024/02/09 ") << QDateTime(day, QTime(0, 0));
    QTest::newRow("leap day") << latin("2024/02/29") << QDateTime(QDate(2024, 2, 29), QTime(0, 0));
}

void tst_SettingsValue::date()
{
    QFETCH(QString, text);
    QFETCH(QDateTime, value);
    const auto read = settingDate(text);
    QVERIFY(read.has_value());
    QCOMPARE(*read, value);
}

void tst_SettingsValue::notDate_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("a word") << latin("yesterday");
    QTest::newRow("nothing") << QString();
    QTest::newRow("no such day") << latin("2023/02/29");
    QTest::newRow("no such month") << latin("2024/13/01");
    QTest::newRow("no such hour") << latin("2024/01/01 24:00:00");
    QTest::newRow("no such minute") << latin("2024/01/01 00:60");
    QTest::newRow("mixed separators") << latin("2024/01-01");
    QTest::newRow("more behind it") << latin("2024/01/01 noon");
    QTest::newRow("three-digit year") << latin("024/01/01");
}

void tst_SettingsValue::notDate()
{
    QFETCH(QString, text);
    QVERIFY(!settingDate(text).has_value());
}

void tst_SettingsValue::twoDigitYearIsNear()
{
    const int today = QDate::currentDate().year();
    for (int year = 0; year < 100; ++year) {
        const QString text = latin("%1/01/02").arg(year, 2, 10, QLatin1Char('0'));
        const auto read = settingDate(text);
        QVERIFY2(read.has_value(), qPrintable(text));
        QCOMPARE(read->date().year() % 100, year);
        QVERIFY2(qAbs(read->date().year() - today) <= 50, qPrintable(text));
    }
}

void tst_SettingsValue::number_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("value");
    QTest::newRow("whole") << latin("1200") << 1200.0;
    QTest::newRow("negative") << latin("-7") << -7.0;
    QTest::newRow("fraction") << latin("0.25") << 0.25;
    QTest::newRow("no leading zero") << latin(".5") << 0.5;
    QTest::newRow("exponent") << latin("1e3") << 1000.0;
    QTest::newRow("number before text") << latin("12px") << 12.0;
    QTest::newRow("blanks are skipped") << latin(" 1 2 ") << 12.0;
    QTest::newRow("a comma ends it") << latin("1,234") << 1.0;
    QTest::newRow("text") << latin("wide") << 0.0;
    QTest::newRow("only a sign") << latin("-") << 0.0;
    QTest::newRow("an exponent without digits") << latin("5e") << 5.0;
    QTest::newRow("too large") << latin("1e999") << 0.0;
}

void tst_SettingsValue::number()
{
    QFETCH(QString, text);
    QTEST(settingNumber(text), "value");
}

void tst_SettingsValue::numbersComeBack_data()
{
    QTest::addColumn<double>("value");
    QTest::newRow("tenth") << 0.1;
    QTest::newRow("third") << 1.0 / 3.0;
    QTest::newRow("large") << 1.5e300;
    QTest::newRow("small and negative") << -2.5e-10;
}

void tst_SettingsValue::numbersComeBack()
{
    QFETCH(double, value);
    QVERIFY(settingNumber(settingText(value)) == value);
}

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_SettingsValue)
#include "tst_SettingsValue.moc"
