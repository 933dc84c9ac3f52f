// Uploads on a scripted server: what is sent, what is asked, what is left out and what is logged.
#include "ftp/OperationsFixture.h"

#include "db/DisplayFormat.h"
#include "shared/NameList.h"

#include <QtGlobal>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

#include <QTest>

using namespace venlo;
using venlo::test::OperationsFixture;

namespace
{
QDateTime wallClock(int hour, int minute, int second = 0)
{
    return {QDate(2024, 5, 6), QTime(hour, minute, second)};
}

struct Fixture : OperationsFixture {
    bool ok = true;

    void putPath(const QString &name, const QString &dir = QStringLiteral("/"))
    {
        operations.ftPutFile(dir, at(name), here(), ok);
    }
    /// The list form with what the local pane would show of the files.
    void putList(const QStringList &names, const QString &dir = QStringLiteral("/"))
    {
        QStringList lines;
        for (const QString &name : names) {
            const QFileInfo file(at(name));
            lines.append(
                UploadLine{name, FormatDateText(file.lastModified()), FormatSizeText(file.size())}
                    .text());
        }
        operations.ftPutFile(dir, joinNames(lines), here() + QLatin1Char('/'), ok);
    }
    [[nodiscard]] QString row(const QString &dir, const QString &name)
    {
        for (const QString &line : cacheRows(QStringLiteral("web"))) {
            if (line.startsWith(dir + QStringLiteral("|0|") + name + QLatin1Char('|')))
                return line;
        }
        return {};
    }
};
} // namespace

class tst_Uploads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fourCommandsPerFile();
    void threeWithoutSetTime();
    void refusedTimeIsNoFailure();
    void pathForm();
    void pathFormDrops_data();
    void pathFormDrops();
    void pathFormAsksAgain();
    void pathFormCancelled();
    void pathFormRetryOfALocalFailure();
    void pathFormUnattended();
    void listForm();
    void listFormDrops_data();
    void listFormDrops();
    void listFormCreatesTheDirectory();
    void listFormFiveAttempts();
    void unattendedSendsNewerOnly_data();
    void unattendedSendsNewerOnly();
    void confirmation_data();
    void confirmation();
    void standingAnswer_data();
    void standingAnswer();
    void cancelAllLeavesTheRest();
    void unreadableFileGoesPast_data();
    void unreadableFileGoesPast();
    void changedFileGoesAgain();
    void alwaysChangingFileIsGivenUp();
    void recoversAfterALoss();
    void lostForGoodEndsTheOperation();
    void cancelled();
    void doesNothing();
    void emptyAndLargeFiles();
    void folderTree();
    void foldersAreMadeAndEnteredAtOnce();
    void folderLeavesOut();
    void folderThatIsThere();
    void folderThatCannotBeMade();
    void folderThatCannotBeRead();
#ifdef Q_OS_UNIX
    void linkedFoldersAreNotFollowed();
    void folderWithOddEntries();
#endif
    void listFormWithoutAListing();
    void neverListedFolderIsFound();
    void unlistedDirectoryIsCompared_data();
    void unlistedDirectoryIsCompared();
    void unlistedDirectoryWithoutTimes();
    void brokenUploadGoesAgain();
    void refusedUploadIsNoRemnant();
    void oneRowIsNotAWholeDirectory_data();
    void oneRowIsNotAWholeDirectory();
    void rowsAreWrittenWhileTheNextFileIsSent();
    void rowsTellWhatWasSent();
    void outcomesKeepTheirOrder();
#ifdef Q_OS_UNIX
    void namesThatAreOneToTheCache();
#endif
};

void tst_Uploads::rowsAreWrittenWhileTheNextFileIsSent()
{
    Fixture f;
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    const QStringList names{QStringLiteral("a.txt"), QStringLiteral("b.txt"),
                            QStringLiteral("c.txt")};
    for (const QString &name : names)
        f.write(name, "new", wallClock(1, 0));
    f.putList(names);
    QVERIFY(f.ok);
    QByteArray order;
    for (const auto &event : f.person.events()) {
        if (event.what == venlo::test::ScriptedPerson::What::Status)
            order += "begun ";
        else if (event.what == venlo::test::ScriptedPerson::What::Outcome)
            order += "told ";
    }
    QCOMPARE(order, QByteArray("begun begun told begun told told "));
    for (const QString &name : names)
        QVERIFY2(!f.row(QStringLiteral("/"), name).isEmpty(), qPrintable(name));
    QCOMPARE(f.counts(), QStringLiteral("3/0/0"));
}

void tst_Uploads::rowsTellWhatWasSent()
{
    Fixture f;
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    for (const char *name : {"a.txt", "b.txt"})
        f.write(QString::fromLatin1(name), "sent", wallClock(1, 0));
    f.server.on("STOR", "b.txt").once().call([&f] {
        f.write(QStringLiteral("a.txt"), "saved anew", wallClock(2, 0));
    });
    f.putList({QStringLiteral("a.txt"), QStringLiteral("b.txt")});
    QVERIFY(f.ok);
    QCOMPARE(f.row(QStringLiteral("/"), QStringLiteral("a.txt")),
             QStringLiteral("/|0|a.txt|24/05/06 01:00:00|4"));
}

void tst_Uploads::outcomesKeepTheirOrder()
{
    Fixture f;
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    const QStringList names{QStringLiteral("a.txt"), QStringLiteral("b.txt"),
                            QStringLiteral("c.txt"), QStringLiteral("d.ldb")};
    for (const QString &name : names)
        f.write(name, "new", wallClock(1, 0));
    f.server.on("STOR", "a.txt").once().call([&f] {
        QFile::remove(f.at(QStringLiteral("b.txt")));
    });
    f.putList(names);
    QList<Outcome::Kind> told;
    QStringList files;
    for (const Outcome &outcome : f.person.outcomes()) {
        told.append(outcome.kind);
        files.append(QFileInfo(outcome.from).fileName());
    }
    QCOMPARE(files, names);
    QCOMPARE(told, QList<Outcome::Kind>({Outcome::Kind::Uploaded, Outcome::Kind::GivenUp,
                                         Outcome::Kind::Uploaded, Outcome::Kind::Skipped}));
}

#ifdef Q_OS_UNIX
void tst_Uploads::namesThatAreOneToTheCache()
{
    Fixture f;
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.flags.unattendedTransfer = true;
    f.write(QStringLiteral("a.txt"), "newer", wallClock(2, 0));
    f.write(QStringLiteral("A.TXT"), "older", wallClock(1, 0));
    f.putList({QStringLiteral("a.txt"), QStringLiteral("A.TXT")});
    QVERIFY(f.ok);
    QCOMPARE(f.counts(), QStringLiteral("1/0/1"));
    QVERIFY(!f.server.exists("/A.TXT"));
}
#endif

void tst_Uploads::fourCommandsPerFile()
{
    Fixture f;
    QVERIFY(f.start());
    f.write(QStringLiteral("a.txt"), "hello", wallClock(16, 8, 9));
    f.write(QStringLiteral("b.txt"), "bye", wallClock(17, 0));
    f.server.put("/pub/x", "1");
    f.browse(QStringLiteral("/pub"));
    f.putPath(QStringLiteral("a.txt"), QStringLiteral("/pub"));
    f.putPath(QStringLiteral("b.txt"), QStringLiteral("/pub"));
    QVERIFY(f.ok);
    QCOMPARE(f.work(), QList<QByteArray>({"EPSV", "STOR a.txt", "SIZE a.txt",
                                          "MFMT 20240506070809 a.txt", "EPSV", "STOR b.txt",
                                          "SIZE b.txt", "MFMT 20240506080000 b.txt", "EPSV"}));
    QCOMPARE(f.server.tree().modified("/pub/a.txt"),
             QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9), Qt::UTC));
}

void tst_Uploads::threeWithoutSetTime()
{
    Fixture f;
    f.server.options().mfmt = false;
    f.server.options().mdtm = false;
    f.server.put("/b.txt", "1");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.write(QStringLiteral("a.txt"), "hello");
    f.putPath(QStringLiteral("a.txt"));
    QVERIFY(f.ok);
    QCOMPARE(f.work(), QList<QByteArray>({"CWD /", "EPSV", "STOR a.txt", "SIZE a.txt", "EPSV"})
                           .mid(f.work().value(0) == "EPSV" ? 1 : 0));
    QCOMPARE(f.counts(), QStringLiteral("1/0/0"));
}

void tst_Uploads::refusedTimeIsNoFailure()
{
    Fixture f;
    f.server.on("MFMT").reply(550, "not yours");
    QVERIFY(f.start());
    f.write(QStringLiteral("a.txt"), "hello");
    f.write(QStringLiteral("b.txt"), "hello");
    f.putPath(QStringLiteral("a.txt"));
    f.putPath(QStringLiteral("b.txt"));
    QVERIFY(f.ok);
    QCOMPARE(f.counts(), QStringLiteral("2/0/0"));
    QCOMPARE(f.server.count("MFMT"), 1); // remembered for the session
    QCOMPARE(f.errorLines(), QStringList());
}

void tst_Uploads::pathForm()
{
    Fixture f;
    QVERIFY(f.start());
    f.write(QStringLiteral("a.txt"), "hello", wallClock(16, 8, 9));
    f.putPath(QStringLiteral("a.txt"), QStringLiteral("made/new/"));
    QVERIFY(f.ok);
    QCOMPARE(f.server.file("/made/new/a.txt"), QByteArray("hello"));
    QVERIFY(f.status().contains(f.at(QStringLiteral("a.txt")) + QStringLiteral(" Uploading･･･")));
    QCOMPARE(f.row(QStringLiteral("/made/new"), QStringLiteral("a.txt")),
             QStringLiteral("/made/new|0|a.txt|24/05/06 16:08:09|5"));
    QCOMPARE(f.person.outcomes().back().kind, Outcome::Kind::Uploaded);
    QCOMPARE(f.person.outcomes().back().from, f.at(QStringLiteral("a.txt")));
    QCOMPARE(f.person.outcomes().back().to, QStringLiteral("/made/new/a.txt"));
}

void tst_Uploads::pathFormDrops_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("sent");
    QTest::newRow("lock file") << QStringLiteral("db.ldb") << false;
    QTest::newRow("lock file in capitals") << QStringLiteral("DB.LDB") << false;
    QTest::newRow("name ends otherwise") << QStringLiteral("db.ldb.txt") << true;
    QTest::newRow("dot file") << QStringLiteral(".htaccess") << true;
    QTest::newRow("unfinished download") << QStringLiteral(".venlo-0123abcd.part") << false;
    QTest::newRow("blank and signs") << QStringLiteral("a b%20#'.txt") << true;
#ifdef Q_OS_UNIX
    QTest::newRow("quotation mark") << QStringLiteral("a\".txt") << true;
#endif
}

void tst_Uploads::pathFormDrops()
{
    QFETCH(QString, name);
    QFETCH(bool, sent);
    Fixture f;
    QVERIFY(f.start());
    f.write(name, "hello");
    f.putPath(name);
    QVERIFY(f.ok);
    QCOMPARE(f.server.exists('/' + name.toUtf8()), sent);
    QCOMPARE(f.counts(), sent ? QStringLiteral("1/0/0") : QStringLiteral("0/0/1"));
    QCOMPARE(f.errorLines(), QStringList());
    QVERIFY(f.person.verify());
}

void tst_Uploads::pathFormAsksAgain()
{
    Fixture f;
    f.server.on("STOR").reply(553, "no");
    QVERIFY(f.start());
    f.write(QStringLiteral("a.txt"), "hello");
    const QString words = f.at(QStringLiteral("a.txt")) + QStringLiteral(" Put File Err");
    for (int i = 0; i < 5; ++i)
        f.person.expectRetryOrCancel(words, true);
    f.putPath(QStringLiteral("a.txt"));
    QVERIFY(f.ok);
    QCOMPARE(f.server.count("STOR"), 5);
    QCOMPARE(f.reconnects(), 5);
    QCOMPARE(f.errorLines(),
             QStringList({QStringLiteral("FtpPutFile Err:") + f.at(QStringLiteral("a.txt")) +
                          QStringLiteral(" Upload")}));
    QCOMPARE(f.counts(), QStringLiteral("0/1/0"));
    QVERIFY(f.row(QStringLiteral("/"), QStringLiteral("a.txt")).isEmpty());
    QVERIFY(f.person.verify());
}

void tst_Uploads::pathFormCancelled()
{
    Fixture f;
    f.server.on("STOR").reply(553, "no");
    QVERIFY(f.start());
    f.write(QStringLiteral("a.txt"), "hello");
    const QString words = f.at(QStringLiteral("a.txt")) + QStringLiteral(" Put File Err");
    f.person.expectRetryOrCancel(words, true);
    f.person.expectRetryOrCancel(words, false);
    f.putPath(QStringLiteral("a.txt"));
    QVERIFY(!f.ok);
    QCOMPARE(f.server.count("STOR"), 2);
    QCOMPARE(f.reconnects(), 1);
    QCOMPARE(f.errorLines(), QStringList());
    QVERIFY(f.person.verify());
}

void tst_Uploads::pathFormRetryOfALocalFailure()
{
    Fixture f;
    QVERIFY(f.start());
    f.person.expectRetryOrCancel(f.at(QStringLiteral("a.txt")) + QStringLiteral(" Put File Err"),
                                 false);
    f.putPath(QStringLiteral("a.txt"));
    QVERIFY(!f.ok);
    QCOMPARE(f.server.count("STOR"), 0);
    QCOMPARE(f.reconnects(), 0);
    QVERIFY(f.person.verify());
}

void tst_Uploads::pathFormUnattended()
{
    Fixture f;
    f.server.on("STOR").reply(553, "no");
    QVERIFY(f.start());
    f.flags.unattendedTransfer = true;
    f.write(QStringLiteral("a.txt"), "hello");
    f.putPath(QStringLiteral("a.txt"));
    QVERIFY(f.ok);
    QCOMPARE(f.server.count("STOR"), 5);
    QCOMPARE(f.errorLines().size(), 1);
    QCOMPARE(f.status(), QStringList());
    QCOMPARE(f.person.outcomes().at(0).kind, Outcome::Kind::GivenUp);
    QVERIFY(f.person.verify());
}

void tst_Uploads::listForm()
{
    Fixture f;
    f.server.put("/pub/x", "1");
    QVERIFY(f.start());
    f.write(QStringLiteral("a.txt"), "hello", wallClock(16, 8, 9));
    f.write(QStringLiteral("b.txt"), "bye");
    f.putList({QStringLiteral("a.txt"), QStringLiteral("b.txt")}, QStringLiteral("/pub"));
    QVERIFY(f.ok);
    QCOMPARE(f.server.file("/pub/a.txt"), QByteArray("hello"));
    QCOMPARE(f.server.file("/pub/b.txt"), QByteArray("bye"));
    QCOMPARE(f.status().at(0), f.at(QStringLiteral("a.txt")) + QStringLiteral(" > ") +
                                   QStringLiteral("/pub UpLoading･･･"));
    QCOMPARE(f.row(QStringLiteral("/pub"), QStringLiteral("a.txt")),
             QStringLiteral("/pub|0|a.txt|24/05/06 16:08:09|5"));
    QCOMPARE(f.server.count("MLSD"), 1);
    QVERIFY(f.person.verify());
}

void tst_Uploads::listFormDrops_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("sent");
    QTest::newRow("dot file") << QStringLiteral(".htaccess") << false;
    QTest::newRow("lock file") << QStringLiteral("db.LDB") << false;
    QTest::newRow("unfinished download") << QStringLiteral(".venlo-0123abcd.part") << false;
    QTest::newRow("dot inside") << QStringLiteral("a.htaccess") << true;
}

void tst_Uploads::listFormDrops()
{
    QFETCH(QString, name);
    QFETCH(bool, sent);
    Fixture f;
    QVERIFY(f.start());
    f.write(name, "hello");
    f.putList({name});
    QVERIFY(f.ok);
    QCOMPARE(f.server.exists('/' + name.toUtf8()), sent);
    QCOMPARE(f.counts(), sent ? QStringLiteral("1/0/0") : QStringLiteral("0/0/1"));
    QCOMPARE(f.errorLines(), QStringList());
}

void tst_Uploads::listFormCreatesTheDirectory()
{
    Fixture f;
    QVERIFY(f.start());
    f.write(QStringLiteral("a.txt"), "hello");
    f.putList({QStringLiteral("a.txt")}, QStringLiteral("/x/y"));
    QVERIFY(f.ok);
    QCOMPARE(f.server.file("/x/y/a.txt"), QByteArray("hello"));
}

void tst_Uploads::listFormFiveAttempts()
{
    Fixture f;
    f.server.on("STOR", "a.txt").reply(552, "full");
    QVERIFY(f.start());
    f.write(QStringLiteral("a.txt"), "hello");
    f.write(QStringLiteral("b.txt"), "bye");
    f.putList({QStringLiteral("a.txt"), QStringLiteral("b.txt")});
    QVERIFY(f.ok);
    QCOMPARE(f.server.count("STOR", "a.txt"), 5);
    QCOMPARE(f.reconnects(), 5);
    QCOMPARE(f.server.file("/b.txt"), QByteArray("bye"));
    QCOMPARE(f.errorLines(),
             QStringList({QStringLiteral("FtpPutFile Err: ") + f.at(QStringLiteral("a.txt")) +
                          QStringLiteral(" > / UpLoad")}));
    QCOMPARE(f.counts(), QStringLiteral("1/1/0"));
    QVERIFY(f.row(QStringLiteral("/"), QStringLiteral("a.txt")).isEmpty());
    QVERIFY(f.person.verify());
}

void tst_Uploads::unattendedSendsNewerOnly_data()
{
    QTest::addColumn<QDateTime>("local");
    QTest::addColumn<bool>("sent");
    QTest::newRow("newer by a second") << wallClock(16, 8, 10) << true;
    QTest::newRow("same") << wallClock(16, 8, 9) << false;
    QTest::newRow("older") << wallClock(16, 8, 8) << false;
}

void tst_Uploads::unattendedSendsNewerOnly()
{
    QFETCH(QDateTime, local);
    QFETCH(bool, sent);
    Fixture f;
    f.server.put("/a.txt", "old", QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9), Qt::UTC));
    QVERIFY(f.start());
    f.flags.unattendedTransfer = true;
    f.write(QStringLiteral("a.txt"), "new", local);
    f.write(QStringLiteral("fresh.txt"), "new", wallClock(1, 0));
    f.putList({QStringLiteral("a.txt"), QStringLiteral("fresh.txt")});
    QVERIFY(f.ok);
    QCOMPARE(f.server.file("/a.txt"), sent ? QByteArray("new") : QByteArray("old"));
    QCOMPARE(f.server.file("/fresh.txt"), QByteArray("new"));
    QCOMPARE(f.counts(), sent ? QStringLiteral("2/0/0") : QStringLiteral("1/0/1"));
    QVERIFY(f.person.verify());
}

void tst_Uploads::confirmation_data()
{
    QTest::addColumn<int>("hour"); // of the local file; the one on the server is of 16:08:09
    QTest::addColumn<bool>("asked");
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("overwrite");
    QTest::addColumn<bool>("sent");
    QTest::newRow("newer: unasked") << 17 << false << 0 << false << true;
    QTest::newRow("older: yes") << 15 << true << 0 << true << true;
    QTest::newRow("older: no") << 15 << true << 0 << false << false;
    QTest::newRow("older: all") << 15 << true << 1 << true << true;
    QTest::newRow("older: none that is newer") << 15 << true << 2 << false << false;
    QTest::newRow("older: cancel") << 15 << true << 3 << false << false;
}

void tst_Uploads::confirmation()
{
    QFETCH(int, hour);
    QFETCH(bool, asked);
    QFETCH(int, mode);
    QFETCH(bool, overwrite);
    QFETCH(bool, sent);
    Fixture f;
    f.server.put("/a.txt", QByteArray(1500, 'o'),
                 QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9), Qt::UTC));
    QVERIFY(f.start());
    f.write(QStringLiteral("a.txt"), "new", wallClock(hour, 0));
    if (asked)
        f.person.expectOverwrite(QStringLiteral("a.txt"),
                                 {static_cast<OverwriteMode>(mode), overwrite});
    f.putList({QStringLiteral("a.txt")});
    QCOMPARE(f.ok, mode != 3);
    QCOMPARE(f.server.file("/a.txt"), sent ? QByteArray("new") : QByteArray(1500, 'o'));
    QVERIFY(f.person.verify());
    QCOMPARE(static_cast<int>(f.operations.standingAnswer), mode);
    if (!asked)
        return;
    const auto &question = f.person.overwriteQuestions().at(0);
    QCOMPARE(question.existingSize, QStringLiteral("2KB"));
    QCOMPARE(question.existingDate, QStringLiteral("24/05/06 16:08:09"));
    QCOMPARE(question.newSize, QStringLiteral("3B"));
    QCOMPARE(question.newDate, QStringLiteral("24/05/06 15:00:00"));
}

void tst_Uploads::standingAnswer_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("hour");
    QTest::addColumn<bool>("sent");
    QTest::newRow("all, older") << 1 << 15 << true;
    QTest::newRow("none that is newer, older") << 2 << 15 << false;
    QTest::newRow("none that is newer, newer") << 2 << 17 << true;
}

void tst_Uploads::standingAnswer()
{
    QFETCH(int, mode);
    QFETCH(int, hour);
    QFETCH(bool, sent);
    Fixture f;
    f.server.put("/a.txt", "old", QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9), Qt::UTC));
    QVERIFY(f.start());
    f.write(QStringLiteral("a.txt"), "new", wallClock(hour, 0));
    f.operations.standingAnswer = static_cast<OverwriteMode>(mode);
    f.putList({QStringLiteral("a.txt")});
    QVERIFY(f.ok);
    QCOMPARE(f.server.file("/a.txt"), sent ? QByteArray("new") : QByteArray("old"));
    QVERIFY(f.person.verify());
}

void tst_Uploads::cancelAllLeavesTheRest()
{
    Fixture f;
    QVERIFY(f.start());
    f.write(QStringLiteral("a.txt"), "new");
    f.operations.standingAnswer = OverwriteMode::CancelAll;
    f.putList({QStringLiteral("a.txt")});
    QVERIFY(!f.ok);
    QCOMPARE(f.server.count("STOR"), 0);
}

void tst_Uploads::unreadableFileGoesPast_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind : {"missing", "folder"})
        QTest::newRow(kind) << QString::fromLatin1(kind);
#ifdef Q_OS_UNIX
    QTest::newRow("pipe") << QStringLiteral("pipe");
#endif
}

void tst_Uploads::unreadableFileGoesPast()
{
    QFETCH(QString, kind);
    Fixture f;
    QVERIFY(f.start());
    const QString path = f.at(QStringLiteral("a.txt"));
    if (kind == QLatin1String("folder"))
        QVERIFY(QDir().mkdir(path));
#ifdef Q_OS_UNIX
    else if (kind == QLatin1String("pipe"))
        QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
#endif
    f.write(QStringLiteral("b.txt"), "bye");
    f.putList({QStringLiteral("a.txt"), QStringLiteral("b.txt")});
    QVERIFY(f.ok);
    QCOMPARE(f.server.count("STOR"), 1);
    QCOMPARE(f.reconnects(), 0);
    QCOMPARE(f.errorLines(), QStringList({QStringLiteral("FtpPutFile Err: ") + path +
                                          QStringLiteral(" > / UpLoad")}));
    QCOMPARE(f.counts(), QStringLiteral("1/1/0"));
}

void tst_Uploads::changedFileGoesAgain()
{
    Fixture f;
    QVERIFY(f.start());
    f.write(QStringLiteral("a.txt"), "first", wallClock(1, 0));
    f.server.on("STOR").once().call(
        [&f] { f.write(QStringLiteral("a.txt"), "second and longer", wallClock(2, 0)); });
    f.putPath(QStringLiteral("a.txt"));
    QVERIFY(f.ok);
    QCOMPARE(f.server.count("STOR"), 2);
    QCOMPARE(f.server.file("/a.txt"), QByteArray("second and longer"));
    QCOMPARE(f.row(QStringLiteral("/"), QStringLiteral("a.txt")),
             QStringLiteral("/|0|a.txt|24/05/06 02:00:00|17"));
    QVERIFY(f.events().contains(QStringLiteral("changed while it was sent")));
    QCOMPARE(f.reconnects(), 0);
}

void tst_Uploads::alwaysChangingFileIsGivenUp()
{
    Fixture f;
    QVERIFY(f.start());
    f.flags.unattendedTransfer = true;
    f.write(QStringLiteral("a.txt"), "x", wallClock(1, 0));
    int minute = 0;
    f.server.on("STOR").call(
        [&f, &minute] { f.write(QStringLiteral("a.txt"), "x", wallClock(2, ++minute)); });
    f.putPath(QStringLiteral("a.txt"));
    QVERIFY(f.ok);
    QCOMPARE(f.server.count("STOR"), 5);
    QCOMPARE(f.reconnects(), 0);
    QCOMPARE(f.errorLines().size(), 1);
    QCOMPARE(f.counts(), QStringLiteral("0/1/0"));
}

void tst_Uploads::recoversAfterALoss()
{
    Fixture f;
    f.server.put("/pub/x", "1");
    f.server.on("STOR").first(2).dropAfterBytes(4'000);
    QVERIFY(f.start());
    f.browse(QStringLiteral("/pub"));
    f.write(QStringLiteral("a.txt"), QByteArray(100'000, 'n'));
    f.putList({QStringLiteral("a.txt")}, QStringLiteral("/pub"));
    QVERIFY(f.ok);
    QCOMPARE(f.server.file("/pub/a.txt"), QByteArray(100'000, 'n'));
    QCOMPARE(f.server.tree().paths(), QList<QByteArray>({"/pub/", "/pub/a.txt", "/pub/x"}));
    QCOMPARE(f.reconnects(), 2);
    QCOMPARE(f.errorLines(), QStringList());
}

void tst_Uploads::lostForGoodEndsTheOperation()
{
    Fixture f;
    QVERIFY(f.start());
    f.flags.unattendedTransfer = true;
    f.write(QStringLiteral("a.txt"), "one");
    f.write(QStringLiteral("b.txt"), "two");
    f.server.on("STOR").dropBeforeReply();
    f.server.on("CONNECT").reply(421, "closed for today");
    f.person.expectMessage(f.server.server() +
                           QStringLiteral(" へ接続が切断されました　再度起動後実行して下さい"));
    f.putList({QStringLiteral("a.txt"), QStringLiteral("b.txt")});
    QVERIFY(!f.ok);
    QCOMPARE(f.server.count("STOR"), 1);
    QVERIFY(f.person.verify());
}

void tst_Uploads::cancelled()
{
    Fixture f;
    QVERIFY(f.start());
    f.write(QStringLiteral("a.txt"), "one");
    f.write(QStringLiteral("b.txt"), "two");
    f.person.cancelAt(venlo::test::ScriptedPerson::What::Status,
                      f.at(QStringLiteral("b.txt")) + QStringLiteral(" > / UpLoading･･･"));
    f.putList({QStringLiteral("a.txt"), QStringLiteral("b.txt")});
    QVERIFY(!f.ok);
    QCOMPARE(f.server.file("/a.txt"), QByteArray("one"));
    QVERIFY(!f.server.exists("/b.txt"));
    QCOMPARE(f.reconnects(), 0);
    QCOMPARE(f.errorLines(), QStringList());
    QCOMPARE(f.session.state(), Session::Connected);
}

void tst_Uploads::doesNothing()
{
    Fixture f;
    f.putPath(QStringLiteral("a.txt")); // not connected
    QVERIFY(f.ok);
    QVERIFY(f.start());
    f.operations.ftPutFile(QStringLiteral("/new"), QString(), f.here(), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.work(), QList<QByteArray>());
}

void tst_Uploads::unlistedDirectoryIsCompared_data()
{
    QTest::addColumn<int>("second"); // of the local file; the server's is 9
    QTest::addColumn<bool>("sent");
    QTest::newRow("newer") << 10 << true;
    QTest::newRow("same") << 9 << false;
    QTest::newRow("older") << 8 << false;
}

void tst_Uploads::unlistedDirectoryIsCompared()
{
    QFETCH(int, second);
    QFETCH(bool, sent);
    Fixture f;
    f.server.put("/a.txt", "old", QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9), Qt::UTC));
    f.server.on("MLSD").reply(550, "you may only write here");
    QVERIFY(f.start());
    f.flags.unattendedTransfer = true;
    f.write(QStringLiteral("a.txt"), "new", wallClock(16, 8, second));
    f.write(QStringLiteral("fresh.txt"), "new", wallClock(1, 0));
    f.putList({QStringLiteral("a.txt"), QStringLiteral("fresh.txt")});
    QVERIFY(f.ok);
    QCOMPARE(f.server.file("/a.txt"), sent ? QByteArray("new") : QByteArray("old"));
    QCOMPARE(f.server.file("/fresh.txt"), QByteArray("new"));
}

void tst_Uploads::unlistedDirectoryWithoutTimes()
{
    Fixture f;
    f.server.options().mdtm = false;
    f.server.put("/a.txt", "old");
    f.server.on("MLSD").reply(550, "you may only write here");
    QVERIFY(f.start());
    f.write(QStringLiteral("a.txt"), "new", wallClock(1, 0));
    f.person.expectOverwrite(QStringLiteral("a.txt"), {OverwriteMode::Ask, false});
    f.putList({QStringLiteral("a.txt")});
    QVERIFY(f.person.verify());
    f.flags.unattendedTransfer = true;
    f.putList({QStringLiteral("a.txt")});
    QVERIFY(f.ok);
    QCOMPARE(f.server.file("/a.txt"), QByteArray("old"));
    QCOMPARE(f.counts(), QStringLiteral("0/1/1"));
    QVERIFY(f.errorLines().last().startsWith(QStringLiteral("FtpPutFile Err: ")));
}

void tst_Uploads::brokenUploadGoesAgain()
{
    Fixture f;
    f.server.put("/a.txt", "old", QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9), Qt::UTC));
    QVERIFY(f.start());
    f.flags.unattendedTransfer = true;
    f.write(QStringLiteral("a.txt"), QByteArray(1000, 'n'), wallClock(16, 8, 10));
    f.server.on("STOR").first(5).completion("426 broken");
    f.putList({QStringLiteral("a.txt")});
    QCOMPARE(f.operations.counts().givenUp, 1);
    const std::vector<std::pair<QString, QString>> notes{
        {QStringLiteral("/"), QStringLiteral("a.txt")}};
    QCOMPARE(f.cache.unfinishedUnder(QStringLiteral("/")), notes);
    // The remnant is newer than the file, also in a fresh listing.
    f.cache.caRefresh(QStringLiteral("/"));
    QCOMPARE(f.cache.unfinishedUnder(QStringLiteral("/")), notes);
    f.putList({QStringLiteral("a.txt")});
    QCOMPARE(f.server.file("/a.txt"), QByteArray(1000, 'n'));
    QVERIFY(f.cache.unfinishedUnder(QStringLiteral("/")).empty());
    // A whole upload is compared as ever.
    f.server.log().clear();
    f.putList({QStringLiteral("a.txt")});
    QCOMPARE(f.server.count("STOR"), 0);
}

void tst_Uploads::refusedUploadIsNoRemnant()
{
    Fixture f;
    f.server.on("STOR").reply(553, "not yours");
    QVERIFY(f.start());
    f.flags.unattendedTransfer = true;
    f.write(QStringLiteral("a.txt"), "new");
    f.putList({QStringLiteral("a.txt")});
    QCOMPARE(f.operations.counts().givenUp, 1);
    QVERIFY(f.cache.unfinishedUnder(QStringLiteral("/")).empty());
}

void tst_Uploads::oneRowIsNotAWholeDirectory_data()
{
    QTest::addColumn<int>("operation");
    QTest::newRow("upload of one path") << 0;
    QTest::newRow("upload of a folder") << 1;
    QTest::newRow("new folder") << 2;
}

void tst_Uploads::oneRowIsNotAWholeDirectory()
{
    QFETCH(int, operation);
    Fixture f;
    f.server.put("/pub/there.txt", "1");
    QVERIFY(f.start());
    const QString pub = QStringLiteral("/pub");
    QVERIFY(venlo::test::makeTree(f.here(), {{"n/a.txt", "1"}, {"a.txt", "1"}}));
    if (operation == 0)
        f.putPath(QStringLiteral("a.txt"), pub);
    else if (operation == 1)
        f.operations.ftPutFold(f.here(), QStringLiteral("n"), pub, f.ok);
    else
        f.operations.ftMakeDir(pub, QStringLiteral("n"), f.ok);
    QVERIFY(f.ok);
    QVERIFY(f.cache.isCached(pub, QStringLiteral("there.txt")));
    QVERIFY(f.cache.isCached(pub, operation == 0 ? QStringLiteral("a.txt") : QStringLiteral("n")));
}

void tst_Uploads::neverListedFolderIsFound()
{
    Fixture f;
    f.server.options().utf8 = false;
    const QByteArray sjis = "\x93\xfa\x96\x7b"; // 日本
    f.server.makeFolder("/" + sjis);
    QVERIFY(f.start());
    f.write(QStringLiteral("a.txt"), "hello");
    f.putPath(QStringLiteral("a.txt"), QStringLiteral("/日本/本日"));
    QVERIFY(f.ok);
    // What is new is made in what the server's names are in.
    QCOMPARE(f.server.file("/" + sjis + "/\x96\x7b\x93\xfa/a.txt"), QByteArray("hello"));
    QCOMPARE(f.server.count("MKD"), 1);
    QCOMPARE(f.errorLines(), QStringList());
}

void tst_Uploads::emptyAndLargeFiles()
{
    Fixture f;
    QVERIFY(f.start());
    f.write(QStringLiteral("empty"), "");
    f.write(QStringLiteral("large"), QByteArray(3'000'001, 'x'));
    f.putList({QStringLiteral("empty"), QStringLiteral("large")});
    QVERIFY(f.ok);
    QVERIFY(f.server.exists("/empty"));
    QCOMPARE(f.server.file("/empty").size(), 0);
    QCOMPARE(f.server.file("/large").size(), 3'000'001);
}

/// With the whole path, also below an empty folder, which has no rows to be known by.
void tst_Uploads::foldersAreMadeAndEnteredAtOnce()
{
    Fixture f;
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    QVERIFY(venlo::test::makeTree(f.here(), {{"site/sub/b.txt", "bb", wallClock(2, 0)}}));
    f.operations.ftPutFold(f.here(), QStringLiteral("site"), QStringLiteral("/"), f.ok);
    QVERIFY(f.ok);
    const QList<QByteArray> made{"MKD /site", "CWD /site", "MKD /site/sub", "CWD /site/sub"};
    QList<QByteArray> said = f.work();
    said.removeIf([](const QByteArray &command) {
        return !command.startsWith("MKD") && !command.startsWith("CWD");
    });
    QCOMPARE(said, made);
}

void tst_Uploads::folderTree()
{
    Fixture f;
    QVERIFY(f.start());
    QVERIFY(venlo::test::makeTree(f.here(), {{"site/a.txt", "a", wallClock(1, 0)},
                                             {"site/sub/b.txt", "bb", wallClock(2, 0)},
                                             {"site/sub/deep/c.txt", "ccc", wallClock(3, 0)},
                                             {"site/empty/"}}));
    f.operations.ftPutFold(f.here(), QStringLiteral("site"), QStringLiteral("/www/"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(difference(venlo::test::snapshot(f.at(QStringLiteral("site"))),
                        venlo::test::snapshot(f.server.tree(), "/www/site"),
                        venlo::test::Times::Seconds),
             QStringList());
    QVERIFY(f.status().contains(QStringLiteral("/www/site Create Directry ･･･")));
    const QString folder = QStringLiteral("/www|1|site|") +
                           FormatDateText(QFileInfo(f.at(QStringLiteral("site"))).lastModified()) +
                           QStringLiteral("|0");
    const QStringList rows = f.cacheRows(QStringLiteral("web"));
    QVERIFY2(rows.contains(folder), qPrintable(rows.join(QLatin1Char('\n'))));
    QVERIFY(f.person.verify());
}

void tst_Uploads::folderLeavesOut()
{
    Fixture f;
    QVERIFY(f.start());
    QVERIFY(venlo::test::makeTree(
        f.here(), {{"site/db.LDB", "1"}, {"site/.htaccess", "1"}, {"site/a.txt", "1"}}));
    f.operations.ftPutFold(f.here(), QStringLiteral("site"), QStringLiteral("/"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.server.tree().paths(), QList<QByteArray>({"/site/", "/site/a.txt"}));
}

void tst_Uploads::folderThatIsThere()
{
    Fixture f;
    f.server.put("/site/old.txt", "kept");
    f.server.makeFolder("/site/sub");
    QVERIFY(f.start());
    QVERIFY(venlo::test::makeTree(f.here(), {{"site/a.txt", "1"}, {"site/sub/"}}));
    f.operations.ftPutFold(f.here(), QStringLiteral("site"), QStringLiteral("/"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.server.tree().paths(),
             QList<QByteArray>({"/site/", "/site/a.txt", "/site/old.txt", "/site/sub/"}));
    QCOMPARE(f.operations.counts().givenUp, 0);
    QCOMPARE(f.errorLines(), QStringList());
}

void tst_Uploads::folderThatCannotBeMade()
{
    Fixture f;
    for (const char *name : {"bad", "/site/bad"})
        f.server.on("MKD", name).reply(553, "name not allowed");
    QVERIFY(f.start());
    QVERIFY(venlo::test::makeTree(f.here(), {{"site/bad/x.txt", "1"}, {"site/good/y.txt", "1"}}));
    f.operations.ftPutFold(f.here(), QStringLiteral("site"), QStringLiteral("/"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.server.tree().paths(),
             QList<QByteArray>({"/site/", "/site/good/", "/site/good/y.txt"}));
    QCOMPARE(f.operations.counts().givenUp, 1);
    const QStringList lines = f.errorLines();
    QCOMPARE(lines.size(), 1);
    QVERIFY2(lines.at(0).startsWith(QStringLiteral("ftPutFold Err:/site/bad : ")) &&
                 lines.at(0).contains(QStringLiteral("name not allowed")) &&
                 lines.at(0).endsWith(QStringLiteral(" > ") + f.at(QStringLiteral("site/bad"))),
             qPrintable(lines.at(0)));
}

void tst_Uploads::folderThatCannotBeRead()
{
    Fixture f;
    QVERIFY(f.start());
    f.operations.ftPutFold(f.here(), QStringLiteral("gone"), QStringLiteral("/"), f.ok);
    QVERIFY(f.ok);
    QVERIFY(!f.server.exists("/gone"));
    QCOMPARE(f.operations.counts().givenUp, 1);
    QVERIFY(f.errorLines().value(0).startsWith(QStringLiteral("ftPutFold Err:/gone : ")));
}

#ifdef Q_OS_UNIX
/// A link to nothing and a pipe are no files.
void tst_Uploads::folderWithOddEntries()
{
    Fixture f;
    QVERIFY(f.start());
    QVERIFY(venlo::test::makeTree(f.here(), {{"site/a.txt", "a", wallClock(1, 0)}}));
    QVERIFY(QFile::link(QStringLiteral("nowhere"), f.at(QStringLiteral("site/link"))));
    QCOMPARE(mkfifo(QFile::encodeName(f.at(QStringLiteral("site/pipe"))).constData(), 0600), 0);
    f.operations.ftPutFold(f.here(), QStringLiteral("site"), QStringLiteral("/"), f.ok);
    QCOMPARE(f.server.tree().paths(), QList<QByteArray>({"/site/", "/site/a.txt"}));
    QCOMPARE(f.counts(), QStringLiteral("2/0/0")); // the folder is one
}

void tst_Uploads::linkedFoldersAreNotFollowed()
{
    Fixture f;
    QVERIFY(f.start());
    QVERIFY(venlo::test::makeTree(f.here(), {{"site/a.txt", "1"}}));
    QVERIFY(QFile::link(f.at(QStringLiteral("site")), f.at(QStringLiteral("site/round"))));
    f.operations.ftPutFold(f.here(), QStringLiteral("site"), QStringLiteral("/"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.server.tree().paths(), QList<QByteArray>({"/site/", "/site/a.txt"}));
    QCOMPARE(f.operations.counts().givenUp, 1);
    QVERIFY(f.errorLines().value(0).startsWith(
        QStringLiteral("ftPutFold Err:/site/round : ﾌｫﾙﾀﾞへのﾘﾝｸは転送しません > ")));
}
#endif

void tst_Uploads::listFormWithoutAListing()
{
    Fixture f;
    f.server.on("MLSD").reply(550, "you may only write here");
    f.server.on("LIST").reply(550, "you may only write here");
    QVERIFY(f.start());
    f.write(QStringLiteral("a.txt"), "hello");
    f.putList({QStringLiteral("a.txt")});
    QVERIFY(f.ok);
    QCOMPARE(f.server.file("/a.txt"), QByteArray("hello"));
    QCOMPARE(f.errorLines(), QStringList({QStringLiteral("FtpFindFirstFile")}));
}

QTEST_GUILESS_MAIN(tst_Uploads)
#include "tst_Uploads.moc"
