#include <QTest>

#include "shared/NameList.h"

namespace venlo
{

class tst_NameList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void names_data();
    void names();
    void uploadLine_data();
    void uploadLine();
    void uploadLineText();
};

void tst_NameList::names_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("no name") << QString() << QStringList();
    QTest::newRow("one name") << QStringLiteral("a.txt") << QStringList{QStringLiteral("a.txt")};
    QTest::newRow("two names") << QStringLiteral("a\rb")
                               << QStringList{QStringLiteral("a"), QStringLiteral("b")};
    QTest::newRow("blanks belong to names")
        << QStringLiteral(" a \rb c") << QStringList{QStringLiteral(" a "), QStringLiteral("b c")};
    QTest::newRow("a line feed is no separator")
        << QStringLiteral("a\nb") << QStringList{QStringLiteral("a\nb")};
}

void tst_NameList::names()
{
    QFETCH(QString, text);
    QFETCH(QStringList, names);
    QCOMPARE(splitNames(text), names);
    QCOMPARE(joinNames(names), text);
}

void tst_NameList::uploadLine_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("date");
    QTest::addColumn<QString>("size");
    QTest::newRow("all fields") << QStringLiteral("a b.txt\t24/01/02 03:04:05\t1,000B")
                                << QStringLiteral("a b.txt") << QStringLiteral("24/01/02 03:04:05")
                                << QStringLiteral("1,000B");
    QTest::newRow("name only") << QStringLiteral("a") << QStringLiteral("a") << QString()
                               << QString();
    QTest::newRow("empty date") << QStringLiteral("a\t\t1B") << QStringLiteral("a") << QString()
                                << QStringLiteral("1B");
    QTest::newRow("a tab in the name")
        << QStringLiteral("keep.txt\tx\t24/01/02 03:04:05\t1B") << QStringLiteral("keep.txt\tx")
        << QStringLiteral("24/01/02 03:04:05") << QStringLiteral("1B");
    QTest::newRow("nothing") << QString() << QString() << QString() << QString();
}

void tst_NameList::uploadLine()
{
    QFETCH(QString, line);
    const UploadLine parsed = UploadLine::parse(line);
    QTEST(parsed.name, "name");
    QTEST(parsed.dateText, "date");
    QTEST(parsed.sizeText, "size");
}

void tst_NameList::uploadLineText()
{
    const UploadLine line = {QStringLiteral("n"), QStringLiteral("d"), QStringLiteral("s")};
    QCOMPARE(line.text(), QStringLiteral("n\td\ts"));
}

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_NameList)
#include "tst_NameList.moc"
