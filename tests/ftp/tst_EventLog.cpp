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
    void goesOnBehindAnEarlierRun();
    void twoFilesAtMost();
    void privateToTheUser();
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
        f.log.note(line);
    f.log.note(QStringLiteral("last"));
    QVERIFY(QFileInfo(f.log.path()).size() <= EventLog::maxBytes);
    QVERIFY(QFileInfo(f.log.olderPath()).size() <= EventLog::maxBytes);
    QVERIFY(QFileInfo(f.log.olderPath()).size() > EventLog::maxBytes / 2);
    QVERIFY(contentOf(f.log.path()).endsWith("last\n"));
    QCOMPARE(QDir(f.folder.path()).entryList(QDir::Files).size(), 2);
    QVERIFY(contentOf(f.log.olderPath()).startsWith("2026/11/21 "));
}

void tst_EventLog::privateToTheUser()
{
    Fixture f;
    f.log.note(QStringLiteral("x"));
    QVERIFY(!(QFileInfo(f.log.path()).permissions() &
              (QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ReadOther |
               QFileDevice::WriteOther)));
}

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
