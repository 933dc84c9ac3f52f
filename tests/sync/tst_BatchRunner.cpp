#include "sync/BatchRunner.h"

#include "support/ScriptedServer.h"
#include "sync/PatternHosts.h"
#include "sync/SyncWorld.h"
#include "sync/WindowHost.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace venlo;
using namespace venlo::test;

namespace
{
const QString pub = QStringLiteral("/pub");
const QString pattern = QStringLiteral("ﾎｰﾑﾍﾟｰｼﾞ");
const QDateTime noon(QDate(2024, 5, 6), QTime(3, 0, 10), Qt::UTC);

class CountingWindow : public WindowHost
{
public:
    void showMainWindow(const QString &connectedSite) override
    {
        ++shown;
        site = connectedSite;
    }
    int shown = 0;
    QString site;
};
} // namespace

/// The verbs of the command line: what they do, print and end with.
class tst_BatchRunner : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void upThenNothingToDo();
    void down();
    void withoutTheBatchFlagNothingRunsUnseen();
    void unknownPattern();
    void anEmptyPatternNameDoesNothing();
    void patternWithoutFolders_data();
    void patternWithoutFolders();
    void unknownSite();
    void wrongPassword();
    void rowsGivenUpAreStatusOne();
    void refusedFolderIsStatusOne();
    void dotNamesOfADownloadAreStatusZero();
    void theServersRootSaysSo();
    void theNamedRowsOptionsCount();
    void cacheIsRefreshedOnlyUpwards_data();
    void cacheIsRefreshedOnlyUpwards();
    void put();
    void putOfAMissingFile();
    void putOfAnOlderFile();
    void get();
    void getOfAMissingFile();
    void transferToAnUnknownSite();
    void transferWithoutASite();
    void openNeedsAWindow();
    void openShowsTheWindow();
    void openOnAPatternThatCannotBeShown_data();
    void openOnAPatternThatCannotBeShown();
    void aPatternIsWaitedForInAWindow();
    void transferShowsTheWindowOnNoSite();

private:
    void start();
    void write(const std::vector<TreeRow> &rows);
    [[nodiscard]] QString resultText(bool upwards, const char *end) const;

    std::unique_ptr<ScriptedServer> m_server;
    [[nodiscard]] BatchRunner batch(WindowHost *window = nullptr)
    {
        if (!m_hosts)
            m_hosts = PatternHosts::make(*m_world); // behind the registrations, as a start is
        return m_world->batch(m_hosts->host(), window);
    }

    std::unique_ptr<SyncWorld> m_world;
    std::unique_ptr<PatternHosts> m_hosts;
};

void tst_BatchRunner::init()
{
    m_server = std::make_unique<ScriptedServer>();
    m_world = std::make_unique<SyncWorld>();
    m_server->makeFolder("/pub");
}

void tst_BatchRunner::cleanup()
{
    QCOMPARE(m_world->person.openWaits(), 0);
    QVERIFY2(!m_world->flags.unattendedTransfer, "whoever starts it clears the flag");
    m_hosts.reset();
    m_world.reset();
    m_server.reset();
}

void tst_BatchRunner::start()
{
    QVERIFY(m_server->start());
    m_world->registerSite(m_server->server(), m_server->user(), m_server->password());
    m_world->registerPattern(pattern, pub);
}

void tst_BatchRunner::write(const std::vector<TreeRow> &rows)
{
    QVERIFY(makeTree(m_world->local(), rows));
}

QString tst_BatchRunner::resultText(bool upwards, const char *end) const
{
    const QString local = m_world->local();
    return (upwards ? local + QStringLiteral(" ⇒ ") + pub : pub + QStringLiteral(" ⇒ ") + local) +
           QString::fromUtf8(end);
}

void tst_BatchRunner::upThenNothingToDo()
{
    write({{"a.txt", "hello a", noon}, {"new/deep/b.txt", "hello b", noon}});
    m_server->put("/pub/gone.txt", "gone");
    m_server->put("/pub/gone/x", "gone");
    start();
    QCOMPARE(batch().RunSyncPattern(pattern, true), 0);
    QCOMPARE(difference(snapshot(m_world->local()), snapshot(m_server->tree(), "/pub")),
             QStringList());
    QCOMPARE(m_world->person.results(), QStringList{resultText(true, " の同期は実行されました")});
    QCOMPARE(m_world->person.outcomes(Outcome::Kind::Uploaded).size(), size_t(2));
    m_world->person.clear();
    m_world->session.CloseInternet();
    QCOMPARE(batch().RunSyncPattern(pattern, true), 0);
    QCOMPARE(m_world->person.results(),
             QStringList{resultText(true, " の同期は実行されませんでした")});
    QVERIFY(m_world->person.outcomes().empty());
}

void tst_BatchRunner::down()
{
    write({{"mine.txt", "mine"}, {"mine/x", "mine"}});
    m_server->put("/pub/a.txt", "hello a", noon);
    m_server->put("/pub/new/deep/b.txt", "hello b", noon);
    m_server->makeFolder("/pub/empty");
    start();
    QCOMPARE(batch().RunSyncPattern(pattern, false), 0);
    QCOMPARE(
        difference(snapshot(m_server->tree(), "/pub"), snapshot(m_world->local()), Times::Minutes),
        QStringList());
    QCOMPARE(m_world->person.results(), QStringList{resultText(false, " の同期は実行されました")});
    m_world->session.CloseInternet();
    QCOMPARE(batch().RunSyncPattern(pattern, false), 0);
    QCOMPARE(m_world->person.results().last(), resultText(false, " の同期は実行されませんでした"));
}

void tst_BatchRunner::withoutTheBatchFlagNothingRunsUnseen()
{
    write({{"a.txt", "hello a"}});
    start();
    m_world->flags.batch = false;
    m_world->person.allowQuestions();
    QCOMPARE(batch().RunSyncPattern(pattern, true), 1);
    QVERIFY(!m_server->exists("/pub/a.txt"));
    QCOMPARE(m_world->person.results(),
             QStringList{resultText(true, " の同期は実行できませんでした")});
    QVERIFY(!m_world->person.warnings().isEmpty());
}

void tst_BatchRunner::unknownPattern()
{
    start();
    QCOMPARE(batch().RunSyncPattern(QStringLiteral("none"), true), 2);
    QCOMPARE(batch().RunSyncPattern(QStringLiteral("it's"), true), 2);
    QVERIFY(m_world->person.messages().contains(QStringLiteral("同期ﾊﾟﾀｰﾝの登録を確認して下さい")));
    QCOMPARE(m_server->connections(), 0);
}

void tst_BatchRunner::anEmptyPatternNameDoesNothing()
{
    start();
    m_world->registerPattern(QString(), pub);
    QVERIFY(m_world->patternHost.SyncPtn(QString()).state == ShownPattern::State::Unknown);
    QVERIFY(m_world->person.messages().isEmpty());
    QCOMPARE(m_server->connections(), 0);
    QCOMPARE(batch().RunSyncPattern(QString(), true), 2);
}

void tst_BatchRunner::patternWithoutFolders_data()
{
    QTest::addColumn<QString>("column");
    QTest::newRow("no local folder") << QStringLiteral("sLph");
    QTest::newRow("no FTP folder") << QStringLiteral("sFph");
}

void tst_BatchRunner::patternWithoutFolders()
{
    QFETCH(QString, column);
    write({{"a.txt", "hello a"}});
    start();
    m_world->database.run(QStringLiteral("Update msSync Set ?=''"), {column});
    QCOMPARE(batch().RunSyncPattern(pattern, true), 1);
    QVERIFY(
        m_world->person.results().last().endsWith(QStringLiteral(" の同期は実行されませんでした")));
    const bool shown = column == QLatin1String("sFph"); // a window shows the server's root then
    QCOMPARE(m_server->count("MLSD"), shown ? m_hosts->listingsToShow() : 0);
}

void tst_BatchRunner::unknownSite()
{
    start();
    m_world->database.run(QStringLiteral("Update msSync Set sName='other'"));
    QCOMPARE(batch().RunSyncPattern(pattern, true), 2);
    QCOMPARE(m_server->connections(), 0);
}

void tst_BatchRunner::wrongPassword()
{
    write({{"a.txt", "hello a"}});
    start();
    m_world->database.run(QStringLiteral("Update msSite Set sPwd='wrong'"));
    QCOMPARE(batch().RunSyncPattern(pattern, true), 1);
    QCOMPARE(m_world->person.results(),
             QStringList{resultText(true, " の同期は実行できませんでした")});
    QVERIFY(m_world->errorLogText().contains("InternetConnect"));
}

void tst_BatchRunner::rowsGivenUpAreStatusOne()
{
    write({{"a.txt", "hello a"}, {"b.txt", "hello b"}});
    start();
    m_server->on("STOR", "a.txt").reply(550, "no");
    QCOMPARE(batch().RunSyncPattern(pattern, true), 1);
    QVERIFY(m_server->exists("/pub/b.txt"));
    QVERIFY(m_world->errorLogText().contains("FtpPutFile Err:"));
    QCOMPARE(m_world->person.results(), QStringList{resultText(true, " の同期は実行されました")});
}

void tst_BatchRunner::refusedFolderIsStatusOne()
{
    write({{"shut/mine", "m"}, {"free", "f"}});
    m_server->put("/pub/shut/x", "x");
    m_server->put("/pub/ok", "ok ok");
    start();
    m_server->on("CWD", "/pub/shut").reply(550, "no");
    QCOMPARE(batch().RunSyncPattern(pattern, false), 1);
    QVERIFY(QFile::exists(m_world->local() + QStringLiteral("/shut/mine")));
    QVERIFY(!QFile::exists(m_world->local() + QStringLiteral("/free")));
    QVERIFY(QFile::exists(m_world->local() + QStringLiteral("/ok")));
}

void tst_BatchRunner::dotNamesOfADownloadAreStatusZero()
{
    write({{".htaccess", "mine"}, {"old/.keep", "mine"}, {"old/f", "mine"}});
    start();
    QCOMPARE(batch().RunSyncPattern(pattern, false), 1);
    QVERIFY(QFile::exists(m_world->local() + QStringLiteral("/.htaccess")));
    QVERIFY(QFile::exists(m_world->local() + QStringLiteral("/old/f")));
    QVERIFY(m_world->warned(QStringLiteral(".keep")));
    QVERIFY(QFile::remove(m_world->local() + QStringLiteral("/old/.keep")));
    QCOMPARE(batch().RunSyncPattern(pattern, false), 0);
    QVERIFY(QFile::exists(m_world->local() + QStringLiteral("/.htaccess")));
    QVERIFY(!QFile::exists(m_world->local() + QStringLiteral("/old")));
}

void tst_BatchRunner::theServersRootSaysSo()
{
    write({{"pub/mine.txt", "mine"}, {"top.txt", "hello"}, {"whole/x", "hello x"}});
    m_server->put("/pub/theirs.txt", "theirs");
    start();
    m_world->registerPattern(QStringLiteral("root"), QStringLiteral("/"));
    QCOMPARE(batch().RunSyncPattern(QStringLiteral("root"), true), 1);
    QVERIFY(m_server->exists("/top.txt"));
    QVERIFY(m_server->exists("/whole/x"));
    QVERIFY(m_server->exists("/pub/theirs.txt"));
    QVERIFY(!m_server->exists("/pub/mine.txt"));
    QCOMPARE(m_world->person.messages().size(), 1);
}

void tst_BatchRunner::theNamedRowsOptionsCount()
{
    write({{"same.txt", QByteArray(100, 'l'), noon}});
    m_server->put("/pub/same.txt", QByteArray(100, 'r'), noon);
    start();
    m_world->registerPattern(QStringLiteral("all"), pub, true, false);
    QCOMPARE(batch().RunSyncPattern(pattern, true), 0);
    QCOMPARE(m_server->file("/pub/same.txt"), QByteArray(100, 'r'));
    m_world->session.CloseInternet();
    QCOMPARE(batch().RunSyncPattern(QStringLiteral("all"), true), 0);
    QCOMPARE(m_server->file("/pub/same.txt"), QByteArray(100, 'l'));
}

void tst_BatchRunner::cacheIsRefreshedOnlyUpwards_data()
{
    QTest::addColumn<bool>("upwards");
    QTest::addColumn<bool>("kept");
    QTest::addColumn<int>("listings");
    QTest::newRow("up, kept: listed again") << true << true << 2;
    QTest::newRow("up, not kept") << true << false << 1;
    QTest::newRow("down, kept") << false << true << 1;
}

void tst_BatchRunner::cacheIsRefreshedOnlyUpwards()
{
    QFETCH(bool, upwards);
    QFETCH(bool, kept);
    write({{"same.txt", QByteArray(100, 'l'), noon}});
    m_server->put("/pub/same.txt", QByteArray(100, 'l'), noon);
    start();
    m_world->database.run(QStringLiteral("Update msSite Set bSvDb=?"), {kept});
    QCOMPARE(batch().RunSyncPattern(pattern, upwards), 0);
    QTEST(m_server->count("MLSD") - m_hosts->listingsToShow(), "listings");
}

void tst_BatchRunner::put()
{
    write({{"a.txt", "hello a"}, {"日本 語.txt", "hello b"}, {"c.txt", "hello c"}});
    start();
    QCOMPARE(batch().RunTransfer(m_world->local() + QLatin1Char('/'), QStringLiteral("site"), pub,
                                 QStringLiteral("a.txt,日本 語.txt"), true),
             0);
    QCOMPARE(m_server->file("/pub/a.txt"), QByteArray("hello a"));
    QCOMPARE(m_server->file("/pub/日本 語.txt"), QByteArray("hello b"));
    QVERIFY(!m_server->exists("/pub/c.txt"));
    QCOMPARE(m_world->person.outcomes(Outcome::Kind::Uploaded).size(), size_t(2));
}

void tst_BatchRunner::putOfAMissingFile()
{
    write({{"a.txt", "hello a"}});
    start();
    QCOMPARE(batch().RunTransfer(m_world->local(), QStringLiteral("site"), pub,
                                 QStringLiteral("a.txt,none.txt"), true),
             1);
    QVERIFY(!m_server->exists("/pub/a.txt"));
    QCOMPARE(m_world->person.warnings(),
             QStringList{QDir::toNativeSeparators(m_world->local() + QStringLiteral("/none.txt")) +
                         QStringLiteral(" Not Found")});
}

void tst_BatchRunner::putOfAnOlderFile()
{
    write({{"a.txt", "hello a", noon}});
    m_server->put("/pub/a.txt", "newer", noon.addDays(1));
    start();
    QCOMPARE(batch().RunTransfer(m_world->local(), QStringLiteral("site"), pub,
                                 QStringLiteral("a.txt"), true),
             0);
    QCOMPARE(m_server->file("/pub/a.txt"), QByteArray("newer"));
    QCOMPARE(m_world->person.outcomes(Outcome::Kind::Skipped).size(), size_t(1));
}

void tst_BatchRunner::get()
{
    m_server->put("/pub/a.txt", "hello a");
    m_server->put("/pub/b c.txt", "hello b");
    start();
    QCOMPARE(batch().RunTransfer(m_world->local() + QStringLiteral("/new/er"),
                                 QStringLiteral("site"), pub, QStringLiteral("a.txt,b c.txt"),
                                 false),
             0);
    QVERIFY(QFile::exists(m_world->local() + QStringLiteral("/new/er/b c.txt")));
    QCOMPARE(m_world->person.outcomes(Outcome::Kind::Downloaded).size(), size_t(2));
}

void tst_BatchRunner::getOfAMissingFile()
{
    m_server->put("/pub/a.txt", "hello a");
    start();
    QCOMPARE(batch().RunTransfer(m_world->local(), QStringLiteral("site"), pub,
                                 QStringLiteral("none.txt,a.txt"), false),
             1);
    QVERIFY(QFile::exists(m_world->local() + QStringLiteral("/a.txt")));
    QVERIFY(!QFile::exists(m_world->local() + QStringLiteral("/none.txt")));
    QVERIFY(m_world->errorLogText().contains("FtpGetFile Err:"));
}

void tst_BatchRunner::transferToAnUnknownSite()
{
    start();
    QCOMPARE(batch().RunTransfer(m_world->local(), QStringLiteral("none"), pub,
                                 QStringLiteral("a.txt"), true),
             2);
    QVERIFY(m_world->warned(QStringLiteral("noneからは接続先の登録情報が取得できません")));
    QCOMPARE(m_server->connections(), 0);
}

void tst_BatchRunner::transferWithoutASite()
{
    start();
    QCOMPARE(batch().RunTransfer(m_world->local(), QString(), pub, QStringLiteral("a.txt"), false),
             2);
    QVERIFY(m_world->warned(QStringLiteral("接続先の登録名が指定されていません")));
}

void tst_BatchRunner::openNeedsAWindow()
{
    start();
    QCOMPARE(batch().OpenSite(QStringLiteral("site")), 2);
    QCOMPARE(batch().OpenPattern(pattern), 2);
    QCOMPARE(m_world->person.warnings().size(), 2);
    QCOMPARE(m_server->connections(), 0);
}

void tst_BatchRunner::openShowsTheWindow()
{
    start();
    CountingWindow window;
    BatchRunner runner = batch(&window);
    QCOMPARE(runner.OpenSite(QStringLiteral("none")), 2);
    QCOMPARE(window.shown, 0);
    QCOMPARE(runner.OpenSite(QStringLiteral("site")), 0);
    QCOMPARE(window.shown, 1);
    QCOMPARE(window.site, QStringLiteral("site"));
    QVERIFY(m_world->session.connected());
    m_world->session.CloseInternet();
    QCOMPARE(runner.OpenPattern(pattern), 0);
    QCOMPARE(window.shown, 2);
    QCOMPARE(window.site, QString());
    QVERIFY(m_world->session.connected());
}

void tst_BatchRunner::openOnAPatternThatCannotBeShown_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<int>("status");
    QTest::newRow("unknown") << QStringLiteral("Delete From msSync") << 2;
    QTest::newRow("its site is unknown") << QStringLiteral("Update msSync Set sName='other'") << 2;
    QTest::newRow("without a local folder") << QStringLiteral("Update msSync Set sLph=''") << 1;
    QTest::newRow("refused") << QStringLiteral("Update msSite Set sPwd='wrong'") << 1;
}

/// The window is there all the same; the status says later that it did not show the pattern.
void tst_BatchRunner::openOnAPatternThatCannotBeShown()
{
    QFETCH(QString, change);
    start();
    m_world->database.run(change);
    CountingWindow window;
    BatchRunner runner = batch(&window);
    QVERIFY(!runner.opened());
    QTEST(runner.OpenPattern(pattern), "status");
    QCOMPARE(window.shown, 1);
    QVERIFY(runner.opened());
    QVERIFY(!m_world->session.connected());
}

void tst_BatchRunner::aPatternIsWaitedForInAWindow()
{
    const QStringList words{QStringLiteral("同期ﾊﾟﾀｰﾝを指定して起動中です")};
    const auto closed = [this] {
        return m_world->person.texts(ScriptedPerson::What::CloseWait).size();
    };
    start();
    CountingWindow window;
    BatchRunner runner = batch(&window);
    m_world->person.clear();
    QCOMPARE(runner.OpenPattern(QStringLiteral("none")), 2);
    QCOMPARE(m_world->person.texts(ScriptedPerson::What::ShowWait), words);
    QCOMPARE(closed(), 1);
    m_world->person.clear();
    QCOMPARE(runner.RunSyncPattern(QStringLiteral("none"), true), 2);
    QCOMPARE(m_world->person.texts(ScriptedPerson::What::ShowWait), words);
    QCOMPARE(closed(), 1);
}

/// The window's listings would keep the transfer waiting.
void tst_BatchRunner::transferShowsTheWindowOnNoSite()
{
    start();
    CountingWindow window;
    BatchRunner runner = batch(&window);
    QCOMPARE(runner.RunTransfer(m_world->local(), QStringLiteral("none"), pub, QStringLiteral("x"),
                                false),
             2);
    QCOMPARE(window.shown, 0);
    window.site = QStringLiteral("unset");
    (void)runner.RunTransfer(m_world->local(), QStringLiteral("site"), pub, QStringLiteral("x"),
                             false);
    QCOMPARE(window.shown, 1);
    QCOMPARE(window.site, QString());
}

QTEST_MAIN(tst_BatchRunner) // with a window where the pattern host is one
#include "tst_BatchRunner.moc"
