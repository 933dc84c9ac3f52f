// Downloads on a scripted server: what arrives, what is asked, what a failure leaves behind.
#include "ftp/OperationsFixture.h"

#include <csignal>

#include <sys/resource.h>

#include <QTest>

using namespace venlo;
using venlo::test::OperationsFixture;
using What = venlo::test::ScriptedPerson::What;

namespace
{
/// 2024-05-06 07:08:09 UTC, which is 16:08:09 in Japan.
QDateTime stamp()
{
    return {QDate(2024, 5, 6), QTime(7, 8, 9), Qt::UTC};
}

QDateTime wallClock(int hour, int minute, int second = 0)
{
    return {QDate(2024, 5, 6), QTime(hour, minute, second)};
}

/// Files of this process cannot grow beyond a limit: a write that fails in the middle.
class FileLimit
{
public:
    explicit FileLimit(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileLimit() { setrlimit(RLIMIT_FSIZE, &m_before); }
    Q_DISABLE_COPY_MOVE(FileLimit)

private:
    rlimit m_before{};
};

struct Fixture : OperationsFixture {
    bool ok = true;

    void get(const QString &names, const QString &dir = QStringLiteral("/"))
    {
        operations.ftGetFile(dir, names, here(), ok);
    }
};
} // namespace

class tst_Downloads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void twoCommandsPerFile();
    void severalFiles();
    void keepsTheListingsTime();
    void keepsMdtmsTimeWhenNotListed();
    void refinesRowsOfAnOlderList();
    void refinesOneRowOfMany();
    void makesTheLocalFolder();
    void replacesTheOldFileKeepingItsPermissions();
    void emptyFile();
    void unattendedSaysNothing();
    void neverConfirmedWithoutAnOldFile();
    void confirmation_data();
    void confirmation();
    void keepNewer_data();
    void keepNewer();
    void cancelAllLeavesTheRest();
    void refusedFileIsTriedFiveTimes();
    void failureLeavesTheOldFile_data();
    void failureLeavesTheOldFile();
    void sizeIsChecked_data();
    void sizeIsChecked();
    void recoversAfterALoss();
    void lostForGoodEndsTheOperation();
    void directoryThatCannotBeEntered();
    void localTrouble_data();
    void localTrouble();
    void namesStayInTheFolder_data();
    void namesStayInTheFolder();
    void cancelled();
    void notConnected();
    void leftoversAreSwept();
    void folderTree();
    void folderFilesBeforeSubFolders();
    void folderStopsAtTheFirstFailure();
    void folderWithoutListingIsGivenUp();
    void folderOfAFileName();
    void progress();
    void savedMeanwhile_data();
    void savedMeanwhile();
    void takenAwayMeanwhile();
    void takesItsPlaceWhileTheNextOneComes_data();
    void takesItsPlaceWhileTheNextOneComes();
    void takesItsPlaceBeforeAQuestion();
    void outcomesKeepTheirOrder();
    void namesThatAreOneToSomeSystems();
};

void tst_Downloads::savedMeanwhile_data()
{
    QTest::addColumn<bool>("existed");
    QTest::addColumn<bool>("unattended");
    QTest::newRow("new") << false << true;
    QTest::newRow("changed") << true << true;
    QTest::newRow("changed, a person there") << true << false;
}

/// What the person saved while a file of the same name was on its way stays.
void tst_Downloads::savedMeanwhile()
{
    QFETCH(bool, existed);
    QFETCH(bool, unattended);
    Fixture f;
    f.server.put("/a.txt", "from the server");
    f.server.put("/b.txt", "also");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.flags.unattendedTransfer = unattended;
    f.operations.standingAnswer = OverwriteMode::OverwriteAll;
    if (existed)
        f.write(QStringLiteral("a.txt"), "old", wallClock(1, 0));
    f.server.on("RETR", "a.txt").once().call([&f] {
        f.write(QStringLiteral("a.txt"), "just saved", wallClock(2, 0));
    });
    f.get(QStringLiteral("a.txt\rb.txt"));
    QCOMPARE(f.read(QStringLiteral("a.txt")), QByteArray("just saved"));
    QCOMPARE(f.read(QStringLiteral("b.txt")), QByteArray("also"));
    QCOMPARE(f.localNames(), QStringList({QStringLiteral("a.txt"), QStringLiteral("b.txt")}));
    QCOMPARE(f.counts(), QStringLiteral("1/1/0"));
    QCOMPARE(f.person.outcomes(Outcome::Kind::GivenUp).at(0).why,
             QStringLiteral("受信中にﾌｧｲﾙが変更されました"));
}

/// There is nothing to be lost.
void tst_Downloads::takenAwayMeanwhile()
{
    Fixture f;
    f.server.put("/a.txt", "from the server");
    QVERIFY(f.start());
    f.flags.unattendedTransfer = true;
    f.write(QStringLiteral("a.txt"), "old", wallClock(1, 0));
    f.server.on("RETR").once().call([&f] { QFile::remove(f.at(QStringLiteral("a.txt"))); });
    f.get(QStringLiteral("a.txt"));
    QCOMPARE(f.read(QStringLiteral("a.txt")), QByteArray("from the server"));
    QCOMPARE(f.counts(), QStringLiteral("1/0/0"));
}

void tst_Downloads::takesItsPlaceWhileTheNextOneComes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("before");
    QTest::newRow("small") << QByteArray("/a.txt") << false;
    QTest::newRow("large") << QByteArray(8 * 1024 * 1024, 'x') << true; // its flush may take long
}

void tst_Downloads::takesItsPlaceWhileTheNextOneComes()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, before);
    Fixture f;
    f.server.put("/a.txt", bytes);
    for (const char *name : {"/b.txt", "/c.txt"})
        f.server.put(name, name);
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    QByteArray beforeB;
    QByteArray beforeC;
    f.server.on("RETR", "b.txt").once().call([&] { beforeB = f.read(QStringLiteral("a.txt")); });
    f.server.on("RETR", "c.txt").once().call([&] { beforeC = f.read(QStringLiteral("a.txt")); });
    f.get(QStringLiteral("a.txt\rb.txt\rc.txt"));
    QVERIFY(f.ok);
    QVERIFY(beforeB == (before ? bytes : QByteArray("<none>")));
    QVERIFY(beforeC == bytes);
    for (const char *name : {"/b.txt", "/c.txt"})
        QCOMPARE(f.read(QString::fromLatin1(name + 1)), QByteArray(name));
    QCOMPARE(f.counts(), QStringLiteral("3/0/0"));
}

/// The question may stay open for long.
void tst_Downloads::takesItsPlaceBeforeAQuestion()
{
    Fixture f;
    f.server.put("/a.txt", "new");
    f.server.put("/b.txt", "new");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.write(QStringLiteral("b.txt"), "old", wallClock(1, 0));
    f.person.expectOverwrite(QStringLiteral("b.txt"), {OverwriteMode::Ask, false});
    f.get(QStringLiteral("a.txt\rb.txt"));
    QByteArray order;
    for (const auto &event : f.person.events()) {
        if (event.what == What::Overwrite)
            order += "asked ";
        else if (event.what == What::Outcome)
            order += "told ";
    }
    QCOMPARE(order, QByteArray("told asked told "));
    QVERIFY(f.person.verify());
}

void tst_Downloads::outcomesKeepTheirOrder()
{
    Fixture f;
    for (const char *name : {"/a.txt", "/b.txt", "/c.txt"})
        f.server.put(name, name);
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    QVERIFY(QDir(f.here()).mkdir(QStringLiteral("b.txt"))); // cannot be replaced by a file
    f.get(QStringLiteral("a.txt\rb.txt\rc.txt"));
    QStringList files;
    for (const Outcome &outcome : f.person.outcomes())
        files.append(outcome.from);
    QCOMPARE(files, QStringList({QStringLiteral("/a.txt"), QStringLiteral("/b.txt"),
                                 QStringLiteral("/c.txt")}));
    QCOMPARE(f.person.outcomes().at(1).kind, Outcome::Kind::GivenUp);
    QCOMPARE(f.counts(), QStringLiteral("2/1/0"));
}

/// The second is asked about what is there, which may be the first.
void tst_Downloads::namesThatAreOneToSomeSystems()
{
    Fixture f;
    f.server.put("/a.txt", "small");
    f.server.put("/A.TXT", "LARGE");
    QVERIFY(f.start());
    QByteArray beforeSecond;
    f.server.on("RETR", "A.TXT").once().call([&] {
        beforeSecond = f.read(QStringLiteral("a.txt"));
    });
    f.get(QStringLiteral("a.txt\rA.TXT"));
    QCOMPARE(beforeSecond, QByteArray("small"));
}

void tst_Downloads::twoCommandsPerFile()
{
    Fixture f;
    f.server.put("/a.txt", "hello");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.get(QStringLiteral("a.txt"));
    QVERIFY(f.ok);
    QCOMPARE(f.read(QStringLiteral("a.txt")), QByteArray("hello"));
    QCOMPARE(f.work(), QList<QByteArray>({"EPSV", "RETR a.txt", "EPSV"}));
    QCOMPARE(f.status(), QStringList({QStringLiteral("/a.txt > ") + f.here() +
                                      QStringLiteral(" DownLoading･･･")}));
    QCOMPARE(f.person.messageLines(), f.status());
    QCOMPARE(f.counts(), QStringLiteral("1/0/0"));
    QCOMPARE(f.person.outcomes().size(), size_t(1));
    QCOMPARE(f.person.outcomes().at(0).kind, Outcome::Kind::Downloaded);
    QCOMPARE(f.person.outcomes().at(0).from, QStringLiteral("/a.txt"));
    QCOMPARE(f.person.outcomes().at(0).to, f.at(QStringLiteral("a.txt")));
    QVERIFY(f.person.verify());
}

void tst_Downloads::severalFiles()
{
    Fixture f;
    f.server.put("/pub/a.txt", "one");
    f.server.put("/pub/b c.txt", "two");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/pub"));
    f.get(QStringLiteral("a.txt\rb c.txt"), QStringLiteral("pub/"));
    QVERIFY(f.ok);
    QCOMPARE(f.localNames(), QStringList({QStringLiteral("a.txt"), QStringLiteral("b c.txt")}));
    QCOMPARE(f.work(), QList<QByteArray>({"EPSV", "RETR a.txt", "EPSV", "RETR b c.txt", "EPSV"}));
}

void tst_Downloads::keepsTheListingsTime()
{
    Fixture f;
    f.server.put("/a.txt", "hello", stamp());
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.get(QStringLiteral("a.txt"));
    QCOMPARE(QFileInfo(f.at(QStringLiteral("a.txt"))).lastModified(), wallClock(16, 8, 9));
}

void tst_Downloads::keepsMdtmsTimeWhenNotListed()
{
    Fixture f;
    f.server.put("/a.txt", "hello", stamp());
    QVERIFY(f.start());
    f.get(QStringLiteral("a.txt"));
    QVERIFY(f.ok);
    QCOMPARE(QFileInfo(f.at(QStringLiteral("a.txt"))).lastModified(), wallClock(16, 8, 9));
    QCOMPARE(f.work().mid(0, 4),
             QList<QByteArray>({"EPSV", "RETR a.txt", "SIZE a.txt", "MDTM a.txt"}));
}

void tst_Downloads::refinesRowsOfAnOlderList()
{
    Fixture f;
    f.server.options().dialect = venlo::test::ListDialect::UnixDay;
    f.server.put("/a.txt", "hello", QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9), Qt::UTC));
    f.server.on("MLSD").once().reply(500, "not now");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    QCOMPARE(f.cache.dayOnlyUnder(QStringLiteral("/")).size(), size_t(1));
    f.session.Disconnect();
    QVERIFY(f.connectTo(QStringLiteral("web"), f.server.server(), f.server.user(),
                        f.server.password()));
    QVERIFY(f.session.client().listsByMlsd());
    bool ok = true;
    f.operations.ftGetFile(QStringLiteral("/"), QStringLiteral("a.txt"), f.here(), ok);
    QVERIFY(ok);
    QCOMPARE(QFileInfo(f.at(QStringLiteral("a.txt"))).lastModified(), wallClock(16, 8, 9));
}

/// The rows of a folder are read together; of those with a day only the server is asked.
void tst_Downloads::refinesOneRowOfMany()
{
    Fixture f;
    f.server.options().dialect = venlo::test::ListDialect::Unix;
    f.server.options().mlsd = false;
    const QDateTime recent(QDate::currentDate().addDays(-3), QTime(7, 8), Qt::UTC);
    for (const char *name : {"a.txt", "b.txt", "c.txt", "d.txt"})
        f.server.put(QByteArray("/pub/") + name, QByteArray("content of ") + name, recent);
    f.server.put("/pub/old.txt", "of another year", stamp());
    QVERIFY(f.start());
    f.browse(QStringLiteral("/pub"));
    QCOMPARE(f.cache.dayOnlyUnder(QStringLiteral("/pub")).size(), size_t(1));
    (void)f.work();
    f.operations.ftGetFold(f.here(), QStringLiteral("pub"), QStringLiteral("/"), f.ok);
    QVERIFY(f.ok);
    QList<QByteArray> times = f.work();
    times.removeIf([](const QByteArray &command) { return !command.startsWith("MDTM"); });
    QCOMPARE(times, QList<QByteArray>({"MDTM /pub/old.txt"}));
    QCOMPARE(QFileInfo(f.at(QStringLiteral("pub/old.txt"))).lastModified(), wallClock(16, 8, 9));
    for (const char *name : {"a.txt", "b.txt", "c.txt", "d.txt"}) {
        const QFileInfo file(f.at(QStringLiteral("pub/") + QLatin1String(name)));
        QCOMPARE(file.lastModified().toUTC(), recent);
        QCOMPARE(file.size(), qint64(16));
    }
}

void tst_Downloads::makesTheLocalFolder()
{
    Fixture f;
    f.server.put("/a.txt", "hello");
    QVERIFY(f.start());
    f.operations.ftGetFile(QStringLiteral("/"), QStringLiteral("a.txt"),
                           f.at(QStringLiteral("x/y/z/")), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.read(QStringLiteral("x/y/z/a.txt")), QByteArray("hello"));
}

void tst_Downloads::replacesTheOldFileKeepingItsPermissions()
{
    Fixture f;
    f.server.put("/a.txt", "new");
    QVERIFY(f.start());
    f.write(QStringLiteral("a.txt"), "older and longer");
    QVERIFY(QFile::setPermissions(f.at(QStringLiteral("a.txt")),
                                  QFileDevice::ReadOwner | QFileDevice::WriteOwner));
    f.operations.standingAnswer = OverwriteMode::OverwriteAll;
    f.get(QStringLiteral("a.txt"));
    QCOMPARE(f.read(QStringLiteral("a.txt")), QByteArray("new"));
    QVERIFY(!(QFileInfo(f.at(QStringLiteral("a.txt"))).permissions() & QFileDevice::ReadOther));
    QCOMPARE(f.localNames(), QStringList({QStringLiteral("a.txt")}));
}

void tst_Downloads::emptyFile()
{
    Fixture f;
    f.server.put("/empty", "");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.get(QStringLiteral("empty"));
    QVERIFY(f.ok);
    QCOMPARE(f.read(QStringLiteral("empty")), QByteArray(""));
    QCOMPARE(f.work(), QList<QByteArray>({"EPSV", "RETR empty", "EPSV"}));
}

void tst_Downloads::unattendedSaysNothing()
{
    Fixture f;
    f.server.put("/a.txt", "new");
    QVERIFY(f.start());
    f.write(QStringLiteral("a.txt"), "old");
    f.flags.unattendedTransfer = true;
    f.operations.standingAnswer = OverwriteMode::CancelAll; // not asked for, so it does not count
    f.get(QStringLiteral("a.txt"));
    QCOMPARE(f.read(QStringLiteral("a.txt")), QByteArray("new"));
    QCOMPARE(f.status(), QStringList());
    QCOMPARE(f.person.messageLines(), QStringList());
    QVERIFY(f.person.overwriteQuestions().empty());
    QVERIFY(f.person.verify());
}

void tst_Downloads::neverConfirmedWithoutAnOldFile()
{
    Fixture f;
    f.server.put("/a.txt", "hello");
    QVERIFY(f.start());
    f.get(QStringLiteral("a.txt"));
    QVERIFY(f.person.overwriteQuestions().empty());
    QVERIFY(f.person.verify());
}

void tst_Downloads::confirmation_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("overwrite");
    QTest::addColumn<bool>("fetched");
    QTest::addColumn<bool>("ok");
    QTest::newRow("yes") << 0 << true << true << true;
    QTest::newRow("no") << 0 << false << false << true;
    QTest::newRow("all") << 1 << true << true << true;
    QTest::newRow("none that is newer") << 2 << false << false << true;
    QTest::newRow("cancel") << 3 << false << false << false;
}

void tst_Downloads::confirmation()
{
    QFETCH(int, mode);
    QFETCH(bool, overwrite);
    QFETCH(bool, fetched);
    QFETCH(bool, ok);
    Fixture f;
    f.server.put("/a.txt", QByteArray(2000, 'n'), stamp());
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.write(QStringLiteral("a.txt"), "old", wallClock(17, 0));
    f.person.expectOverwrite(QStringLiteral("a.txt"),
                             {static_cast<OverwriteMode>(mode), overwrite});
    f.get(QStringLiteral("a.txt"));
    QCOMPARE(f.ok, ok);
    QCOMPARE(f.read(QStringLiteral("a.txt")), fetched ? QByteArray(2000, 'n') : QByteArray("old"));
    QCOMPARE(static_cast<int>(f.operations.standingAnswer), mode);
    QVERIFY(f.person.verify());
    const auto &asked = f.person.overwriteQuestions().at(0);
    QCOMPARE(asked.existingSize, QStringLiteral("3B"));
    QCOMPARE(asked.existingDate, QStringLiteral("24/05/06 17:00:00"));
    QCOMPARE(asked.newSize, QStringLiteral("2KB"));
    QCOMPARE(asked.newDate, QStringLiteral("24/05/06 16:08:09"));
}

void tst_Downloads::keepNewer_data()
{
    QTest::addColumn<bool>("listed");
    QTest::addColumn<QDateTime>("existing");
    QTest::addColumn<bool>("fetched");
    QTest::newRow("existing newer") << true << wallClock(16, 8, 10) << false;
    QTest::newRow("same time") << true << wallClock(16, 8, 9) << true;
    QTest::newRow("existing older") << true << wallClock(10, 0) << true;
    QTest::newRow("from another century")
        << true << QDateTime(QDate(1999, 1, 1), QTime(0, 0)) << true;
    QTest::newRow("remote time unknown") << false << wallClock(10, 0) << false;
}

void tst_Downloads::keepNewer()
{
    QFETCH(bool, listed);
    QFETCH(QDateTime, existing);
    QFETCH(bool, fetched);
    Fixture f;
    f.server.put("/a.txt", "new", stamp());
    QVERIFY(f.start());
    if (listed)
        f.browse(QStringLiteral("/"));
    f.write(QStringLiteral("a.txt"), "old", existing);
    f.operations.standingAnswer = OverwriteMode::KeepNewer;
    f.get(QStringLiteral("a.txt"));
    QVERIFY(f.ok);
    QCOMPARE(f.read(QStringLiteral("a.txt")), fetched ? QByteArray("new") : QByteArray("old"));
    QCOMPARE(f.counts(), fetched ? QStringLiteral("1/0/0") : QStringLiteral("0/0/1"));
    QCOMPARE(f.person.outcomes().at(0).kind,
             fetched ? Outcome::Kind::Downloaded : Outcome::Kind::Skipped);
    QVERIFY(f.person.verify());
}

void tst_Downloads::cancelAllLeavesTheRest()
{
    Fixture f;
    f.server.put("/a.txt", "new");
    f.server.put("/b.txt", "new");
    QVERIFY(f.start());
    f.write(QStringLiteral("a.txt"), "old");
    f.person.expectOverwrite(QStringLiteral("a.txt"), {OverwriteMode::CancelAll, false});
    f.get(QStringLiteral("a.txt\rb.txt"));
    QVERIFY(!f.ok);
    QCOMPARE(f.server.count("RETR"), 0);
    QCOMPARE(f.localNames(), QStringList({QStringLiteral("a.txt")}));
    QVERIFY(f.person.verify());
}

void tst_Downloads::refusedFileIsTriedFiveTimes()
{
    Fixture f;
    f.server.put("/pub/a.txt", "one");
    f.server.put("/pub/b.txt", "two");
    f.server.on("RETR", "a.txt").reply(550, "No such luck");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/pub"));
    f.get(QStringLiteral("a.txt\rb.txt"), QStringLiteral("/pub"));
    QVERIFY(f.ok);
    QCOMPARE(f.server.count("RETR", "a.txt"), 5);
    QCOMPARE(f.reconnects(), 5); // the reconnect step after each
    QCOMPARE(f.server.count("RETR", "b.txt"), 1);
    QCOMPARE(f.errorLines(), QStringList({QStringLiteral("FtpGetFile Err:/pub/a.txt > ") +
                                          f.here() + QStringLiteral(" DownLoad")}));
    QCOMPARE(f.localNames(), QStringList({QStringLiteral("b.txt")}));
    QCOMPARE(f.counts(), QStringLiteral("1/1/0"));
    const auto given = f.person.outcomes(Outcome::Kind::GivenUp);
    QCOMPARE(given.size(), size_t(1));
    QVERIFY2(given.at(0).why.contains(QStringLiteral("No such luck")), qPrintable(given.at(0).why));
    QVERIFY(f.person.verify());
}

void tst_Downloads::failureLeavesTheOldFile_data()
{
    QTest::addColumn<QString>("fault");
    for (const char *fault : {"550", "451", "426 after half", "dropped after half",
                              "reset after half", "cut with 226", "no data port", "425"})
        QTest::newRow(fault) << QString::fromLatin1(fault);
}

void tst_Downloads::failureLeavesTheOldFile()
{
    QFETCH(QString, fault);
    Fixture f;
    f.server.put("/a.txt", QByteArray(100'000, 'n'), stamp());
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    if (fault == QLatin1String("550"))
        f.server.on("RETR").reply(550, "no");
    else if (fault == QLatin1String("451"))
        f.server.on("RETR").reply(451, "later");
    else if (fault == QLatin1String("425"))
        f.server.on("RETR").reply(425, "cannot open");
    else if (fault == QLatin1String("426 after half"))
        f.server.on("RETR").truncateAfter(50'000).completion("426 broken");
    else if (fault == QLatin1String("dropped after half"))
        f.server.on("RETR").dropAfterBytes(50'000);
    else if (fault == QLatin1String("reset after half"))
        f.server.on("RETR").resetAfterBytes(50'000);
    else if (fault == QLatin1String("cut with 226"))
        f.server.on("RETR").truncateAfter(50'000);
    else
        f.server.on("EPSV").closedPort();
    f.write(QStringLiteral("a.txt"), "old", wallClock(1, 2, 3));
    f.flags.unattendedTransfer = true;
    f.get(QStringLiteral("a.txt"));
    QVERIFY(f.ok);
    QCOMPARE(f.session.state(), Session::Connected);
    QCOMPARE(f.read(QStringLiteral("a.txt")), QByteArray("old"));
    QCOMPARE(QFileInfo(f.at(QStringLiteral("a.txt"))).lastModified(), wallClock(1, 2, 3));
    QCOMPARE(f.localNames(), QStringList({QStringLiteral("a.txt")}));
    QCOMPARE(f.errorLines(), QStringList({QStringLiteral("FtpGetFile Err:/a.txt > ") + f.here() +
                                          QStringLiteral(" DownLoad")}));
    QCOMPARE(f.counts(), QStringLiteral("0/1/0"));
    QVERIFY(f.person.verify());
}

void tst_Downloads::sizeIsChecked_data()
{
    QTest::addColumn<QByteArray>("sent");
    QTest::addColumn<int>("sizeReply"); // -1: SIZE is not known here
    QTest::addColumn<bool>("fetched");
    QTest::newRow("as listed") << QByteArray("12345") << -1 << true;
    QTest::newRow("grew, SIZE agrees") << QByteArray("1234567") << 7 << true;
    QTest::newRow("shrank, SIZE agrees") << QByteArray("123") << 3 << true;
    QTest::newRow("SIZE says more") << QByteArray("123") << 5 << false;
    QTest::newRow("less than listed, no SIZE") << QByteArray("123") << -1 << false;
    QTest::newRow("more than listed, no SIZE") << QByteArray("1234567") << -1 << true;
}

void tst_Downloads::sizeIsChecked()
{
    QFETCH(QByteArray, sent);
    QFETCH(int, sizeReply);
    QFETCH(bool, fetched);
    Fixture f;
    f.server.put("/a.txt", "12345");
    f.server.on("RETR").data(sent);
    if (sizeReply < 0)
        f.server.on("SIZE").reply(500, "unknown");
    else
        f.server.on("SIZE").reply(213, QByteArray::number(sizeReply));
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.get(QStringLiteral("a.txt"));
    QCOMPARE(f.read(QStringLiteral("a.txt")), fetched ? sent : QByteArray("<none>"));
    QCOMPARE(f.counts(), fetched ? QStringLiteral("1/0/0") : QStringLiteral("0/1/0"));
    QCOMPARE(f.server.count("RETR"), fetched ? 1 : 5);
}

void tst_Downloads::recoversAfterALoss()
{
    Fixture f;
    f.server.put("/pub/a.txt", QByteArray(10'000, 'n'));
    f.server.on("RETR").first(2).dropAfterBytes(4'000);
    QVERIFY(f.start());
    f.browse(QStringLiteral("/pub"));
    f.get(QStringLiteral("a.txt"), QStringLiteral("/pub"));
    QVERIFY(f.ok);
    QCOMPARE(f.read(QStringLiteral("a.txt")), QByteArray(10'000, 'n'));
    // A new login stands in its home: the directory has to be entered again.
    QCOMPARE(f.server.count("CWD", "/pub"), 2);
    QCOMPARE(f.reconnects(), 2);
    QCOMPARE(f.errorLines(), QStringList());
    QCOMPARE(f.localNames(), QStringList({QStringLiteral("a.txt")}));
}

void tst_Downloads::lostForGoodEndsTheOperation()
{
    Fixture f;
    f.server.put("/a.txt", "one");
    f.server.put("/b.txt", "two");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.server.on("RETR").dropBeforeReply();
    f.server.on("CONNECT").reply(421, "closed for today");
    f.person.expectMessage(f.server.server() +
                           QStringLiteral(" へ接続が切断されました　再度起動後実行して下さい"));
    f.get(QStringLiteral("a.txt\rb.txt"));
    QVERIFY(!f.ok);
    QCOMPARE(f.server.count("RETR"), 1);
    QCOMPARE(f.localNames(), QStringList());
    QCOMPARE(f.errorLines().size(), 5);
    QVERIFY(f.session.state() != Session::Connected);
    QVERIFY(f.person.verify());
}

void tst_Downloads::directoryThatCannotBeEntered()
{
    Fixture f;
    QVERIFY(f.start());
    f.get(QStringLiteral("a.txt"), QStringLiteral("/missing"));
    QVERIFY(!f.ok);
    QCOMPARE(f.server.count("CWD"), 3);
    QCOMPARE(f.server.count("RETR"), 0);
    QCOMPARE(f.errorLines(), QStringList({QStringLiteral("sjCrntDir Err: /missing")}));
}

void tst_Downloads::localTrouble_data()
{
    QTest::addColumn<QString>("trouble");
    for (const char *trouble :
         {"a file is where the folder should be", "a folder is where the file should be",
          "the folder takes no files", "a write fails in the middle"})
        QTest::newRow(trouble) << QString::fromLatin1(trouble);
}

void tst_Downloads::localTrouble()
{
    QFETCH(QString, trouble);
    Fixture f;
    f.server.put("/a.txt", QByteArray(2'000'000, 'n'));
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    QString folder = f.here();
    std::optional<FileLimit> limit;
    if (trouble.startsWith(QLatin1String("a file"))) {
        f.write(QStringLiteral("taken"), "x");
        folder = f.at(QStringLiteral("taken"));
    } else if (trouble.startsWith(QLatin1String("a folder"))) {
        QVERIFY(QDir(f.here()).mkdir(QStringLiteral("a.txt")));
    } else if (trouble.startsWith(QLatin1String("the folder"))) {
        folder = QStringLiteral("/proc/self/net"); // refuses even the super-user
    } else {
        limit.emplace(1'000'000);
    }
    const QStringList before = f.localNames();
    f.flags.unattendedTransfer = true;
    f.operations.ftGetFile(QStringLiteral("/"), QStringLiteral("a.txt"), folder, f.ok);
    QVERIFY(f.ok);
    QVERIFY(f.server.count("RETR") <= 1);
    QCOMPARE(f.reconnects(), 0);
    QCOMPARE(f.errorLines(), QStringList({QStringLiteral("FtpGetFile Err:/a.txt > ") + folder +
                                          QStringLiteral(" DownLoad")}));
    QCOMPARE(f.counts(), QStringLiteral("0/1/0"));
    QVERIFY(!f.person.outcomes().at(0).why.isEmpty());
    QCOMPARE(f.localNames(), before);
}

void tst_Downloads::namesStayInTheFolder_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("parent") << QStringLiteral("..");
    QTest::newRow("itself") << QStringLiteral(".");
    QTest::newRow("path upwards") << QStringLiteral("../evil.txt");
    QTest::newRow("absolute path") << QStringLiteral("/tmp/venlo-evil.txt");
    QTest::newRow("path below") << QStringLiteral("x/y.txt");
    QTest::newRow("longer than a name can be") << QString(300, QLatin1Char('x'));
}

void tst_Downloads::namesStayInTheFolder()
{
    QFETCH(QString, name);
    Fixture f;
    f.server.on("RETR").data("evil");
    QVERIFY(f.start());
    f.flags.unattendedTransfer = true;
    const QString inner = f.at(QStringLiteral("inner"));
    f.operations.ftGetFile(QStringLiteral("/"), name, inner, f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.server.count("RETR"), 0);
    QCOMPARE(f.localNames(), QStringList({QStringLiteral("inner")}));
    QVERIFY(QDir(inner).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
    QCOMPARE(f.counts(), QStringLiteral("0/1/0"));
}

void tst_Downloads::cancelled()
{
    Fixture f;
    f.server.put("/a.txt", QByteArray(400'000, 'n'));
    f.server.put("/b.txt", "two");
    f.server.on("RETR").slow(10'000, 20);
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.server.on("RETR", "a.txt").once().stallAfterBytes(50'000).call([&f] {
        QMetaObject::invokeMethod(QCoreApplication::instance(), [&f] { f.person.cancelNow(); });
    });
    f.get(QStringLiteral("a.txt\rb.txt"));
    QVERIFY(!f.ok);
    QCOMPARE(f.server.count("RETR"), 1);
    QCOMPARE(f.reconnects(), 0);
    QCOMPARE(f.session.state(), Session::Connected);
    QCOMPARE(f.localNames(), QStringList());
    QCOMPARE(f.errorLines(), QStringList());
}

void tst_Downloads::notConnected()
{
    Fixture f;
    bool ok = true;
    f.operations.ftGetFile(QStringLiteral("/"), QStringLiteral("a"), f.at(QStringLiteral("x")), ok);
    QVERIFY(ok);
    f.operations.ftGetFold(f.here(), QStringLiteral("x"), QStringLiteral("/"), ok);
    QVERIFY(ok);
    QCOMPARE(f.localNames(), QStringList());
}

void tst_Downloads::leftoversAreSwept()
{
    Fixture f;
    f.server.put("/a.txt", "hello");
    QVERIFY(f.start());
    f.write(QStringLiteral(".venlo-0123abcd.part"), "half",
            QDateTime::currentDateTime().addDays(-1));
    f.write(QStringLiteral(".venlo-mine.part"), "kept", QDateTime::currentDateTime().addDays(-1));
    f.get(QStringLiteral("a.txt"));
    QCOMPARE(f.localNames(),
             QStringList({QStringLiteral(".venlo-mine.part"), QStringLiteral("a.txt")}));
}

void tst_Downloads::folderTree()
{
    Fixture f;
    const std::vector<venlo::test::TreeRow> tree{{"a.txt", "a", stamp()},
                                                 {"sub/b.txt", "bb", stamp()},
                                                 {"sub/deep/c.txt", "ccc", stamp()},
                                                 {"empty/"}};
    makeTree(f.server.tree(), "/pub", tree);
    QVERIFY(f.start());
    f.operations.ftGetFold(f.here(), QStringLiteral("pub"), QStringLiteral("/"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(difference(venlo::test::snapshot(f.server.tree(), "/pub"),
                        venlo::test::snapshot(f.at(QStringLiteral("pub"))),
                        venlo::test::Times::Seconds),
             QStringList());
    QVERIFY(f.status().contains(QStringLiteral("/pub/sub > ") + f.at(QStringLiteral("pub/sub")) +
                                QStringLiteral(" Down Loading････")));
    QVERIFY(f.person.verify());
}

void tst_Downloads::folderFilesBeforeSubFolders()
{
    Fixture f;
    for (const char *path : {"/pub/a/x", "/pub/a/b/y", "/pub/c/z", "/pub/last", "/pub/first"})
        f.server.put(path, "1");
    QVERIFY(f.start());
    f.operations.ftGetFold(f.here() + QLatin1Char('/'), QStringLiteral("pub"), QStringLiteral("/"),
                           f.ok);
    QList<QByteArray> fetched;
    for (const QByteArray &command : f.work()) {
        if (command.startsWith("RETR "))
            fetched.append(command.mid(5));
    }
    QCOMPARE(fetched, QList<QByteArray>({"first", "last", "x", "y", "z"}));
}

void tst_Downloads::folderStopsAtTheFirstFailure()
{
    Fixture f;
    f.server.put("/pub/a/x", "1");
    f.server.put("/pub/b/y", "1");
    QVERIFY(f.start());
    f.server.on("CWD", "/pub/a").reply(550, "closed");
    f.operations.ftGetFold(f.here(), QStringLiteral("pub"), QStringLiteral("/"), f.ok);
    QVERIFY(!f.ok);
    QCOMPARE(f.server.count("RETR"), 0);
    QVERIFY(f.errorLines().contains(QStringLiteral("sjCrntDir Err: /pub/a")));
}

void tst_Downloads::folderWithoutListingIsGivenUp()
{
    Fixture f;
    f.server.put("/pub/a/x", "1");
    f.server.put("/pub/b/y", "1");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/pub"));
    f.server.on("MLSD").once().reply(550, "not today");
    f.operations.ftGetFold(f.here(), QStringLiteral("pub"), QStringLiteral("/"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.read(QStringLiteral("pub/b/y")), QByteArray("1"));
    QCOMPARE(f.operations.counts().givenUp, 1);
    const QStringList lines = f.errorLines();
    QCOMPARE(lines.size(), 2);
    QCOMPARE(lines.at(0), QStringLiteral("FtpFindFirstFile"));
    QVERIFY2(lines.at(1).startsWith(QStringLiteral("ftGetFold Err:/pub/a : ")),
             qPrintable(lines.at(1)));
    QVERIFY(lines.at(1).endsWith(QStringLiteral(" > ") + f.at(QStringLiteral("pub/a"))));
}

void tst_Downloads::folderOfAFileName()
{
    Fixture f;
    f.server.put("/pub/sub/x", "1");
    f.server.put("/pub/z", "1");
    QVERIFY(f.start());
    f.write(QStringLiteral("pub/sub"), "a file");
    f.operations.ftGetFold(f.here(), QStringLiteral("pub"), QStringLiteral("/"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.read(QStringLiteral("pub/sub")), QByteArray("a file"));
    QCOMPARE(f.read(QStringLiteral("pub/z")), QByteArray("1"));
    QCOMPARE(f.operations.counts().givenUp, 1);
}

void tst_Downloads::progress()
{
    Fixture f;
    f.server.put("/a.txt", QByteArray(500'000, 'n'));
    f.server.on("RETR").slow(20'000, 5);
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.get(QStringLiteral("a.txt"));
    const auto &seen = f.person.progresses();
    QVERIFY(!seen.empty());
    QVERIFY2(seen.size() < 20, qPrintable(QString::number(seen.size())));
    qint64 last = 0;
    for (const auto &step : seen) {
        QCOMPARE(step.name, QStringLiteral("a.txt"));
        QCOMPARE(step.total, 500'000);
        QVERIFY(step.done >= last);
        last = step.done;
    }
    QCOMPARE(last, 500'000);
}

QTEST_GUILESS_MAIN(tst_Downloads)
#include "tst_Downloads.moc"
