// Names of unfinished downloads, and how what a killed program left behind goes.
#include "ftp/DownloadJournal.h"
#include "platform/TemporaryName.h"

#include <QDir>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

using namespace venlo;

namespace
{
const QString leftover = QStringLiteral(".venlo-0123abcd.part");

void make(const QString &path)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("half");
}

QStringList filesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
}

/// What a program that was killed during a download leaves in its user data folder.
void leaveJournal(const QString &folder, const QString &noted)
{
    QFile file(folder + QStringLiteral("/Downloads-0011223344556677.pending"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(noted.toUtf8());
}
} // namespace

class tst_TemporaryName : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void newNames();
    void pattern_data();
    void pattern();
    void sweepTakesOldOnesOnly();
    void sweepLeavesLinkTargets();
    void journalNotesTheFileInProgress();
    void journalSweeps_data();
    void journalSweeps();
    void journalSweepsTheOneBeforeToo();
    void aLiveJournalIsLeftAlone();
    void locksWithoutAJournalGo();
    void aMissingFolderIsKeptForLater();
};

void tst_TemporaryName::newNames()
{
    QSet<QString> names;
    for (int i = 0; i < 1000; ++i) {
        const QString name = newTemporaryName();
        QVERIFY2(isTemporaryName(name), qPrintable(name));
        names.insert(name);
    }
    QVERIFY(names.size() > 990);
}

void tst_TemporaryName::pattern_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("temporary");
    QTest::newRow("the pattern") << leftover << true;
    QTest::newRow("upper case digits") << QStringLiteral(".venlo-0123ABCD.part") << false;
    QTest::newRow("seven digits") << QStringLiteral(".venlo-0123abc.part") << false;
    QTest::newRow("nine digits") << QStringLiteral(".venlo-0123abcde.part") << false;
    QTest::newRow("no digit") << QStringLiteral(".venlo-0123abcg.part") << false;
    QTest::newRow("no dot") << QStringLiteral("venlo-0123abcd.part") << false;
    QTest::newRow("something behind") << QStringLiteral(".venlo-0123abcd.part1") << false;
    QTest::newRow("other ending") << QStringLiteral(".venlo-0123abcd.path") << false;
    QTest::newRow("a path") << QStringLiteral("a/.venlo-0123abcd.part") << false;
    QTest::newRow("empty") << QString() << false;
}

void tst_TemporaryName::pattern()
{
    QFETCH(QString, name);
    QFETCH(bool, temporary);
    QCOMPARE(isTemporaryName(name), temporary);
}

void tst_TemporaryName::sweepTakesOldOnesOnly()
{
    const QTemporaryDir folder;
    make(folder.filePath(leftover));
    make(folder.filePath(QStringLiteral(".venlo-mine.part")));
    make(folder.filePath(QStringLiteral("page.html")));
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("below")));
    make(folder.filePath(QStringLiteral("below/") + leftover));
    const QDateTime now = QDateTime::currentDateTime();
    QCOMPARE(sweepTemporaryNames(folder.path(), now.addSecs(-60)), 0);
    QCOMPARE(sweepTemporaryNames(folder.path(), now.addSecs(60)), 1);
    QCOMPARE(filesIn(folder.path()),
             QStringList({QStringLiteral(".venlo-mine.part"), QStringLiteral("page.html")}));
    QVERIFY(QFile::exists(folder.filePath(QStringLiteral("below/") + leftover)));
}

void tst_TemporaryName::sweepLeavesLinkTargets()
{
    const QTemporaryDir folder;
    make(folder.filePath(QStringLiteral("page.html")));
    QVERIFY(QFile::link(folder.filePath(QStringLiteral("page.html")), folder.filePath(leftover)));
    QCOMPARE(sweepTemporaryNames(folder.path(), QDateTime::currentDateTime().addSecs(60)), 1);
    QCOMPARE(filesIn(folder.path()), QStringList({QStringLiteral("page.html")}));
}

void tst_TemporaryName::journalNotesTheFileInProgress()
{
    const QTemporaryDir user;
    const QString path = QStringLiteral("/somewhere/") + leftover;
    {
        DownloadJournal journal(user.path());
        QCOMPARE(filesIn(user.path()), QStringList());
        journal.begin(path);
        QFile file(QDir(user.path())
                       .filePath(filesIn(user.path())
                                     .filter(QStringLiteral(".pending"))
                                     .value(0)
                                     .section(QStringLiteral(".lock"), 0, 0)));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), path.toUtf8());
        journal.end();
        QCOMPARE(file.size(), 0);
        journal.begin(path);
        QCOMPARE(file.size(), path.toUtf8().size());
    }
    QCOMPARE(filesIn(user.path()), QStringList());
}

void tst_TemporaryName::journalSweeps_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("there");
    QTest::addColumn<bool>("remains");
    QTest::newRow("leftover") << leftover << true << false;
    QTest::newRow("gone already") << leftover << false << false;
    QTest::newRow("no name of ours") << QStringLiteral("page.html") << true << true;
    QTest::newRow("our name in the middle")
        << leftover + QStringLiteral("/page.html") << false << false;
}

void tst_TemporaryName::journalSweeps()
{
    QFETCH(QString, name);
    QFETCH(bool, there);
    QFETCH(bool, remains);
    const QTemporaryDir user;
    const QTemporaryDir folder;
    if (there)
        make(folder.filePath(name));
    leaveJournal(user.path(), folder.filePath(name));
    const DownloadJournal journal(user.path());
    QCOMPARE(QFile::exists(folder.filePath(name)), remains);
    QCOMPARE(filesIn(user.path()), QStringList());
}

void tst_TemporaryName::journalSweepsTheOneBeforeToo()
{
    const QTemporaryDir user;
    const QTemporaryDir folder;
    const QString before = folder.filePath(leftover);
    const QString latest = folder.filePath(QStringLiteral(".venlo-89abcdef.part"));
    make(before);
    make(latest);
    QString noted;
    {
        DownloadJournal journal(user.path());
        journal.begin(before);
        journal.begin(latest);
        noted = DownloadJournal(user.path()).live().join(QChar(u'\0'));
        QCOMPARE(noted, latest + QChar(u'\0') + before);
        journal.forget(latest); // came to nothing; the one before is still on its way
        QCOMPARE(DownloadJournal(user.path()).live(), QStringList(before));
        journal.forget(before);
        QCOMPARE(DownloadJournal(user.path()).live(), QStringList());
    }
    leaveJournal(user.path(), noted);
    const DownloadJournal journal(user.path());
    QCOMPARE(filesIn(folder.path()), QStringList());
    QCOMPARE(filesIn(user.path()), QStringList());
}

void tst_TemporaryName::aLiveJournalIsLeftAlone()
{
    const QTemporaryDir user;
    const QTemporaryDir folder;
    const QString path = folder.filePath(leftover);
    make(path);
    DownloadJournal first(user.path());
    first.begin(path);
    {
        const DownloadJournal second(user.path());
        QVERIFY(QFile::exists(path));
    }
    QCOMPARE(filesIn(user.path()).size(), 2); // the journal and its lock
    const DownloadJournal third(user.path());
    QCOMPARE(third.live(), QStringList(path));
    QCOMPARE(first.live(), QStringList());
    const QDateTime later = QDateTime::currentDateTime().addSecs(60);
    QCOMPARE(sweepTemporaryNames(folder.path(), later, third.live()), 0);
    first.end();
    QCOMPARE(third.live(), QStringList());
    QCOMPARE(sweepTemporaryNames(folder.path(), later, third.live()), 1);
}

void tst_TemporaryName::locksWithoutAJournalGo()
{
    const QTemporaryDir user;
    QFile lock(user.filePath(QStringLiteral("Downloads-0011223344556677.pending.lock")));
    QVERIFY(lock.open(QIODevice::WriteOnly));
    lock.write("999999999\ngone\n"); // no process has that number
    lock.close();
    const DownloadJournal journal(user.path());
    QCOMPARE(filesIn(user.path()), QStringList());
}

void tst_TemporaryName::aMissingFolderIsKeptForLater()
{
    const QTemporaryDir user;
    leaveJournal(user.path(), user.filePath(QStringLiteral("gone/") + leftover));
    {
        const DownloadJournal journal(user.path());
    }
    QCOMPARE(filesIn(user.path()).size(), 1);
    QVERIFY(QDir(user.path()).mkdir(QStringLiteral("gone")));
    make(user.filePath(QStringLiteral("gone/") + leftover));
    {
        const DownloadJournal journal(user.path());
    }
    QCOMPARE(filesIn(user.path()), QStringList());
    QVERIFY(!QFile::exists(user.filePath(QStringLiteral("gone/") + leftover)));
}

QTEST_GUILESS_MAIN(tst_TemporaryName)
#include "tst_TemporaryName.moc"
