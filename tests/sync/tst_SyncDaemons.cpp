#include "support/DaemonTests.h"
#include "sync/SyncWorld.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace venlo;
using namespace venlo::test;

namespace
{
const QString pattern = QStringLiteral("p");

/// Names and shapes that servers, shells and statements stumble over. Larger than 5 bytes each:
/// the cached size is one more than the true one, which for tiny files is a difference by a fifth.
std::vector<TreeRow> difficult(const QDateTime &modified)
{
    return {{"top.txt", QByteArray(300, 't'), modified},
            {"with blank  two.txt", QByteArray(30, 'b'), modified},
            {"100%.txt", QByteArray(30, '%'), modified},
            {"no#1 & (2) [3] ;~$.txt", QByteArray(30, '#'), modified},
            {"日本語の名前.html", QByteArray(30, 'j'), modified},
            {"ﾊﾝｶｸ/ソ表能.txt", QByteArray(30, 's'), modified},
            {"empty folder/"},
            {"deep/1/2/3/4/5/6/7/8/9/leaf.txt", QByteArray(30, 'd'), modified},
            {"mixed Case/File.TXT", QByteArray(30, 'c'), modified},
            {"-rf", QByteArray(30, '-'), modified},
            {"empty.txt", QByteArray(), modified},
            {"large.bin", QByteArray(700'000, 'L'), modified}};
}
} // namespace

/// A registered pattern up and down against real daemons.
class tst_SyncDaemons : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void up_data() { addDaemons(); }
    void up();
    void down_data() { addDaemons(); }
    void down();
    void firstPublish_data() { addDaemons(); }
    void firstPublish();
    void letterCase_data() { addDaemons(); }
    void letterCase();
    void tinyFilesGoAgainEachTime_data() { addDaemons(); }
    void tinyFilesGoAgainEachTime();
    void droppedSessions_data() { addDaemons(); }
    void droppedSessions();

private:
    /// Starts the daemon of the row over a new world; the test is over when it does not.
    bool start();
    [[nodiscard]] int run(bool upwards);
    [[nodiscard]] QString remote(const char *path) const
    {
        return m_daemon->root() + QString::fromUtf8(path);
    }

    std::unique_ptr<SyncWorld> m_world;
    std::unique_ptr<FtpDaemon> m_daemon;
};

bool tst_SyncDaemons::start()
{
    QFETCH(FtpDaemon::Kind, kind);
    m_daemon.reset();
    if (skippedWithout(kind))
        return false;
    m_world = std::make_unique<SyncWorld>();
    m_daemon = std::make_unique<FtpDaemon>(kind);
    if (!m_daemon->start() || !m_daemon->makeFolder("pub")) {
        QTest::qFail("no daemon", __FILE__, __LINE__);
        return false;
    }
    m_world->registerSite(m_daemon->server(), m_daemon->user(), m_daemon->password());
    m_world->registerPattern(pattern, QStringLiteral("/pub"));
    return true;
}

int tst_SyncDaemons::run(bool upwards)
{
    m_world->session.CloseInternet();
    m_world->person.clear();
    return m_world->batch().RunSyncPattern(pattern, upwards);
}

void tst_SyncDaemons::up()
{
    if (!start())
        return;
    const QDateTime modified = QDateTime::currentDateTimeUtc().addDays(-3);
    QVERIFY(makeTree(m_world->local(), difficult(modified)));
    QVERIFY(m_daemon->put("pub/old.txt", "to be deleted"));
    QVERIFY(m_daemon->put("pub/old/sub/x.txt", "to be deleted"));
    QCOMPARE(run(true), 0);
    QCOMPARE(difference(snapshot(m_world->local()), snapshot(remote("/pub"))), QStringList());

    QVERIFY(QFile::remove(m_world->local() + QStringLiteral("/100%.txt")));
    QVERIFY(QDir(m_world->local() + QStringLiteral("/deep/1/2")).removeRecursively());
    QVERIFY(
        makeTree(m_world->local(), {{"top.txt", QByteArray(301, 'n')}, {"new.txt", "new one"}}));
    QCOMPARE(run(true), 0);
    QCOMPARE(difference(snapshot(m_world->local()), snapshot(remote("/pub"))), QStringList());
    QVERIFY2(m_world->person.outcomes(Outcome::Kind::DeletedRemote).size() == 2,
             "the file, and the one at the bottom of the folder");
}

void tst_SyncDaemons::down()
{
    if (!start())
        return;
    const QDateTime modified = QDateTime::currentDateTimeUtc().addDays(-3);
    QVERIFY(makeTree(remote("/pub"), difficult(modified)));
    m_daemon->own();
    QVERIFY(makeTree(m_world->local(), {{"old.txt", "to be deleted"}, {"old/sub/x", "deleted"}}));
    QCOMPARE(run(false), 0);
    QCOMPARE(difference(snapshot(remote("/pub")), snapshot(m_world->local()), Times::Minutes),
             QStringList());
    QVERIFY(QFile::remove(m_world->local() + QStringLiteral("/empty.txt")));
    QVERIFY(m_daemon->put("pub/top.txt", QByteArray(400, 'n')));
    QCOMPARE(run(false), 0);
    QCOMPARE(difference(snapshot(remote("/pub")), snapshot(m_world->local())), QStringList());
    QCOMPARE(run(false), 0);
    QVERIFY2(m_world->person.outcomes(Outcome::Kind::DeletedLocal).empty(), "nothing left to do");
}

void tst_SyncDaemons::firstPublish()
{
    if (!start())
        return;
    m_world->registerPattern(QStringLiteral("new"), QStringLiteral("/sites/mine/www"));
    QVERIFY(
        makeTree(m_world->local(), {{"index.html", "<html></html>"}, {"img/a b.png", "pixels"}}));
    QCOMPARE(m_world->batch().RunSyncPattern(QStringLiteral("new"), true), 0);
    QCOMPARE(difference(snapshot(m_world->local()), snapshot(remote("/sites/mine/www"))),
             QStringList());
}

void tst_SyncDaemons::letterCase()
{
    if (!start())
        return;
    QVERIFY(
        makeTree(m_world->local(), {{"Doc/new.txt", "new file"}, {"Doc/Sub/x.txt", "sub file"}}));
    QVERIFY(m_daemon->put("pub/doc/old.txt", "old file"));
    QCOMPARE(run(true), 0);
    QVERIFY(m_daemon->exists("pub/doc/new.txt"));
    QVERIFY(m_daemon->exists("pub/doc/Sub/x.txt"));
    QVERIFY(!m_daemon->exists("pub/doc/old.txt"));
    QVERIFY2(!m_daemon->exists("pub/Doc"), "one folder, whatever its spelling");
    QVERIFY(m_daemon->put("pub/doc/more.txt", "more of it"));
    QCOMPARE(run(false), 0);
    QVERIFY(QFile::exists(m_world->local() + QStringLiteral("/Doc/more.txt")));
    QVERIFY(!QFile::exists(m_world->local() + QStringLiteral("/doc")));
}

void tst_SyncDaemons::tinyFilesGoAgainEachTime()
{
    if (!start())
        return;
    const QDateTime modified = QDateTime::currentDateTimeUtc().addDays(-3);
    QVERIFY(makeTree(m_world->local(), {{"five", "12345", modified}, {"six", "123456", modified}}));
    QCOMPARE(run(true), 0);
    QCOMPARE(run(true), 0);
    const auto again = m_world->person.outcomes(Outcome::Kind::Uploaded);
    QVERIFY(!again.empty());
    for (const Outcome &one : again)
        QVERIFY2(one.from.endsWith(QStringLiteral("five")), qPrintable(one.from));
}

void tst_SyncDaemons::droppedSessions()
{
    if (!start())
        return;
    std::vector<TreeRow> rows;
    for (int i = 0; i < 30; ++i)
        rows.push_back({"f" + QByteArray::number(i) + ".txt", QByteArray(2000, 'x')});
    QVERIFY(makeTree(m_world->local(), rows));
    int outcomes = 0;
    m_world->person.onYield([&] {
        const int now = static_cast<int>(m_world->person.outcomes().size());
        if (now / 10 > outcomes / 10)
            m_daemon->dropSessions();
        outcomes = now;
    });
    QCOMPARE(run(true), 0);
    QCOMPARE(difference(snapshot(m_world->local()), snapshot(remote("/pub"))), QStringList());
}

QTEST_GUILESS_MAIN(tst_SyncDaemons)
#include "tst_SyncDaemons.moc"
