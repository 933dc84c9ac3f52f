// The error log, byte for byte.
#include "ftp/ErrorLog.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace venlo;

namespace
{
/// 21 November 2026, 05:10:09.
QDateTime noon()
{
    return {QDate(2026, 11, 21), QTime(5, 10, 9)};
}

/// What a log that had to be created begins with: UTF-16 with its byte order mark.
QByteArray createdStamp()
{
    QByteArray bytes("\xff\xfe", 2);
    for (const char c : QByteArray("2026/11/21 05:10:09\r\n")) {
        bytes.append(c);
        bytes.append('\0');
    }
    return bytes;
}

struct Fixture {
    QTemporaryDir folder;
    ErrorLog log{folder.path() + QLatin1Char('/'), &noon};

    [[nodiscard]] QByteArray content() const
    {
        QFile file(log.path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<none>");
    }
    void put(const QByteArray &bytes) const
    {
        QFile file(log.path());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
};
} // namespace

class tst_ErrorLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void path();
    void createdInUtf16();
    void restartEmptiesInSystemText();
    void linesAfterCreationAreSystemText();
    void lines_data();
    void lines();
    void nothingWithoutALog();
#ifdef Q_OS_UNIX
    void privateToTheUser();
#endif
    void silentWhenItCannotBeWritten();
};

void tst_ErrorLog::path()
{
    const Fixture f;
    QCOMPARE(f.log.path(), f.folder.path() + QStringLiteral("/FtpErr.Log"));
}

void tst_ErrorLog::createdInUtf16()
{
    Fixture f;
    f.log.StartErrorLog();
    QCOMPARE(f.content(), createdStamp());
}

void tst_ErrorLog::restartEmptiesInSystemText()
{
    Fixture f;
    f.put("20/11 23:59 : FtpGetFile Err:/a > b DownLoad\r\n");
    f.log.StartErrorLog();
    QCOMPARE(f.content(), QByteArray("2026/11/21 05:10:09\r\n"));
}

void tst_ErrorLog::linesAfterCreationAreSystemText()
{
    Fixture f;
    f.log.StartErrorLog();
    f.log.LogError(QStringLiteral("sySync Err"));
    f.log.LogError(QStringLiteral("FtpPutFile Err:ﾃｽﾄ Upload"));
    QCOMPARE(f.content(), createdStamp() + "21/11 05:10 : sySync Err\r\n" +
                              "21/11 05:10 : FtpPutFile Err:\xc3\xbd\xc4 Upload\r\n");
}

void tst_ErrorLog::lines_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QString() << QByteArray("21/11 05:10 : \r\n");
    QTest::newRow("kanji") << QStringLiteral("表") << QByteArray("21/11 05:10 : \x95\x5c\r\n");
    QTest::newRow("not in CP932") << QStringLiteral("é")
                                  << QByteArray("21/11 05:10 : &#x00E9;\r\n");
    QTest::newRow("line ends cannot make a second line")
        << QStringLiteral("a\r\n21/11 05:10 : b\x7f")
        << QByteArray("21/11 05:10 : a  21/11 05:10 : b \r\n");
}

void tst_ErrorLog::lines()
{
    QFETCH(QString, message);
    QFETCH(QByteArray, bytes);
    Fixture f;
    f.put({});
    f.log.LogError(message);
    QCOMPARE(f.content(), bytes);
}

void tst_ErrorLog::nothingWithoutALog()
{
    Fixture f;
    f.log.LogError(QStringLiteral("InternetOpen"));
    QVERIFY(!QFile::exists(f.log.path()));
}

#ifdef Q_OS_UNIX
void tst_ErrorLog::privateToTheUser()
{
    constexpr auto mine = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadUser |
                          QFileDevice::WriteUser;
    Fixture f;
    f.log.StartErrorLog();
    QCOMPARE(QFileInfo(f.log.path()).permissions(), QFileDevice::Permissions(mine));
    QVERIFY(QFile::setPermissions(f.log.path(), mine | QFileDevice::ReadOther));
    f.log.StartErrorLog();
    QCOMPARE(QFileInfo(f.log.path()).permissions(), QFileDevice::Permissions(mine));
}
#endif

void tst_ErrorLog::silentWhenItCannotBeWritten()
{
    Fixture f;
    ErrorLog nowhere(f.folder.path() + QStringLiteral("/missing/"), &noon);
    nowhere.StartErrorLog();
    nowhere.LogError(QStringLiteral("InternetOpen"));
    QVERIFY(!QFile::exists(nowhere.path()));
}

QTEST_GUILESS_MAIN(tst_ErrorLog)
#include "tst_ErrorLog.moc"
