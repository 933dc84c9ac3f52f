#include "support/ScriptedServer.h"
#include "sync/Execution.h"
#include "sync/SyncWorld.h"
#include "sync/WorkTables.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace venlo;
using namespace venlo::test;

namespace
{
const QString pub = QStringLiteral("/pub");
const QDateTime noon(QDate(2024, 5, 6), QTime(3, 0, 10), Qt::UTC);
} // namespace

/// What changed on the local side between the comparison and the execution is left alone.
class tst_LookAgain : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void changedBeforeADownload_data();
    void changedBeforeADownload();
    void newcomersInAWholeFolder_data();
    void newcomersInAWholeFolder();
    void aFolderThatAppeared();
    void temporaryFilesGoWithTheirFolder();
    void everyExecutionLooksAnew();
    void madeAgainBeforeARemoteDeletion();
    void whatAnEarlierPassPutThere();
    void linksOnTheWayOfAnUpload_data();
    void linksOnTheWayOfAnUpload();
    void aTabInTheLocalFolder();

private:
    [[nodiscard]] QString path(const char *inside) const
    {
        return m_world->local() + QLatin1Char('/') + QString::fromUtf8(inside);
    }
    void write(const std::vector<TreeRow> &rows) { QVERIFY(makeTree(m_world->local(), rows)); }
    void compareAll(bool down);
    [[nodiscard]] QByteArray content(const char *inside) const;
    [[nodiscard]] QStringList reasons() const;
    int execute();

    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<SyncWorld> m_world;
    std::unique_ptr<SyncReview> m_review;
};

void tst_LookAgain::init()
{
    m_review.reset();
    m_world.reset();
    m_server = std::make_unique<ScriptedServer>();
    m_world = std::make_unique<SyncWorld>();
    m_server->makeFolder("/pub");
}

void tst_LookAgain::compareAll(bool down)
{
    QVERIFY(m_server->start());
    m_world->registerSite(m_server->server(), m_server->user(), m_server->password());
    QVERIFY(m_world->connectToSite());
    m_review = std::make_unique<SyncReview>(m_world->compare(down, pub));
    m_review->load(m_world->database);
}

int tst_LookAgain::execute()
{
    Execution execution(m_world->worker, m_world->person, m_world->flags);
    return execution.run(*m_review, true);
}

QByteArray tst_LookAgain::content(const char *inside) const
{
    QFile file(path(inside));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

QStringList tst_LookAgain::reasons() const
{
    QStringList texts;
    for (const Outcome &outcome : m_world->person.outcomes(Outcome::Kind::GivenUp))
        texts += outcome.why;
    return texts;
}

void tst_LookAgain::changedBeforeADownload_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QDateTime>("time");
    QTest::newRow("one to be deleted grew") << QByteArray("gone") << QByteArray("longer") << noon;
    QTest::newRow("one to be deleted was saved again")
        << QByteArray("gone") << QByteArray("mine") << noon.addSecs(120);
    QTest::newRow("one to be replaced") << QByteArray("both") << QByteArray("changed!") << noon;
    QTest::newRow("one to be added") << QByteArray("new") << QByteArray("mine too") << noon;
}

void tst_LookAgain::changedBeforeADownload()
{
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, bytes);
    QFETCH(QDateTime, time);
    m_server->put("/pub/both", "theirs", noon.addDays(1));
    m_server->put("/pub/new", "theirs", noon.addDays(1));
    write({{"gone", "mine", noon}, {"both", "mine", noon}});
    compareAll(true);
    QCOMPARE(m_review->pendingCount(), 3);
    write({{file, bytes, time}});
    QCOMPARE(execute(), 1);
    QCOMPARE(content(file.constData()), bytes);
    QCOMPARE(reasons(), QStringList{QStringLiteral("比較の後に変わりました")});
    QCOMPARE(m_review->counts().done, 2);
    QVERIFY(m_review->leftOver());
}

void tst_LookAgain::newcomersInAWholeFolder_data()
{
    QTest::addColumn<QByteArray>("row");
    QTest::newRow("a file") << QByteArray("old/in/fresh");
    QTest::newRow("an empty folder") << QByteArray("old/fresh/");
    QTest::newRow("a file that grew") << QByteArray("old/in/f");
}

void tst_LookAgain::newcomersInAWholeFolder()
{
    QFETCH(QByteArray, row);
    write({{"old/in/f", "f", noon}, {"other/f", "f"}});
    compareAll(true);
    write({{row, row.endsWith('/') ? QByteArray() : QByteArray("fresh"), noon}});
    QCOMPARE(execute(), 1);
    QVERIFY(QFile::exists(path(row.constData())));
    QVERIFY(QFile::exists(path("old/in/f")));
    QVERIFY2(!QFile::exists(path("other")), "what did not change goes");
    QCOMPARE(reasons(), QStringList{QStringLiteral("比較の後に変わりました")});
}

void tst_LookAgain::aFolderThatAppeared()
{
    m_server->put("/pub/new/in/f", "theirs");
    compareAll(true);
    write({{"new/in/f", "mine, and longer"}});
    QCOMPARE(execute(), 1);
    QCOMPARE(content("new/in/f"), QByteArray("mine, and longer"));
    QCOMPARE(reasons(), QStringList{QStringLiteral("比較の後に変わりました")});
}

void tst_LookAgain::temporaryFilesGoWithTheirFolder()
{
    write({{"old/f", "f"}, {"old/.venlo-0123abcd.part", "half"}});
    compareAll(true);
    QCOMPARE(execute(), 1);
    QVERIFY(!QFile::exists(path("old")));
}

/// What an execution saw of the server a moment ago says nothing about now.
void tst_LookAgain::everyExecutionLooksAnew()
{
    m_server->put("/pub/both", "theirs", noon);
    write({{"both", "theirs", noon}, {"first", "mine"}});
    compareAll(true);
    QCOMPARE(execute(), 1);
    QVERIFY(!QFile::exists(path("first")));
    QVERIFY(m_server->tree().removeFile("/pub/both"));
    m_review = std::make_unique<SyncReview>(m_world->compare(true, pub));
    m_review->load(m_world->database);
    QCOMPARE(execute(), 1);
    QCOMPARE(reasons(), QStringList());
    QVERIFY(!QFile::exists(path("both")));
}

void tst_LookAgain::madeAgainBeforeARemoteDeletion()
{
    m_server->put("/pub/gone", "theirs");
    m_server->put("/pub/old/f", "theirs");
    m_server->put("/pub/free", "theirs");
    compareAll(false);
    QCOMPARE(m_review->pendingCount(), 3);
    write({{"gone", "mine"}, {"old/f", "mine"}});
    QCOMPARE(execute(), 1);
    QVERIFY(m_server->exists("/pub/gone"));
    QVERIFY(m_server->exists("/pub/old/f"));
    QVERIFY(!m_server->exists("/pub/free"));
    QCOMPARE(reasons(), QStringList(2, QStringLiteral("比較の後に作成されました")));
}

void tst_LookAgain::whatAnEarlierPassPutThere()
{
    m_server->put("/pub/new/1", "first one", noon);
    m_server->put("/pub/new/2", "second", noon);
    compareAll(true);
    // As an attempt that broke off would leave it, with a time no listing shows.
    write({{"new/1", "first one"}});
    m_review->noteTried(rowOf(*m_review, QStringLiteral("/new/")));
    QCOMPARE(execute(), 1);
    QCOMPARE(reasons(), QStringList());
    QCOMPARE(content("new/2"), QByteArray("second"));
}

void tst_LookAgain::linksOnTheWayOfAnUpload_data()
{
    QTest::addColumn<QString>("folder");
    QTest::newRow("a folder between") << QStringLiteral("/both");
    QTest::newRow("the folder itself") << QStringLiteral("/new");
}

void tst_LookAgain::linksOnTheWayOfAnUpload()
{
    QFETCH(QString, folder);
    m_server->makeFolder("/pub/both");
    write({{"both/f", "mine"}, {"new/f", "mine"}});
    compareAll(false);
    QTemporaryDir elsewhere;
    QVERIFY(makeTree(elsewhere.path(), {{"f", "private"}}));
    QVERIFY(QDir(m_world->local() + folder).removeRecursively());
    QVERIFY(QFile::link(elsewhere.path(), m_world->local() + folder));
    QCOMPARE(execute(), 1);
    QVERIFY(!m_server->exists("/pub" + folder.toUtf8() + "/f"));
    QCOMPARE(m_review->counts().givenUp, 1);
    QCOMPARE(m_review->counts().done, 1);
}

void tst_LookAgain::aTabInTheLocalFolder()
{
#ifdef Q_OS_WIN
    QSKIP("no name holds a tab here");
#endif
    const QString odd = path("a\tb");
    QVERIFY(makeTree(odd, {{"f", "mine"}}));
    QVERIFY(m_server->start());
    m_world->registerSite(m_server->server(), m_server->user(), m_server->password());
    QVERIFY(m_world->connectToSite());
    bool ok = false;
    m_review = std::make_unique<SyncReview>(m_world->comparison.ftSync(odd, pub, false, ok));
    QVERIFY(ok);
    m_review->load(m_world->database);
    QCOMPARE(m_review->pendingCount(), 1);
    QCOMPARE(execute(), 1);
    QCOMPARE(reasons(), QStringList{QStringLiteral("名前に制御文字があります")});
    QVERIFY(!m_server->exists("/pub/f"));
}

QTEST_GUILESS_MAIN(tst_LookAgain)
#include "tst_LookAgain.moc"
