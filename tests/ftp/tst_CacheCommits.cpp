// Rows that share a commit, and directories that are known to be empty: both are as good as listed
// for the run they are of, and worth nothing once they are lost.
#include "db/Store.h"
#include "ftp/CacheFixture.h"
#include "ftp/OperationsFixture.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTest>

namespace venlo::test
{

namespace
{
const QString docs = QStringLiteral("/docs");

struct CommitsFixture : CacheFixture {
    CommitsFixture()
    {
        server.put("/a.txt", "a");
        server.put("/docs/b.txt", "bb");
        server.put("/docs/deep/c.txt", "ccc");
    }
    /// Cached rows as a process would find them that starts now, after this one was killed.
    [[nodiscard]] qint64 rowsAfterAKill() const
    {
        const QTemporaryDir other;
        for (const char *end : {"", "-journal"}) {
            const QString name = QStringLiteral("dbFtp.mdb") + QLatin1String(end);
            QFile::copy(path(name), other.filePath(name));
        }
        Store store;
        store.open(other.filePath(QStringLiteral("dbFtp.mdb")));
        if (!store.damage().isEmpty())
            return -1;
        return store.query(QStringLiteral("SELECT count(*) FROM web")).at(0, 0).toLongLong();
    }
    void loseGroup()
    {
        // The store undid it, as it does when the disk is full.
        (void)database.store().query(QStringLiteral("ROLLBACK"));
        database.store().endGroup();
    }
    [[nodiscard]] int listings() const { return server.count("MLSD"); }
};

void putSite(OperationsFixture &f)
{
    bool ok = true;
    f.operations.ftPutFold(f.here(), QStringLiteral("site"), QStringLiteral("/pub"), ok);
    QVERIFY(ok);
}
} // namespace

class tst_CacheCommits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void loadedRowsShareACommit();
    void anotherChangeKeepsLoadedRows();
    void lostRowsAreAskedForAgain();
    void lostMarksAreBack();
    void misfitsLeaveTheOthers();
    void madeEmptyIsNotListed_data();
    void madeEmptyIsNotListed();
    void madeEmptyTakesRows();
    void madeEmptyEnds_data();
    void madeEmptyEnds();
    void uploadedFoldersAreNotListed();
    void folderThatWasThereIsListed();
};

void tst_CacheCommits::loadedRowsShareACommit()
{
    CommitsFixture f;
    QVERIFY(f.start());
    QElapsedTimer clock;
    clock.start();
    QVERIFY(f.load(slash()));
    QVERIFY(f.load(docs));
    const bool inTime = clock.elapsed() < Store::groupLife.count();
    const qint64 atOnce = f.rowsAfterAKill();
    // There at once for this process, together on the disk a little later.
    QCOMPARE(f.cacheRows(web()).size(), 4);
    QCOMPARE(f.cache.caSubFolds(docs), QStringLiteral("deep"));
    QTRY_COMPARE(f.rowsAfterAKill(), 4);
    QCOMPARE(f.listings(), 2);
    QVERIFY(!f.events().contains(QLatin1String("not in step")));
    if (!inTime)
        QSKIP("two listings take longer here than rows wait for each other");
    QCOMPARE(atOnce, 0);
}

void tst_CacheCommits::anotherChangeKeepsLoadedRows()
{
    CommitsFixture f;
    QVERIFY(f.start());
    QVERIFY(f.load(slash()));
    QCOMPARE(f.rowsAfterAKill(), 0);
    f.registerSite(QStringLiteral("other"), QString(), QString(), QString());
    QCOMPARE(f.rowsAfterAKill(), 2);
    QVERIFY(f.load(docs));
    f.session.Disconnect();
    f.database.CloseDb();
    QCOMPARE(f.rowsAfterAKill(), 4);
}

void tst_CacheCommits::lostRowsAreAskedForAgain()
{
    CommitsFixture f;
    QVERIFY(f.start());
    QVERIFY(f.load(slash()));
    QVERIFY(f.load(docs));
    f.loseGroup();
    QVERIFY(f.events().contains(QLatin1String("cache not in step")));
    QVERIFY(f.cacheRows(web()).isEmpty());
    QCOMPARE(f.cache.caSubFolds(slash()), QStringLiteral("docs"));
    QCOMPARE(f.cache.caSubFolds(docs), QStringLiteral("deep"));
    QCOMPARE(f.listings(), 4);
    f.database.store().endGroup();
    QCOMPARE(f.rowsAfterAKill(), 4);
}

void tst_CacheCommits::lostMarksAreBack()
{
    CommitsFixture f;
    f.server.on("CWD", "/docs").once().reply(550, "keep out");
    f.server.on("CWD", "/docs").nth(2).reply(550, "keep out");
    f.server.on("CWD", "/docs").nth(3).reply(550, "keep out");
    QVERIFY(f.start());
    QVERIFY(!f.load(docs));
    QCOMPARE(f.incomplete(), QStringList(docs));
    f.database.store().endGroup();
    f.server.script().clear();
    QVERIFY(f.load(docs));
    QCOMPARE(f.incomplete(), QStringList());
    f.loseGroup();
    QCOMPARE(f.incomplete(), QStringList(docs));
    QVERIFY(f.load(docs));
    QCOMPARE(f.incomplete(), QStringList());
}

void tst_CacheCommits::misfitsLeaveTheOthers()
{
    CommitsFixture f;
    f.server.setRawListing("/docs", "type=file;size=4000000000;modify=20240101000000; big.iso\r\n"
                                    "type=file;size=5;modify=20240101000000; small.txt\r\n");
    QVERIFY(f.start());
    QVERIFY(f.load(slash()));
    bool thrown = false;
    try {
        (void)f.load(docs);
    } catch (const DbError &error) {
        thrown = error.words().contains(QLatin1String("big.iso"));
    }
    QVERIFY(thrown);
    QCOMPARE(f.incomplete(), QStringList(docs));
    f.database.store().endGroup();
    QCOMPARE(f.rowsAfterAKill(), 3);
}

void tst_CacheCommits::madeEmptyIsNotListed_data()
{
    QTest::addColumn<bool>("made");
    QTest::newRow("made") << true;
    QTest::newRow("not made") << false;
}

void tst_CacheCommits::madeEmptyIsNotListed()
{
    QFETCH(bool, made);
    CommitsFixture f;
    f.server.makeFolder("/new");
    QVERIFY(f.start());
    const QString dir = QStringLiteral("/new");
    if (made)
        f.cache.madeEmpty(dir);
    for (int round = 0; round < 2; ++round) {
        QVERIFY(f.load(dir));
        QCOMPARE(f.cache.caSubFolds(dir), QString());
        QCOMPARE(f.cache.caFileNames(dir), QString());
        QVERIFY(!f.cache.caHasSub(dir));
        QString folders;
        QString files;
        f.cache.caDirList(dir, folders, files);
        QVERIFY(folders.isEmpty() && files.isEmpty());
    }
    // An empty directory has no rows, and is otherwise listed each time.
    QCOMPARE(f.listings(), made ? 0 : 10);
    QCOMPARE(f.server.count("CWD") == 0, made);
}

void tst_CacheCommits::madeEmptyTakesRows()
{
    CommitsFixture f;
    QVERIFY(f.start());
    const QString dir = QStringLiteral("/new");
    f.cache.madeEmpty(dir);
    f.cache.caAddFile(f.path(QStringLiteral("dbFtp.mdb")), dir, QStringLiteral("x.txt"));
    f.cache.folderMade(dir, QStringLiteral("sub"));
    QCOMPARE(f.cache.caFileNames(dir), QStringLiteral("x.txt"));
    QCOMPARE(f.cache.caSubFolds(dir), QStringLiteral("sub"));
    f.cache.forgetFile(dir, QStringLiteral("x.txt"));
    QCOMPARE(f.cache.caFileNames(dir), QString());
    QCOMPARE(f.listings(), 0);
}

void tst_CacheCommits::madeEmptyEnds_data()
{
    QTest::addColumn<std::function<void(CommitsFixture &)>>("act");
    const auto row = [](const char *what, std::function<void(CommitsFixture &)> act) {
        QTest::newRow(what) << std::move(act);
    };
    row("refresh", [](CommitsFixture &f) { f.cache.caRefresh(docs); });
    row("listed anew", [](CommitsFixture &f) { (void)f.load(docs, DirectoryCache::Replace); });
    row("a folder is gone",
        [](CommitsFixture &f) { f.cache.forgetFolder(slash(), QStringLiteral("new")); });
    row("a folder is renamed", [](CommitsFixture &f) {
        f.cache.renamed(slash(), QStringLiteral("new"), QStringLiteral("old"), true);
    });
    row("connected anew", [](CommitsFixture &f) {
        f.session.Disconnect();
        (void)f.connect();
    });
    row("its operation is over", [](CommitsFixture &f) { f.cache.othersMayWrite(); });
    row("its rows are lost", [](CommitsFixture &f) {
        f.cache.grouped(
            [&f] { f.cache.folderMade(QStringLiteral("/new"), QStringLiteral("sub")); });
        f.loseGroup();
    });
}

void tst_CacheCommits::madeEmptyEnds()
{
    QFETCH(std::function<void(CommitsFixture &)>, act);
    CommitsFixture f;
    f.server.put("/new/y.txt", "by somebody else");
    QVERIFY(f.start());
    const QString dir = QStringLiteral("/new");
    f.cache.madeEmpty(dir);
    QCOMPARE(f.cache.caFileNames(dir), QString());
    act(f);
    QCOMPARE(f.cache.caFileNames(dir), QStringLiteral("y.txt"));
    QVERIFY(f.listings() > 0);
}

void tst_CacheCommits::uploadedFoldersAreNotListed()
{
    OperationsFixture f;
    f.server.makeFolder("/pub");
    QVERIFY(f.start());
    f.write(QStringLiteral("site/a.txt"), "a");
    f.write(QStringLiteral("site/one/b.txt"), "b");
    f.write(QStringLiteral("site/one/two/c.txt"), "c");
    QVERIFY(QDir(f.here()).mkpath(QStringLiteral("site/empty")));
    f.browse(QStringLiteral("/pub"));
    putSite(f);
    QCOMPARE(f.server.file("/pub/site/one/two/c.txt"), QByteArray("c"));
    f.forget();
    for (const char *dir : {"/pub/site", "/pub/site/one", "/pub/site/one/two"})
        (void)f.cache.caFileNames(QLatin1String(dir));
    QCOMPARE(f.cache.caSubFolds(QStringLiteral("/pub/site")).split(QLatin1Char('\r')),
             QStringList({QStringLiteral("empty"), QStringLiteral("one")}));
    QCOMPARE(f.work(), QList<QByteArray>());
    // What others put there in the meantime shows as in every empty folder.
    f.server.put("/pub/site/empty/later.txt", "by somebody else");
    QCOMPARE(f.cache.caFileNames(QStringLiteral("/pub/site/empty")), QStringLiteral("later.txt"));
    const QStringList rows = f.cacheRows(web()).filter(QStringLiteral("/site"));
    f.cache.caRefresh(slash());
    QCOMPARE(f.cacheRows(web()).filter(QStringLiteral("/site")).size(), rows.size());
}

void tst_CacheCommits::folderThatWasThereIsListed()
{
    OperationsFixture f;
    f.server.put("/pub/site/there.txt", "there");
    QVERIFY(f.start());
    f.write(QStringLiteral("site/a.txt"), "a");
    f.browse(QStringLiteral("/pub"));
    putSite(f);
    QCOMPARE(f.cache.caFileNames(QStringLiteral("/pub/site")).split(QLatin1Char('\r')),
             QStringList({QStringLiteral("a.txt"), QStringLiteral("there.txt")}));
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::tst_CacheCommits)
#include "tst_CacheCommits.moc"
