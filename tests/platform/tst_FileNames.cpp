// Which names a folder of this system can hold.
#include "platform/FileNames.h"

#include <QTest>

using namespace venlo;

class tst_FileNames : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void names_data();
    void names();
};

void tst_FileNames::names_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("usable");
    QTest::newRow("plain") << QStringLiteral("page.html") << true;
    QTest::newRow("begins with a dot") << QStringLiteral(".htaccess") << true;
    QTest::newRow("Japanese") << QStringLiteral("日本語.txt") << true;
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("itself") << QStringLiteral(".") << false;
    QTest::newRow("parent") << QStringLiteral("..") << false;
    QTest::newRow("path") << QStringLiteral("a/b") << false;
    QTest::newRow("NUL") << QStringLiteral("a") + QChar(0) << false;
    QTest::newRow("too long") << QString(256, QLatin1Char('x')) << false;
#ifdef Q_OS_WIN
    QTest::newRow("255 units") << QString(255, QChar(0x3042)) << true;
    QTest::newRow("device") << QStringLiteral("con.txt") << false;
    QTest::newRow("numbered device") << QStringLiteral("LPT1") << false;
    QTest::newRow("trailing dot") << QStringLiteral("a.") << false;
    QTest::newRow("colon") << QStringLiteral("a:b") << false;
#else
    QTest::newRow("255 bytes") << QString(85, QChar(0x3042)) << true;
    QTest::newRow("258 bytes") << QString(86, QChar(0x3042)) << false;
    QTest::newRow("three dots") << QStringLiteral("...") << true;
    QTest::newRow("backslash") << QStringLiteral("a\\b") << true;
#endif
}

void tst_FileNames::names()
{
    QFETCH(QString, name);
    QFETCH(bool, usable);
    QCOMPARE(whyNotAFileName(name).isEmpty(), usable);
}

QTEST_GUILESS_MAIN(tst_FileNames)
#include "tst_FileNames.moc"
