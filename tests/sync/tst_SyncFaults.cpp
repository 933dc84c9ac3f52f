#include "platform/Wine.h"
#include "support/ScriptedServer.h"
#include "sync/Execution.h"
#include "sync/SyncWorld.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>

using namespace venlo;
using namespace venlo::test;

namespace
{
const QString pattern = QStringLiteral("p");

using Fault = void (*)(ScriptedServer &);
} // namespace

Q_DECLARE_METATYPE(Fault)

/// Whatever the server does, nothing is deleted that the other side may still have, and a run
/// without the fault then makes both sides equal.
class tst_SyncFaults : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void faults_data();
    void faults();
    void faultsWhileWorking_data();
    void faultsWhileWorking();
    void aListingCutBelowAWholeFolder_data();
    void aListingCutBelowAWholeFolder();
    void aServerThatClosesAfterEachCommand_data();
    void aServerThatClosesAfterEachCommand();
    void aListingThatEndsEarlyAsIfWhole_data();
    void aListingThatEndsEarlyAsIfWhole();
    void anUploadThatEndsEarlyAsIfWhole();
    void aLastLineWithoutItsEnd();
    void aListingThatIsReset();
    void aRefusedDirectoryIsLeftBehind();
    void linkInPlaceOfAFolder();
    void readOnlyLocalFileIsDeleted();
    void vanishedLocalFileIsDone();
    void fileThatBecameAFolderStays();
    void namesWithATabAreGivenUp();
    void cancelStopsAfterTheFile();

private:
    [[nodiscard]] bool localHas(const char *path) const;
    void start();

    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<SyncWorld> m_world;
};

void tst_SyncFaults::init()
{
    m_server = std::make_unique<ScriptedServer>();
    m_world = std::make_unique<SyncWorld>();
}

bool tst_SyncFaults::localHas(const char *path) const
{
    return QFile::exists(m_world->local() + QLatin1Char('/') + QString::fromUtf8(path));
}

void tst_SyncFaults::start()
{
    QVERIFY(m_server->start());
    m_world->registerSite(m_server->server(), m_server->user(), m_server->password());
    m_world->registerPattern(pattern, QStringLiteral("/pub"));
}

void tst_SyncFaults::faults_data()
{
    QTest::addColumn<bool>("upwards");
    QTest::addColumn<Fault>("fault");
    struct Named {
        const char *name;
        Fault fault;
    };
    static const Named named[] = {
        {"the second listing is cut off",
         [](ScriptedServer &server) {
             server.on("MLSD").nth(2).truncateAfter(60).completion("426 cut\r\n");
         }},
        {"the second listing ends with the connection",
         [](ScriptedServer &server) { server.on("MLSD").nth(2).dropAfterBytes(60); }},
        {"the second listing is reset",
         [](ScriptedServer &server) { server.on("MLSD").nth(2).resetAfterBytes(60); }},
        {"the second listing is refused",
         [](ScriptedServer &server) { server.on("MLSD").nth(2).reply(450, "busy"); }},
        {"the second listing is empty and unfinished",
         [](ScriptedServer &server) {
             server.on("MLSD").nth(2).truncateAfter(0).withoutCompletion();
         }},
        {"every listing is refused",
         [](ScriptedServer &server) { server.on("MLSD").reply(550, "no"); }},
        {"the root is refused",
         [](ScriptedServer &server) { server.on("CWD", "/pub").reply(550, "no"); }},
        {"a folder is refused",
         [](ScriptedServer &server) { server.on("CWD", "/pub/both").reply(550, "no"); }},
        {"no data connection",
         [](ScriptedServer &server) {
             server.on("EPSV").reply(500, "no");
             server.on("PASV").reply(500, "no");
             server.on("EPRT").reply(500, "no");
             server.on("PORT").reply(500, "no");
         }},
        {"421 after the login",
         [](ScriptedServer &server) { server.on("CWD").nth(2).reply(421, "bye").thenClose(); }},
        {"the listing says it is truncated",
         [](ScriptedServer &server) {
             server.on("MLSD").nth(2).completion("226 Output truncated to 2 matches\r\n");
         }},
    };
    for (const Named &one : named) {
        for (const bool upwards : {true, false}) {
            QTest::newRow(qPrintable(QString::fromLatin1(one.name) +
                                     (upwards ? QStringLiteral(", up") : QStringLiteral(", down"))))
                << upwards << one.fault;
        }
    }
}

void tst_SyncFaults::faults()
{
    QFETCH(bool, upwards);
    QFETCH(Fault, fault);
    const std::vector<TreeRow> shared{{"both/1.txt", "same one"},
                                      {"both/2.txt", "same two"},
                                      {"both/in/3.txt", "same three"},
                                      {"top.txt", "same top"}};
    QVERIFY(makeTree(m_world->local(), shared));
    makeTree(m_server->tree(), "/pub", shared);
    start();
    fault(*m_server);
    const int status = m_world->batch().RunSyncPattern(pattern, upwards);
    QVERIFY(status == 0 || status == 1);
    for (const TreeRow &row : shared) {
        QVERIFY2(localHas(row.path.constData()), row.path.constData());
        QVERIFY2(m_server->exists("/pub/" + row.path), row.path.constData());
    }
    for (const Outcome::Kind kind :
         {Outcome::Kind::DeletedLocal, Outcome::Kind::DeletedRemote,
          Outcome::Kind::FolderRemovedLocal, Outcome::Kind::FolderRemovedRemote})
        QVERIFY(m_world->person.outcomes(kind).empty());

    m_server->script().clear();
    m_world->session.CloseInternet();
    QCOMPARE(m_world->batch().RunSyncPattern(pattern, upwards), 0);
    QCOMPARE(difference(snapshot(m_world->local()), snapshot(m_server->tree(), "/pub")),
             QStringList());
}

void tst_SyncFaults::faultsWhileWorking_data()
{
    QTest::addColumn<bool>("upwards");
    QTest::addColumn<Fault>("fault");
    QTest::newRow("an upload is cut off")
        << true
        << Fault([](ScriptedServer &server) { server.on("STOR").first(2).dropAfterBytes(100); });
    QTest::newRow("an upload is refused")
        << true
        << Fault([](ScriptedServer &server) { server.on("STOR", "2.txt").reply(553, "no"); });
    QTest::newRow("an upload ends with a complaint") << true << Fault([](ScriptedServer &server) {
        server.on("STOR").nth(2).truncateAfter(100).completion("426 cut\r\n");
    });
    QTest::newRow("a download is cut off")
        << false
        << Fault([](ScriptedServer &server) { server.on("RETR").first(2).dropAfterBytes(100); });
    QTest::newRow("a download is reset")
        << false
        << Fault([](ScriptedServer &server) { server.on("RETR").nth(2).resetAfterBytes(100); });
    QTest::newRow("a download is refused")
        << false
        << Fault([](ScriptedServer &server) { server.on("RETR").nth(2).reply(550, "no"); });
    QTest::newRow("a deletion loses the connection")
        << true
        << Fault([](ScriptedServer &server) { server.on("DELE").nth(1).dropBeforeReply(); });
    QTest::newRow("deletions are refused")
        << true << Fault([](ScriptedServer &server) { server.on("DELE").reply(550, "no"); });
    QTest::newRow("a folder's removal is refused")
        << true << Fault([](ScriptedServer &server) { server.on("RMD").reply(550, "no"); });
    QTest::newRow("a folder's removal loses the connection")
        << true << Fault([](ScriptedServer &server) { server.on("RMD").nth(1).dropBeforeReply(); });
}

void tst_SyncFaults::faultsWhileWorking()
{
    QFETCH(bool, upwards);
    QFETCH(Fault, fault);
    const std::vector<TreeRow> master{{"1.txt", QByteArray(5000, '1')},
                                      {"2.txt", QByteArray(5000, '2')},
                                      {"in/3.txt", QByteArray(5000, '3')}};
    const std::vector<TreeRow> other{{"gone.txt", "nobody needs it"}, {"old/f", "nobody either"}};
    QVERIFY(makeTree(m_world->local(), upwards ? master : other));
    makeTree(m_server->tree(), "/pub", upwards ? other : master);
    start();
    fault(*m_server);
    const int status = m_world->batch().RunSyncPattern(pattern, upwards);
    QVERIFY(status == 0 || status == 1);
    for (const TreeRow &row : master) {
        const QByteArray kept = upwards ? snapshot(m_world->local()).at(row.path).bytes
                                        : m_server->file("/pub/" + row.path);
        QCOMPARE(kept, row.bytes);
    }
    const auto equal = [this] {
        return difference(snapshot(m_world->local()), snapshot(m_server->tree(), "/pub"));
    };
    QVERIFY2(status == 1 || equal().isEmpty(), "a run that says it is done is");
    m_server->script().clear();
    m_world->session.CloseInternet();
    QCOMPARE(m_world->batch().RunSyncPattern(pattern, upwards), 0);
    QCOMPARE(equal(), QStringList());
}

void tst_SyncFaults::aListingCutBelowAWholeFolder_data()
{
    QTest::addColumn<bool>("upwards");
    QTest::newRow("up") << true;
    QTest::newRow("down") << false;
}

void tst_SyncFaults::aListingCutBelowAWholeFolder()
{
    QFETCH(bool, upwards);
    m_server->makeFolder("/pub");
    const std::vector<TreeRow> rows{{"old/in/1", "first one"}, {"old/in/2", "second"}};
    if (upwards)
        makeTree(m_server->tree(), "/pub", rows);
    else
        QVERIFY(makeTree(m_world->local(), rows));
    start();
    // Up the third listing is the one of /pub/old/in; down there is only the one of /pub.
    m_server->on("MLSD").nth(upwards ? 3 : 1).truncateAfter(30).completion("426 cut\r\n");
    QCOMPARE(m_world->batch().RunSyncPattern(pattern, upwards), 1);
    for (const TreeRow &row : rows)
        QVERIFY2(upwards ? m_server->exists("/pub/" + row.path) : localHas(row.path.constData()),
                 row.path.constData());
    for (const Outcome &outcome : m_world->person.outcomes())
        QVERIFY2(outcome.kind == Outcome::Kind::GivenUp || outcome.kind == Outcome::Kind::Skipped,
                 qPrintable(outcome.from));
}

void tst_SyncFaults::aServerThatClosesAfterEachCommand_data()
{
    QTest::addColumn<bool>("upwards");
    QTest::addColumn<QByteArray>("verb");
    for (const char *verb : {"CWD", "MLSD", "EPSV", "STOR", "RETR", "TYPE"}) {
        for (const bool upwards : {true, false})
            QTest::newRow(qPrintable(QString::fromLatin1(verb) +
                                     (upwards ? QStringLiteral(", up") : QStringLiteral(", down"))))
                << upwards << QByteArray(verb);
    }
}

void tst_SyncFaults::aServerThatClosesAfterEachCommand()
{
    QFETCH(bool, upwards);
    QFETCH(QByteArray, verb);
    QVERIFY(makeTree(m_world->local(), {{"both.txt", "the same"}, {"mine.txt", "my own one"}}));
    makeTree(m_server->tree(), "/pub", {{"both.txt", "the same"}, {"theirs.txt", "their own"}});
    start();
    m_server->on(verb).butDoIt().thenClose();
    QElapsedTimer time;
    time.start();
    const int status = m_world->batch().RunSyncPattern(pattern, upwards);
    QVERIFY2(status == 0 || status == 1, qPrintable(QString::number(status)));
    QVERIFY2(time.elapsed() < 60'000, "it ends in time");
    QVERIFY(localHas("both.txt") && m_server->exists("/pub/both.txt"));
    QVERIFY(upwards ? localHas("mine.txt") : m_server->exists("/pub/theirs.txt"));
}

void tst_SyncFaults::aListingThatEndsEarlyAsIfWhole_data()
{
    QTest::addColumn<int>("lines");
    QTest::newRow("nothing came") << 0;
    QTest::newRow("one line came") << 1;
}

/// Closed between two lines, with 226, nothing tells it from a whole one. Only a second listing
/// shows that what is to be deleted here is there after all.
void tst_SyncFaults::aListingThatEndsEarlyAsIfWhole()
{
    QFETCH(int, lines);
    const std::vector<TreeRow> shared{
        {"a.txt", "first one"}, {"b.txt", "second"}, {"in/c.txt", "third"}};
    QVERIFY(makeTree(m_world->local(), shared));
    makeTree(m_server->tree(), "/pub", shared);
    start();
    QByteArray cut;
    if (lines > 0)
        cut = "type=file;size=9;modify=20240506070809; a.txt\r\n";
    m_server->on("MLSD").once().data(cut);
    QCOMPARE(m_world->batch().RunSyncPattern(pattern, false), 1);
    for (const TreeRow &row : shared)
        QVERIFY2(localHas(row.path.constData()), row.path.constData());
    QVERIFY(!m_world->person.outcomes(Outcome::Kind::GivenUp).empty());
    m_world->session.CloseInternet();
    QCOMPARE(m_world->batch().RunSyncPattern(pattern, false), 0);
    QCOMPARE(difference(snapshot(m_world->local()), snapshot(m_server->tree(), "/pub")),
             QStringList());
}

void tst_SyncFaults::anUploadThatEndsEarlyAsIfWhole()
{
    m_server->makeFolder("/pub");
    QVERIFY(makeTree(m_world->local(), {{"a.txt", QByteArray(5000, 'a')}}));
    start();
    m_server->on("STOR").once().truncateAfter(100);
    QCOMPARE(m_world->batch().RunSyncPattern(pattern, true), 0);
    QCOMPARE(m_server->file("/pub/a.txt"), QByteArray(5000, 'a'));
    QCOMPARE(m_server->count("STOR"), 2);
}

/// The name in it may be cut too, and then the file of the whole name would seem to be gone.
void tst_SyncFaults::aLastLineWithoutItsEnd()
{
    const std::vector<TreeRow> shared{{"a.txt", "first one"}, {"b.txt", "second"}};
    QVERIFY(makeTree(m_world->local(), shared));
    makeTree(m_server->tree(), "/pub", shared);
    start();
    m_server->setRawListing("/pub", "type=file;size=9;modify=20240506070809; a.txt\r\n"
                                    "type=file;size=6;modify=20240506070809; b.t");
    QCOMPARE(m_world->batch().RunSyncPattern(pattern, false), 1);
    QVERIFY(localHas("b.txt"));
    QVERIFY(m_world->errorLogText().contains("InternetFindNextFile"));
}

/// To whoever reads, a reset looks like the end.
void tst_SyncFaults::aListingThatIsReset()
{
    if (underWine())
        QSKIP("Wine tells the first reader alone that a connection was reset");
    makeTree(m_server->tree(), "/pub", {{"a.txt", "first one"}, {"b.txt", "second"}});
    start();
    QVERIFY(m_world->connectToSite());
    FtpClient &client = m_world->session.client();
    QVERIFY(client.changeDirectory("/pub"));
    const QByteArray line = "type=file;size=9;modify=20240506070809; a.txt\r\n";
    m_server->on("MLSD").data(line + line).resetAfterBytes(line.size());
    const auto listing = client.list();
    QVERIFY(!listing || !listing.value().whole);
    m_server->script().clear();
    const auto again = client.list();
    QVERIFY(again && again.value().whole);
    QCOMPARE(again.value().entries.size(), size_t(2));
}

/// A server that said no may have gone there all the same.
void tst_SyncFaults::aRefusedDirectoryIsLeftBehind()
{
    m_server->makeFolder("/pub");
    start();
    QVERIFY(m_world->connectToSite());
    FtpClient &client = m_world->session.client();
    QVERIFY(client.changeDirectory("/pub"));
    QVERIFY(client.changeDirectory("/pub"));
    QCOMPARE(m_server->count("CWD", "/pub"), 1);
    QVERIFY(!client.changeDirectory("/none"));
    QVERIFY(client.changeDirectory("/pub"));
    QCOMPARE(m_server->count("CWD", "/pub"), 2);
}

void tst_SyncFaults::linkInPlaceOfAFolder()
{
#ifdef Q_OS_WIN
    QSKIP("QFile::link makes a shortcut here, which is a file");
#endif
    m_server->makeFolder("/pub/both");
    QVERIFY(makeTree(m_world->local(), {{"both/gone.txt", "mine"}, {"old/f", "mine"}}));
    QTemporaryDir elsewhere;
    QVERIFY(makeTree(elsewhere.path(), {{"gone.txt", "precious"}, {"f", "precious"}}));
    start();
    QVERIFY(m_world->connectToSite());
    SyncReview review(m_world->compare(true, QStringLiteral("/pub")));
    review.load(m_world->database);
    QCOMPARE(review.pendingCount(), 2);
    for (const char *name : {"both", "old"}) {
        const QString path = m_world->local() + QLatin1Char('/') + QString::fromLatin1(name);
        QVERIFY(QDir(path).removeRecursively());
        QVERIFY(QFile::link(elsewhere.path(), path));
    }
    Execution execution(m_world->worker, m_world->person, m_world->flags);
    QCOMPARE(execution.run(review, true), 1);
    QCOMPARE(review.counts().givenUp, 2);
    QVERIFY(QFile::exists(elsewhere.filePath(QStringLiteral("gone.txt"))));
    QVERIFY(QFile::exists(elsewhere.filePath(QStringLiteral("f"))));
}

void tst_SyncFaults::readOnlyLocalFileIsDeleted()
{
    m_server->makeFolder("/pub");
    QVERIFY(makeTree(m_world->local(), {{"gone.txt", "mine"}}));
    QFile::setPermissions(m_world->local() + QStringLiteral("/gone.txt"), QFile::ReadOwner);
    start();
    QCOMPARE(m_world->batch().RunSyncPattern(pattern, false), 0);
    QVERIFY(!localHas("gone.txt"));
    QCOMPARE(m_world->person.outcomes(Outcome::Kind::DeletedLocal).size(), size_t(1));
}

void tst_SyncFaults::vanishedLocalFileIsDone()
{
    m_server->makeFolder("/pub");
    QVERIFY(makeTree(m_world->local(), {{"gone.txt", "mine"}, {"gone/f", "mine"}}));
    start();
    QVERIFY(m_world->connectToSite());
    SyncReview review(m_world->compare(true, QStringLiteral("/pub")));
    review.load(m_world->database);
    QVERIFY(QFile::remove(m_world->local() + QStringLiteral("/gone.txt")));
    QVERIFY(QDir(m_world->local() + QStringLiteral("/gone")).removeRecursively());
    Execution execution(m_world->worker, m_world->person, m_world->flags);
    QCOMPARE(execution.run(review, true), 1);
    QCOMPARE(review.counts().done, 2);
}

void tst_SyncFaults::fileThatBecameAFolderStays()
{
    m_server->makeFolder("/pub");
    QVERIFY(makeTree(m_world->local(), {{"gone", "mine"}}));
    start();
    QVERIFY(m_world->connectToSite());
    SyncReview review(m_world->compare(true, QStringLiteral("/pub")));
    review.load(m_world->database);
    QVERIFY(QFile::remove(m_world->local() + QStringLiteral("/gone")));
    QVERIFY(makeTree(m_world->local(), {{"gone/precious", "mine"}}));
    Execution execution(m_world->worker, m_world->person, m_world->flags);
    QCOMPARE(execution.run(review, true), 1);
    QCOMPARE(review.counts().givenUp, 1);
    QVERIFY(localHas("gone/precious"));
}

void tst_SyncFaults::namesWithATabAreGivenUp()
{
#ifdef Q_OS_WIN
    QSKIP("no name holds a tab here");
#endif
    m_server->makeFolder("/pub");
    QVERIFY(makeTree(m_world->local(), {{"a\tb", "tab"}, {"plain", "plain"}}));
    start();
    QCOMPARE(m_world->batch().RunSyncPattern(pattern, true), 1);
    QVERIFY(m_server->exists("/pub/plain"));
    QCOMPARE(m_server->tree().list("/pub").size(), size_t(1));
}

void tst_SyncFaults::cancelStopsAfterTheFile()
{
    m_server->makeFolder("/pub");
    QVERIFY(makeTree(m_world->local(),
                     {{"1.txt", "first one"}, {"2.txt", "second"}, {"3.txt", "third"}}));
    start();
    m_server->on("STOR", "2.txt").call([this] { m_world->person.cancelNow(); });
    QCOMPARE(m_world->batch().RunSyncPattern(pattern, true), 1);
    QVERIFY(m_server->exists("/pub/1.txt"));
    QVERIFY(!m_server->exists("/pub/3.txt"));
    m_world->person.resetCancel();
    m_server->script().clear();
    m_world->session.CloseInternet();
    QCOMPARE(m_world->batch().RunSyncPattern(pattern, true), 0);
    QCOMPARE(difference(snapshot(m_world->local()), snapshot(m_server->tree(), "/pub")),
             QStringList());
}

QTEST_GUILESS_MAIN(tst_SyncFaults)
#include "tst_SyncFaults.moc"
