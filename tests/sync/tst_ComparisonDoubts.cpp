#include "support/ScriptedServer.h"
#include "sync/Comparison.h"
#include "sync/SyncWorld.h"

#include <QtGlobal>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <array>
#include <fstream>

#include <QDir>
#include <QFile>
#include <QTest>

using namespace venlo;
using namespace venlo::test;

namespace
{
const QString pub = QStringLiteral("/pub");
}

/// What a comparison does about what it cannot rely on: listings that are not whole, names that
/// the statements cannot hold, local folders it cannot read.
class tst_ComparisonDoubts : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void aBrokenListingBlocksItsFolder();
    void aBrokenListingBlocksTheWholeFolderAbove();
    void aRefusedFolderIsNotEmpty();
    void firstPublish();
    void firstPublishIntoSeveralNewFolders();
    void downloadOfAMissingFolder();
    void aRefusedRootThatIsThere();
    void aRefusedRootBelowABrokenListing();
    void aRootThatIsOnlyBusyIsNotAbsent();
    void notConnected();
    void connectionLostWhileListing();
    void quotesInRemoteNames();
    void quotesInLocalNames();
#ifdef Q_OS_UNIX // no name holds one elsewhere
    void questionMarks();
#endif
    void questionMarkInARemoteFolder();
    void localRootMissing();
    void unreadableLocalFolder();
    void localFolderThatVanishes();
    void localFileTooLarge();
#ifdef Q_OS_UNIX
    void linksToFolders();
    void whatHasNoRowHoldsItsFolder_data();
    void whatHasNoRowHoldsItsFolder();
    void unreadNamesLeaveTheRestUndone_data();
    void unreadNamesLeaveTheRestUndone();
    void aFileWithoutATimeIsNotAbsent();
    void aFolderWithoutATimeIsNotAbsent();
#endif
    void cutUploads_data();
    void cutUploads();
    void cutUploadsOfAWholeFolder();
    void fileAgainstFolder_data();
    void fileAgainstFolder();
    void namesThatDifferInCaseOnly();
    void aFileSpelledDifferently();
    void remoteTwinsBlockTheirFolder();

private:
    void connectAll();
    void write(const std::vector<TreeRow> &rows);

    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<SyncWorld> m_world;
};

void tst_ComparisonDoubts::init()
{
    m_server = std::make_unique<ScriptedServer>();
    m_world = std::make_unique<SyncWorld>();
    m_server->makeFolder("/pub");
}

void tst_ComparisonDoubts::cleanup()
{
    QCOMPARE(m_world->person.openWaits(), 0);
    m_world.reset();
    m_server.reset();
}

void tst_ComparisonDoubts::connectAll()
{
    QVERIFY(m_server->start());
    m_world->registerSite(m_server->server(), m_server->user(), m_server->password());
    QVERIFY(m_world->connectToSite());
}

void tst_ComparisonDoubts::write(const std::vector<TreeRow> &rows)
{
    QVERIFY(makeTree(m_world->local(), rows));
}

void tst_ComparisonDoubts::aBrokenListingBlocksItsFolder()
{
    m_server->put("/pub/ok/a", "a");
    m_server->put("/pub/x/one.txt", "1");
    m_server->put("/pub/x/two.txt", "2");
    write({{"x/one.txt", "1"}, {"x/two.txt", "2"}, {"x/mine.txt", "3"}, {"free.txt", "4"}});
    connectAll();
    m_server->on("MLSD").nth(3).truncateAfter(70).completion("426 broken\r\n");
    const ComparisonResult result = m_world->compare(true, pub);
    QVERIFY(result.ok && result.unreliable);
    SyncReview review(result, {true, false});
    review.load(m_world->database);
    for (int i = 0; i < review.count(); ++i) {
        if (review.row(i).sPh == QStringLiteral("/x"))
            QVERIFY2(!review.row(i).ticked && !review.row(i).box, qPrintable(review.print()));
    }
    QVERIFY(review.print().contains(QStringLiteral("[x] /free.txt (削除)")));
    QVERIFY(m_world->warned(QStringLiteral("/pub/x の一覧が不完全なため同期しません")));
    QVERIFY(!m_world->person.messageLines().filter(QStringLiteral("/pub/x ")).isEmpty());
    QVERIFY(review.leftOver());
}

void tst_ComparisonDoubts::aBrokenListingBlocksTheWholeFolderAbove()
{
    m_server->put("/pub/old/sub/f", "f");
    connectAll();
    m_server->on("MLSD").nth(3).dropBeforeReply();
    const QString plan = m_world->plan(false, pub);
    QVERIFY2(plan.contains(QStringLiteral("    /old/ 対象外")), qPrintable(plan));
    QVERIFY(!plan.contains(QStringLiteral("[x]")));
}

void tst_ComparisonDoubts::aRefusedFolderIsNotEmpty()
{
    m_server->put("/pub/shut/f", "f");
    write({{"shut/f", "f"}, {"shut/g", "g"}});
    connectAll();
    m_server->on("CWD", "/pub/shut").reply(550, "Permission denied");
    const QString plan = m_world->plan(true, pub);
    QVERIFY2(!plan.contains(QStringLiteral("(削除)")), qPrintable(plan));
    QVERIFY(m_world->warned(QStringLiteral("/pub/shut")));
}

void tst_ComparisonDoubts::firstPublish()
{
    write({{"a/b", "bbbbbb"}, {"c", "cccccc"}});
    connectAll();
    const ComparisonResult result = m_world->compare(false, QStringLiteral("/site"));
    QVERIFY(result.ok);
    QVERIFY(!result.unreliable);
    SyncReview review(result);
    review.load(m_world->database);
    QCOMPARE(review.print(), QStringLiteral("    ./\n"
                                            "[x] /c (追加)\n"
                                            "[x] /a/ (追加)\n"
                                            "    /a/b (追加)\n"));
}

void tst_ComparisonDoubts::firstPublishIntoSeveralNewFolders()
{
    write({{"c", "cccccc"}});
    connectAll();
    const ComparisonResult result = m_world->compare(false, QStringLiteral("/new/er/est"));
    QVERIFY(result.ok && !result.unreliable);
}

void tst_ComparisonDoubts::downloadOfAMissingFolder()
{
    write({{"c", "cccccc"}});
    connectAll();
    QVERIFY(!m_world->compare(true, QStringLiteral("/site")).ok);
    QCOMPARE(m_world->person.messages(), QStringList{QStringLiteral("/site  が存在しません")});
    QVERIFY(m_world->errorLogText().contains("ftSync Err sLph="));
}

void tst_ComparisonDoubts::aRefusedRootThatIsThere()
{
    m_server->put("/pub/f", "f");
    write({{"c", "cccccc"}});
    connectAll();
    m_server->on("CWD", "/pub").reply(550, "Permission denied");
    const ComparisonResult result = m_world->compare(true, pub);
    QVERIFY(result.ok && result.unreliable);
    SyncReview review(result);
    review.load(m_world->database);
    QCOMPARE(review.counts().pending, 0);
    QVERIFY(review.leftOver());
}

void tst_ComparisonDoubts::aRefusedRootBelowABrokenListing()
{
    write({{"c", "cccccc"}});
    connectAll();
    m_server->on("MLSD").truncateAfter(0).completion("426 broken\r\n");
    const ComparisonResult result = m_world->compare(false, QStringLiteral("/site"));
    QVERIFY(result.ok && result.unreliable);
    SyncReview review(result);
    review.load(m_world->database);
    QCOMPARE(review.counts().pending, 0);
}

void tst_ComparisonDoubts::aRootThatIsOnlyBusyIsNotAbsent()
{
    write({{"c", "cccccc"}});
    connectAll();
    m_server->on("CWD", "/site").reply(450, "Busy, try again");
    const ComparisonResult result = m_world->compare(false, QStringLiteral("/site"));
    QVERIFY(result.ok && result.unreliable);
}

void tst_ComparisonDoubts::notConnected()
{
    m_server->put("/pub/f", "f");
    write({{"c", "cccccc"}});
    connectAll();
    QVERIFY(m_world->compare(false, pub).ok);
    m_world->database.run(QStringLiteral("Update msSite Set bSvDb=1"));
    m_world->session.Disconnect();
    const ComparisonResult result = m_world->compare(true, pub);
    QVERIFY(result.ok && result.unreliable);
    QVERIFY2(m_world->tables().contains(QStringLiteral("FL .|f|0|F2|追加")),
             "the remote side is what the cache holds");
    SyncReview review(result);
    review.load(m_world->database);
    QCOMPARE(review.counts().pending, 0);
}

void tst_ComparisonDoubts::connectionLostWhileListing()
{
    m_server->put("/pub/a/f", "f");
    m_server->put("/pub/b/f", "f");
    write({{"a/f", "f"}, {"b/f", "f"}, {"b/mine", "m"}, {"a/mine", "m"}});
    connectAll();
    m_server->on("MLSD").nth(2).call([this] { m_server->dropConnections(); });
    m_server->on("CONNECT").dropBeforeReply();
    const QString plan = m_world->plan(true, pub);
    QVERIFY2(!plan.contains(QStringLiteral("(削除)")), qPrintable(plan));
}

void tst_ComparisonDoubts::quotesInRemoteNames()
{
    m_server->put("/pub/it's.txt", "1");
    m_server->put("/pub/o'dir/f", "2");
    m_server->put("/pub/fine", "3");
    connectAll();
    QVERIFY(!m_world->compare(false, pub).ok);
    const QByteArray log = m_world->errorLogText();
    QVERIFY(log.contains("ftSync Err SQL=Insert Into tbFile"));
    QVERIFY(log.contains("ftSync Err SQL=Insert Into tbFold"));
    QVERIFY(!log.contains("sySync Err"));
    const QStringList messages = m_world->person.messages();
    QCOMPARE(messages.size(), 1);
    QVERIFY(messages.front().contains(QStringLiteral("/pub/it's.txt\n")));
    QVERIFY(messages.front().contains(QStringLiteral("/pub/o'dir\n")));
}

void tst_ComparisonDoubts::quotesInLocalNames()
{
    write({{"sub/it's.txt", "1"}});
    connectAll();
    QVERIFY(!m_world->compare(false, pub).ok);
    QVERIFY(m_world->errorLogText().contains("sySync Err"));
    QVERIFY(!m_world->errorLogText().contains("ftSync Err"));
    QVERIFY(m_world->person.messages().front().contains(QStringLiteral("it's.txt")));
}

#ifdef Q_OS_UNIX
void tst_ComparisonDoubts::questionMarks()
{
    m_server->put("/pub/why.txt", "remote");
    write({{"why?.txt", "local"}, {"dir?/f", "f"}, {"free", "free"}});
    connectAll();
    const ComparisonResult result = m_world->compare(false, pub);
    QVERIFY(result.ok && result.unreliable);
    SyncReview review(result, {true, false});
    review.load(m_world->database);
    const QString plan = review.print();
    QVERIFY2(plan.contains(QStringLiteral("[x] /free (追加)")), qPrintable(plan));
    QVERIFY2(plan.contains(QStringLiteral("    /why.txt 対象外")), qPrintable(plan));
    QVERIFY2(plan.contains(QStringLiteral("    /dir/ 対象外")), qPrintable(plan));
    QCOMPARE(review.counts().pending, 1);
    QVERIFY(m_world->warned(QStringLiteral("/why?.txt")));
    QVERIFY(m_world->warned(QStringLiteral("/dir?")));
}
#endif

void tst_ComparisonDoubts::questionMarkInARemoteFolder()
{
    m_server->put("/pub/keep/d?r/f", "f");
    write({{"keep/dr/f", "other"}});
    connectAll();
    SyncReview review(m_world->compare(true, pub), {true, false});
    review.load(m_world->database);
    QVERIFY2(review.counts().pending == 0, qPrintable(review.print()));
}

void tst_ComparisonDoubts::localRootMissing()
{
    m_server->put("/pub/f", "f");
    connectAll();
    QVERIFY(QDir(m_world->local()).removeRecursively());
    QVERIFY(!m_world->compare(false, pub).ok);
    QVERIFY(m_world->errorLogText().contains("sySync Err"));
    QVERIFY(m_world->person.messages().front().contains(m_world->local()));
}

void tst_ComparisonDoubts::unreadableLocalFolder()
{
    m_server->put("/pub/dir/f", "f");
    write({{"dir/f", "f"}});
    connectAll();
    const QString dir = m_world->local() + QStringLiteral("/dir");
    QFile::setPermissions(dir, QFile::Permissions());
    const bool readable = QDir(dir).isReadable();
    const bool ok = m_world->compare(false, pub).ok;
    QFile::setPermissions(dir, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    if (readable)
        QSKIP("the administrator reads everything");
    QVERIFY(!ok);
    QVERIFY(m_world->errorLogText().contains("sySync Err"));
}

void tst_ComparisonDoubts::localFolderThatVanishes()
{
    std::vector<TreeRow> rows{{"dir/f", "f"}};
    for (int i = 0; i < 600; ++i)
        rows.push_back({"f" + QByteArray::number(i), "x"});
    m_server->put("/pub/dir/f", "f");
    write(rows);
    connectAll();
    m_world->person.onYield([this] {
        if (m_world->person.texts(ScriptedPerson::What::ShowWait).size() > 1)
            QDir(m_world->local() + QStringLiteral("/dir")).removeRecursively();
    });
    QVERIFY2(!m_world->compare(false, pub).ok, "an unread folder is no empty one");
    QVERIFY(m_world->errorLogText().contains("sySync Err"));
    const QString message = m_world->person.messages().front();
    QVERIFY2(QDir::fromNativeSeparators(message).contains(QStringLiteral("/dir")),
             qPrintable(message));
}

void tst_ComparisonDoubts::localFileTooLarge()
{
    write({{"large.iso", "x"}});
    connectAll();
    QFile large(m_world->local() + QStringLiteral("/large.iso"));
    QVERIFY(large.resize(2147483648LL));
    QVERIFY(!m_world->compare(false, pub).ok);
    QVERIFY(m_world->errorLogText().contains("sySync Err"));
    QVERIFY(m_world->person.messages().front().contains(QStringLiteral("large.iso")));
    QVERIFY(large.resize(2147483647LL));
    QVERIFY(m_world->compare(false, pub).ok);
}

#ifdef Q_OS_UNIX
void tst_ComparisonDoubts::linksToFolders()
{
    m_server->put("/pub/loop/f", "f");
    write({{"real/f", "f"}});
    QVERIFY(QFile::link(m_world->local(), m_world->local() + QStringLiteral("/loop")));
    QVERIFY(QFile::link(m_world->local(), m_world->local() + QStringLiteral("/real/up")));
    connectAll();
    QString plan = m_world->plan(false, pub);
    QVERIFY2(plan.contains(QStringLiteral("    /loop/ 対象外")), qPrintable(plan));
    QVERIFY2(plan.contains(QStringLiteral("[x] /real/ (追加)")), qPrintable(plan));
    QVERIFY(m_world->warned(QStringLiteral("/loop")));
    QVERIFY(m_world->warned(QStringLiteral("/real/up")));
    plan = m_world->plan(true, pub);
    QVERIFY2(plan.contains(QStringLiteral("    /loop/ 対象外")), qPrintable(plan));
}

void tst_ComparisonDoubts::whatHasNoRowHoldsItsFolder_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("target");
    QTest::newRow("a name that is no text") << QByteArray("a\xff\xfe") << QString();
    QTest::newRow("a dead link") << QByteArray("dead") << QStringLiteral("/nowhere/at/all");
    QTest::newRow("a link to a folder") << QByteArray(".link") << QStringLiteral("/");
}

void tst_ComparisonDoubts::whatHasNoRowHoldsItsFolder()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, target);
    write({{"old/in/f", "f"}, {"gone/f", "f"}});
    const QByteArray path = QFile::encodeName(m_world->local()) + "/old/in/" + name;
    if (target.isEmpty())
        std::ofstream(path.constData()) << "x";
    else
        QCOMPARE(::symlink(QFile::encodeName(target).constData(), path.constData()), 0);
    connectAll();
    const QString plan = m_world->plan(true, pub);
    QVERIFY2(plan.contains(QStringLiteral("    /old/ 対象外")), qPrintable(plan));
    QVERIFY2(plan.contains(QStringLiteral("[x] /gone/ (削除)")), qPrintable(plan));
}

void tst_ComparisonDoubts::unreadNamesLeaveTheRestUndone_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("unreliable");
    QTest::newRow("a dead link") << QStringLiteral("/nowhere/at/all") << true;
    QTest::newRow("a link to a folder") << QStringLiteral("/") << false;
}

void tst_ComparisonDoubts::unreadNamesLeaveTheRestUndone()
{
    QFETCH(QString, target);
    QFETCH(bool, unreliable);
    QVERIFY(QFile::link(target, m_world->local() + QStringLiteral("/odd")));
    connectAll();
    const ComparisonResult result = m_world->compare(false, pub);
    QVERIFY(result.ok);
    QCOMPARE(result.unreliable, unreliable);
}

void tst_ComparisonDoubts::aFileWithoutATimeIsNotAbsent()
{
    m_server->put("/pub/f", "f");
    write({{"f", "f"}});
    connectAll();
    const QByteArray path = QFile::encodeName(m_world->local()) + "/f";
    const std::array<timespec, 2> epoch{};
    QCOMPARE(::utimensat(AT_FDCWD, path.constData(), epoch.data(), 0), 0);
    QVERIFY(!QFileInfo(QFile::decodeName(path)).lastModified().isValid());
    QVERIFY2(!m_world->compare(false, pub).ok, "up it would be deleted on the server");
    QVERIFY(m_world->errorLogText().contains("sySync Err"));
    QVERIFY(m_world->person.messages().last().contains(QStringLiteral("/f\n更新日時")));
}

void tst_ComparisonDoubts::aFolderWithoutATimeIsNotAbsent()
{
    m_server->put("/pub/d/f", "f");
    write({{"d/f", "f"}});
    connectAll();
    const QByteArray path = QFile::encodeName(m_world->local()) + "/d";
    const std::array<timespec, 2> epoch{};
    QCOMPARE(::utimensat(AT_FDCWD, path.constData(), epoch.data(), 0), 0);
    QVERIFY(!m_world->compare(false, pub).ok);
    QVERIFY(m_world->errorLogText().contains("sySync Err"));
}
#endif

void tst_ComparisonDoubts::cutUploads_data()
{
    QTest::addColumn<bool>("down");
    QTest::addColumn<bool>("noted");
    QTest::addColumn<QString>("line");
    QTest::newRow("up, cut") << false << true << QStringLiteral("[x] /x/f (上書)");
    QTest::newRow("up, whole") << false << false << QStringLiteral("[ ] /x/f");
    QTest::newRow("down, cut") << true << true << QStringLiteral("    /x/f");
    QTest::newRow("down, whole") << true << false << QStringLiteral("[x] /x/f (上書)");
}

void tst_ComparisonDoubts::cutUploads()
{
    QFETCH(bool, down);
    QFETCH(bool, noted);
    QFETCH(QString, line);
    const QDateTime noon(QDate(2024, 5, 6), QTime(3, 0, 0), Qt::UTC);
    m_server->put("/pub/x/f", QByteArray(95, 'r'), noon.addDays(1));
    write({{"x/f", QByteArray(100, 'l'), noon}});
    connectAll();
    if (noted)
        m_world->cache.unfinished().begin(m_world->session.currentSite(),
                                          pub + QStringLiteral("/x"), QStringLiteral("f"));
    const ComparisonResult result = m_world->compare(down, pub);
    QVERIFY(result.ok);
    QCOMPARE(result.unreliable, down && noted);
    SyncReview review(result);
    review.load(m_world->database);
    QVERIFY2(review.print().contains(line), qPrintable(review.print()));
    QCOMPARE(m_world->warned(QStringLiteral("送信が途中で切れたﾌｧｲﾙです")), down && noted);
}

void tst_ComparisonDoubts::cutUploadsOfAWholeFolder()
{
    m_server->put("/pub/new/in/f", "part");
    m_server->put("/pub/free/f", "whole");
    connectAll();
    m_world->cache.unfinished().begin(m_world->session.currentSite(),
                                      pub + QStringLiteral("/new/in"), QStringLiteral("f"));
    const QString plan = m_world->plan(true, pub);
    QVERIFY2(plan.contains(QStringLiteral("    /new/ 対象外")), qPrintable(plan));
    QVERIFY2(plan.contains(QStringLiteral("[x] /free/ (追加)")), qPrintable(plan));
}

void tst_ComparisonDoubts::fileAgainstFolder_data()
{
    QTest::addColumn<bool>("down");
    QTest::addColumn<bool>("localFolder");
    QTest::newRow("up, a folder here") << false << true;
    QTest::newRow("up, a file here") << false << false;
    QTest::newRow("down, a folder here") << true << true;
    QTest::newRow("down, a file here") << true << false;
}

void tst_ComparisonDoubts::fileAgainstFolder()
{
    QFETCH(bool, down);
    QFETCH(bool, localFolder);
    if (localFolder) {
        m_server->put("/pub/Thing", "file");
        write({{"thing/f", "f"}, {"thing/g/h", "h"}});
    } else {
        m_server->put("/pub/Thing/f", "f");
        m_server->put("/pub/Thing/g/h", "h");
        write({{"thing", "file"}});
    }
    connectAll();
    SyncReview review(m_world->compare(down, pub), {true, false});
    review.load(m_world->database);
    QVERIFY2(review.counts().pending == 0, qPrintable(review.print()));
    QVERIFY(review.leftOver());
    QVERIFY(m_world->warned(QStringLiteral("/thing")));
}

void tst_ComparisonDoubts::namesThatDifferInCaseOnly()
{
    write({{"A.txt", "one"}, {"a.txt", "two"}, {"free", "f"}});
    if (QDir(m_world->local()).entryList(QDir::Files).size() != 3)
        QSKIP("this file system does not tell letter case apart");
    connectAll();
    const QString plan = m_world->plan(false, pub);
    QVERIFY2(plan.contains(QStringLiteral("[x] /free")), qPrintable(plan));
    QCOMPARE(plan.count(QStringLiteral("[x]")), 1);
    QVERIFY(m_world->warned(QStringLiteral("A.txt")));
}

void tst_ComparisonDoubts::aFileSpelledDifferently()
{
    m_server->put("/pub/A.TXT", QByteArray(100, 'r'));
    write({{"a.txt", QByteArray(500, 'l')}});
    if (QFile::exists(m_world->local() + QStringLiteral("/A.TXT")))
        QSKIP("this file system does not tell letter case apart");
    connectAll();
    const QString plan = m_world->plan(false, pub);
    QVERIFY2(plan.contains(QStringLiteral("    /A.TXT 対象外")), qPrintable(plan));
}

void tst_ComparisonDoubts::remoteTwinsBlockTheirFolder()
{
    m_server->put("/pub/x/A", "1");
    m_server->put("/pub/x/a", "2");
    write({{"x/other", "o"}, {"free", "f"}});
    connectAll();
    const QString plan = m_world->plan(true, pub);
    QVERIFY2(plan.contains(QStringLiteral("[x] /free (削除)")), qPrintable(plan));
    QVERIFY2(plan.contains(QStringLiteral("    /x/other 対象外")), qPrintable(plan));
}

QTEST_GUILESS_MAIN(tst_ComparisonDoubts)
#include "tst_ComparisonDoubts.moc"
