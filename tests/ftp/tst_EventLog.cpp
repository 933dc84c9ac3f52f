// The second log: whole lines, bounded size, nothing that could command a terminal.
#include "ftp/ErrorLog.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace venlo;

namespace
{
QDateTime moment()
{
    return {QDate(2026, 11, 21), QTime(5, 10, 9, 7)};
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<none>");
}

struct Fixture {
    QTemporaryDir folder;
    EventLog log{folder.path() + QLatin1Char('/'), &moment};
};
} // namespace

class tst_EventLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void notes_data();
    void notes();
    void eachNoteIsThereAtOnce();
    void linesThatMayWait();
    void waitingLinesGoByThemselves();
    void waitingLinesGoAtTheEnd();
    void manyDoNotWait();
    void stampsGoOn();
    void goesOnBehindAnEarlierRun();
    void twoFilesAtMost();
#ifdef Q_OS_UNIX
    void privateToTheUser();
#endif
    void silentWhenItCannotBeWritten();
    void manyNotesAreCheap();
};

void tst_EventLog::notes_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QByteArray>("written");
    QTest::newRow("plain") << QStringLiteral("> CWD /a") << QByteArray("> CWD /a");
    QTest::newRow("Japanese is UTF-8") << QStringLiteral("日本") << QByteArray("日本");
    QTest::newRow("line ends") << QStringLiteral("a\r\nb") << QByteArray("a\\x0d\\x0ab");
    QTest::newRow("escape sequences") << QStringLiteral("\x1b[2J") << QByteArray("\\x1b[2J");
    QTest::newRow("delete and C1")
        << QString(QChar(0x7f)) + QChar(0x9b) << QByteArray("\\x7f\\x9b");
}

void tst_EventLog::notes()
{
    QFETCH(QString, line);
    QFETCH(QByteArray, written);
    Fixture f;
    f.log.note(line);
    QCOMPARE(contentOf(f.log.path()), "2026/11/21 05:10:09.007 " + written + '\n');
}

void tst_EventLog::eachNoteIsThereAtOnce()
{
    Fixture f;
    for (int i = 1; i <= 3; ++i) {
        f.log.note(QStringLiteral("x"));
        QCOMPARE(contentOf(f.log.path()).count('\n'), i);
    }
}

void tst_EventLog::linesThatMayWait()
{
    Fixture f;
    f.log.noteSoon(QStringLiteral("a"));
    f.log.noteSoon(QStringLiteral("b"));
    QCOMPARE(contentOf(f.log.path()), QByteArray());
    f.log.flush();
    QCOMPARE(contentOf(f.log.path()).count('\n'), 2);
    f.log.noteSoon(QStringLiteral("c"));
    f.log.note(QStringLiteral("d"));
    const QByteArray stamp("2026/11/21 05:10:09.007 ");
    QCOMPARE(contentOf(f.log.path()),
             stamp + "a\n" + stamp + "b\n" + stamp + "c\n" + stamp + "d\n");
    f.log.flush();
    QCOMPARE(contentOf(f.log.path()).count('\n'), 4);
}

void tst_EventLog::waitingLinesGoByThemselves()
{
    Fixture f;
    for (int i = 1; i <= 2; ++i) {
        f.log.noteSoon(QStringLiteral("x"));
        QTRY_COMPARE_WITH_TIMEOUT(contentOf(f.log.path()).count('\n'), i, 2000);
    }
}

void tst_EventLog::waitingLinesGoAtTheEnd()
{
    const QTemporaryDir folder;
    QString path;
    {
        EventLog log(folder.path() + QLatin1Char('/'), &moment);
        path = log.path();
        log.noteSoon(QStringLiteral("last words"));
    }
    QVERIFY(contentOf(path).endsWith(" last words\n"));
}

void tst_EventLog::manyDoNotWait()
{
    Fixture f;
    const QString line(1000, QLatin1Char('x'));
    for (int i = 0; i < 100; ++i)
        f.log.noteSoon(line);
    QVERIFY(contentOf(f.log.path()).count('\n') > 50);
    QVERIFY(contentOf(f.log.path()).endsWith("x\n"));
}

void tst_EventLog::stampsGoOn()
{
    const QTemporaryDir folder;
    QDateTime now = moment();
    EventLog log(folder.path() + QLatin1Char('/'), [&now] { return now; });
    for (const qint64 step :
         {0LL, 1LL, 991LL, 1LL, 86'400'000LL, -1LL, -100'000LL * 86'400'000LL}) {
        now = now.addMSecs(step);
        log.noteSoon(QStringLiteral("x"));
    }
    now = now.toUTC(); // the log shows this machine's time all the same
    log.note(QStringLiteral("x"));
    const QByteArray text = contentOf(log.path());
    QVERIFY2(text.startsWith("2026/11/21 05:10:09.007 x\n2026/11/21 05:10:09.008 x\n"
                             "2026/11/21 05:10:09.999 x\n2026/11/21 05:10:10.000 x\n"
                             "2026/11/22 05:10:10.000 x\n2026/11/22 05:10:09.999 x\n"),
             text.constData());
    const QByteArray past = now.toLocalTime().toString(u"yyyy/MM/dd HH:mm:ss.zzz").toLatin1();
    QVERIFY2(text.endsWith(past + " x\n" + past + " x\n"), text.constData());
}

void tst_EventLog::goesOnBehindAnEarlierRun()
{
    Fixture f;
    f.log.note(QStringLiteral("first"));
    EventLog next(f.folder.path() + QLatin1Char('/'), &moment);
    next.note(QStringLiteral("second"));
    const QByteArray content = contentOf(f.log.path());
    QVERIFY(content.contains("first\n"));
    QVERIFY(content.endsWith("second\n"));
}

void tst_EventLog::twoFilesAtMost()
{
    Fixture f;
    QCOMPARE(f.log.olderPath(), f.folder.path() + QStringLiteral("/FtpEvent.1.Log"));
    const QString line(4000, QLatin1Char('x'));
    const int enoughForThree = static_cast<int>(3 * EventLog::maxBytes / line.size());
    for (int i = 0; i < enoughForThree; ++i)
        i % 3 == 0 ? f.log.note(line) : f.log.noteSoon(line);
    f.log.note(QStringLiteral("last"));
    QVERIFY(QFileInfo(f.log.path()).size() <= EventLog::maxBytes);
    QVERIFY(QFileInfo(f.log.olderPath()).size() <= EventLog::maxBytes);
    QVERIFY(QFileInfo(f.log.olderPath()).size() > EventLog::maxBytes / 2);
    QVERIFY(contentOf(f.log.path()).endsWith("last\n"));
    QCOMPARE(QDir(f.folder.path()).entryList(QDir::Files).size(), 2);
    QVERIFY(contentOf(f.log.olderPath()).startsWith("2026/11/21 "));
}

#ifdef Q_OS_UNIX
void tst_EventLog::privateToTheUser()
{
    Fixture f;
    f.log.note(QStringLiteral("x"));
    QVERIFY(!(QFileInfo(f.log.path()).permissions() &
              (QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ReadOther |
               QFileDevice::WriteOther)));
}
#endif

void tst_EventLog::silentWhenItCannotBeWritten()
{
    Fixture f;
    EventLog nowhere(f.folder.path() + QStringLiteral("/missing/"), &moment);
    nowhere.note(QStringLiteral("x"));
    QVERIFY(!QFile::exists(nowhere.path()));
}

void tst_EventLog::manyNotesAreCheap()
{
    Fixture f;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 10'000; ++i)
        f.log.note(QStringLiteral("> STOR some file name.html"));
    QCOMPARE(contentOf(f.log.path()).count('\n'), 10'000);
    QVERIFY2(timer.elapsed() < 5'000, qPrintable(QString::number(timer.elapsed())));
}

QTEST_GUILESS_MAIN(tst_EventLog)
#include "tst_EventLog.moc"
