#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "startup/LaunchRecord.h"

namespace venlo
{

class tst_LaunchRecord : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wholeRecord();
    void shortFile_data();
    void shortFile();
    void usable_data();
    void usable();
    void longestTexts();
    void unreadable();
    void everyLength();
};

namespace
{
QByteArray numbers()
{
    // Left -2, Top 3, Width 800, Height 600.
    return QByteArray::fromHex("FEFFFFFF"
                               "03000000"
                               "20030000"
                               "58020000");
}

QByteArray whole()
{
    return numbers() + QByteArray::fromHex("0700") + "C:\\" + QByteArray::fromHex("895E9770") +
           QByteArray::fromHex("0400") + "/a/b";
}
} // namespace

void tst_LaunchRecord::wholeRecord()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("UT_ACT.pdat"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(whole() + "more than a record");
    file.close();
    const LaunchRecord record = LaunchRecord::read(path);
    QCOMPARE(record.left, -2);
    QCOMPARE(record.top, 3);
    QCOMPARE(record.width, 800);
    QCOMPARE(record.height, 600);
    QCOMPARE(record.root, QStringLiteral("C:\\運用"));
    QCOMPARE(record.actPh, QStringLiteral("/a/b"));
    QVERIFY(record.usable());
}

void tst_LaunchRecord::shortFile_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("left");
    QTest::addColumn<int>("height");
    QTest::addColumn<QString>("root");
    QTest::newRow("empty") << 0 << 0 << 0 << QString();
    QTest::newRow("half a number") << 2 << 0 << 0 << QString();
    QTest::newRow("one number") << 4 << -2 << 0 << QString();
    QTest::newRow("half the height") << 14 << -2 << 0 << QString();
    QTest::newRow("all numbers") << 16 << -2 << 600 << QString();
    QTest::newRow("half a length") << 17 << -2 << 600 << QString();
    QTest::newRow("half the root") << 21 << -2 << 600 << QString();
    QTest::newRow("the root, no second text") << 25 << -2 << 600 << QStringLiteral("C:\\運用");
    QTest::newRow("half the second text") << 29 << -2 << 600 << QStringLiteral("C:\\運用");
}

void tst_LaunchRecord::shortFile()
{
    QFETCH(int, length);
    const LaunchRecord record = LaunchRecord::parse(whole().left(length));
    QTEST(static_cast<int>(record.left), "left");
    QTEST(static_cast<int>(record.height), "height");
    QTEST(record.root, "root");
    QCOMPARE(record.actPh, QString());
}

void tst_LaunchRecord::usable_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<bool>("usable");
    QTest::newRow("both given") << 1 << 1 << true;
    QTest::newRow("no width") << 0 << 600 << false;
    QTest::newRow("no height") << 800 << 0 << false;
    QTest::newRow("negative width") << -1 << 600 << false;
    QTest::newRow("negative height") << 800 << -600 << false;
}

void tst_LaunchRecord::usable()
{
    QFETCH(int, width);
    QFETCH(int, height);
    LaunchRecord record;
    record.width = width;
    record.height = height;
    QTEST(record.usable(), "usable");
}

void tst_LaunchRecord::longestTexts()
{
    const QByteArray text(65535, 'x');
    const QByteArray length = QByteArray::fromHex("FFFF");
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("UT_ACT.pdat")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(numbers() + length + text + length + text);
    file.close();
    const LaunchRecord record = LaunchRecord::read(file.fileName());
    QCOMPARE(record.root.size(), 65535);
    QCOMPARE(record.actPh.size(), 65535);
}

void tst_LaunchRecord::unreadable()
{
    const QTemporaryDir folder;
    const QString missing = folder.filePath(QStringLiteral("UT_ACT.pdat"));
    QVERIFY(!LaunchRecord::read(missing).usable());
    QVERIFY(!QFile::exists(missing));
    QVERIFY(!LaunchRecord::read(folder.path()).usable());
}

void tst_LaunchRecord::everyLength()
{
    for (int length = 0; length < whole().size(); ++length) {
        const LaunchRecord record = LaunchRecord::parse(whole().left(length));
        QCOMPARE(record.actPh, QString());
    }
}

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_LaunchRecord)
#include "tst_LaunchRecord.moc"
