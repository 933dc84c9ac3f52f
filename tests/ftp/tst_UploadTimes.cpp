// Uploads onto a file whose row has no seconds: which of the two is newer is asked of the server
// where it can tell.
#include "ftp/OperationsFixture.h"

#include "db/DisplayFormat.h"
#include "shared/NameList.h"

#include <QTest>

using namespace venlo;
using venlo::test::OperationsFixture;

class tst_UploadTimes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theSecondsAreAskedFor_data();
    void theSecondsAreAskedFor();
    void nobodyToAsk();
};

namespace
{
/// The listing shows the file of 16:08:00 (Japanese time).
struct Fixture : OperationsFixture {
    Fixture()
    {
        server.put("/a.txt", "old", QDateTime(QDate(2024, 5, 6), QTime(7, 8), Qt::UTC));
        flags.unattendedTransfer = true;
    }
    void upload(int minute, int second)
    {
        const QString name = QStringLiteral("a.txt");
        const QDateTime time(QDate(2024, 5, 6), QTime(16, minute, second));
        write(name, "new", time);
        const UploadLine line{name, FormatDateText(time), FormatSizeText(3)};
        operations.ftPutFile(QStringLiteral("/"), line.text(), here() + QLatin1Char('/'), ok);
    }
    bool ok = true;
};
} // namespace

void tst_UploadTimes::theSecondsAreAskedFor_data()
{
    QTest::addColumn<int>("minute"); // of the local file
    QTest::addColumn<int>("second");
    QTest::addColumn<QByteArray>("answer"); // to MDTM
    QTest::addColumn<int>("asked");
    QTest::addColumn<bool>("sent");
    const QByteArray late("213 20240506070850"); // 16:08:50
    QTest::newRow("older by seconds") << 8 << 20 << late << 1 << false;
    QTest::newRow("newer by seconds") << 8 << 55 << late << 1 << true;
    QTest::newRow("it is of the full minute")
        << 8 << 20 << QByteArray("213 20240506070800") << 1 << true;
    QTest::newRow("refused: the row counts") << 8 << 20 << QByteArray("501 what") << 1 << true;
    QTest::newRow("gone: the row counts") << 8 << 20 << QByteArray("550 none") << 1 << true;
    QTest::newRow("another minute") << 9 << 20 << late << 0 << true;
    QTest::newRow("the same second") << 8 << 0 << late << 0 << false;
}

void tst_UploadTimes::theSecondsAreAskedFor()
{
    QFETCH(int, minute);
    QFETCH(int, second);
    QFETCH(QByteArray, answer);
    QFETCH(int, asked);
    QFETCH(bool, sent);
    Fixture f;
    f.server.on("MDTM", "a.txt").reply(answer.left(3).toInt(), answer.mid(4));
    QVERIFY(f.start());
    f.upload(minute, second);
    QVERIFY(f.ok);
    QCOMPARE(f.server.file("/a.txt"), sent ? QByteArray("new") : QByteArray("old"));
    QCOMPARE(f.server.count("MDTM"), asked);
    QVERIFY(f.person.verify());
}

/// Such a server's rows end at the minute, and it has nothing better.
void tst_UploadTimes::nobodyToAsk()
{
    Fixture f;
    f.server.options().mlsd = false;
    QVERIFY(f.start());
    f.upload(8, 20);
    QVERIFY(f.ok);
    QCOMPARE(f.server.file("/a.txt"), QByteArray("new"));
    QCOMPARE(f.server.count("MDTM"), 0);
}

QTEST_GUILESS_MAIN(tst_UploadTimes)
#include "tst_UploadTimes.moc"
