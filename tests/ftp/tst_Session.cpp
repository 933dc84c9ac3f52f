// The session's states, messages and log lines, on a scripted server.
#include "db/Store.h"
#include "ftp/EngineFixture.h"
#include "support/Ports.h"
#include "support/ScriptedServer.h"

#include <QTest>
#include <QTimer>

using namespace venlo;
using venlo::test::EngineFixture;
using venlo::test::ScriptedPerson;
using venlo::test::ScriptedServer;

namespace
{
const QString site = QStringLiteral("web");
const QString user = QStringLiteral("user");
const QString password = QStringLiteral("pass");

QString cannotConnect(const QString &server)
{
    return server + QStringLiteral(" へ接続できません 設定を確認して下さい");
}

QString connectionLost(const QString &server)
{
    return server + QStringLiteral(" へ接続が切断されました　再度起動後実行して下さい");
}

QString reconnectLine()
{
    return QStringLiteral("ftReConect Err sUsr=user sPwd=pass");
}
} // namespace

class tst_Session : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void connectsAndDisconnects();
    void emptyServer();
    void connectOnlyFromOpen();
    void openWhileConnectedDisconnects();
    void openInStateOneLeavesOk();
    void unknownProxyText();
    void failedConnect_data();
    void failedConnect();
    void whatHangsIsInTheLog();
    void secretsStayOnThisSide_data();
    void secretsStayOnThisSide();
    void cacheEmptiedEvenWhenConnectFailed();
    void keptCacheSurvives();
    void siteNameWithDotIsNeverKept();
    void ownTablesAreNoSites_data();
    void ownTablesAreNoSites();
    void reconnectsOnce();
    void reconnectGivesUpAfterFive();
    void homeDirectoryDropsBackslash();
    void logRestartsOncePerOpen();
    void cancelledReconnectIsNoError();
    void staysPassiveAfterReconnect();
    void passwordStaysOutOfTheSecondLog_data();
    void passwordStaysOutOfTheSecondLog();
    void lockedStoreIsNotAWrongName();
    void operationInsideAWaitIsLeftOut();
};

void tst_Session::connectsAndDisconnects()
{
    ScriptedServer server;
    server.options().home = "/home";
    server.makeFolder("/home");
    QVERIFY(server.start());
    EngineFixture f;
    f.registerSite(site, server.server(), user, password);
    QCOMPARE(f.session.state(), Session::Closed);
    QVERIFY(f.connectTo(site, server.server(), user, password));
    QCOMPARE(f.session.state(), Session::Connected);
    QCOMPARE(f.session.server(), server.server());
    QCOMPARE(f.session.homeDirectory(), QStringLiteral("/home"));
    QCOMPARE(f.session.currentRemoteDir(), QStringLiteral("/home"));
    QCOMPARE(f.session.currentSite(), site);
    QCOMPARE(server.verbs(),
             QList<QByteArray>({"AUTH", "USER", "PASS", "FEAT", "OPTS", "TYPE", "PWD"}));
    f.session.Disconnect();
    QCOMPARE(f.session.state(), Session::Open);
    QCOMPARE(f.session.homeDirectory(), QString());
    f.session.CloseInternet();
    QCOMPARE(f.session.state(), Session::Closed);
    QCOMPARE(f.person.statusLines(),
             QStringList({server.server() + QStringLiteral(" へ接続しました"),
                          server.server() + QStringLiteral(" へ接続を切断しました")}));
    QVERIFY(f.person.verify());
    QVERIFY(f.errorLines().isEmpty());
}

void tst_Session::emptyServer()
{
    EngineFixture f;
    f.person.expectMessage(QStringLiteral("Please enter a server name!"));
    QVERIFY(!f.connectTo(site, QString(), user, password));
    QCOMPARE(f.session.state(), Session::Open);
    QVERIFY(f.person.verify());
    QVERIFY(f.errorLines().isEmpty());
}

void tst_Session::connectOnlyFromOpen()
{
    ScriptedServer server;
    QVERIFY(server.start());
    EngineFixture f;
    bool ok = true;
    f.session.Connect(site, server.server(), user, password, true, ok);
    QVERIFY(!ok);
    QCOMPARE(server.connections(), 0);
    QVERIFY(f.connectTo(site, server.server(), user, password));
    ok = true;
    f.session.Connect(site, server.server(), user, password, true, ok);
    QVERIFY(!ok);
    QCOMPARE(f.session.state(), Session::Connected);
    QCOMPARE(server.connections(), 1);
}

void tst_Session::openWhileConnectedDisconnects()
{
    ScriptedServer server;
    QVERIFY(server.start());
    EngineFixture f;
    QVERIFY(f.connectTo(site, server.server(), user, password));
    bool ok = false;
    f.session.OpenInternet(QString(), ok, false);
    QVERIFY(ok);
    QCOMPARE(f.session.state(), Session::Open);
}

void tst_Session::openInStateOneLeavesOk()
{
    EngineFixture f;
    bool ok = true;
    f.session.OpenInternet(QString(), ok, false);
    QVERIFY(ok);
    bool untouched = false;
    f.session.OpenInternet(QStringLiteral("proxy:1"), untouched, false);
    QVERIFY(!untouched);
    QCOMPARE(f.session.proxy(), QStringLiteral("proxy:1"));
    f.session.OpenInternet(QStringLiteral("other:1"), untouched, true);
    QCOMPARE(f.session.proxy(), QStringLiteral("proxy:1"));
}

void tst_Session::unknownProxyText()
{
    EngineFixture f;
    bool ok = true;
    f.session.OpenInternet(QStringLiteral("gopher://proxy"), ok, false);
    QVERIFY(!ok);
    QCOMPARE(f.session.state(), Session::Closed);
    QCOMPARE(f.errorLines(), QStringList(QStringLiteral("InternetOpen")));
}

void tst_Session::failedConnect_data()
{
    QTest::addColumn<QString>("fault");
    for (const char *fault : {"wrong password", "nobody listens", "unknown host", "421 greeting",
                              "silent server", "garbage", "closes after each command",
                              "endless greeting", "421 at TYPE", "drop at FEAT"})
        QTest::newRow(fault) << QString::fromLatin1(fault);
}

void tst_Session::failedConnect()
{
    QFETCH(QString, fault);
    ScriptedServer server;
    QString pass = password;
    QString address;
    if (fault == QLatin1String("wrong password"))
        pass = QStringLiteral("wrong");
    else if (fault == QLatin1String("421 greeting"))
        server.on("CONNECT").reply(421, "too many users");
    else if (fault == QLatin1String("silent server"))
        server.on("CONNECT").hang();
    else if (fault == QLatin1String("garbage"))
        server.on("CONNECT").rawReply("SSH-2.0-nothing\r\n");
    else if (fault == QLatin1String("closes after each command"))
        server.options().closesAfterEachCommand = true;
    else if (fault == QLatin1String("endless greeting"))
        server.on("CONNECT").endlessReply();
    else if (fault == QLatin1String("421 at TYPE"))
        server.on("TYPE").reply(421, "closing");
    else if (fault == QLatin1String("drop at FEAT"))
        server.on("FEAT").dropBeforeReply();
    QVERIFY(server.start());
    address = server.server();
    if (fault == QLatin1String("nobody listens"))
        server.stop();
    if (fault == QLatin1String("unknown host"))
        address = QStringLiteral("no-such-host.invalid");

    EngineFixture f;
    f.registerSite(site, address, user, pass);
    f.person.expectMessage(cannotConnect(address));
    QVERIFY(!f.connectTo(site, address, user, pass));
    QCOMPARE(f.session.state(), Session::Open);
    QCOMPARE(f.errorLines(), QStringList(QStringLiteral("InternetConnect")));
    QVERIFY(f.person.verify());
    QVERIFY2(!f.events().contains(pass), "a password in the second log");
}

/// Whoever looks why nothing goes on finds what was asked last.
void tst_Session::whatHangsIsInTheLog()
{
    ScriptedServer server;
    server.on("PWD").hang();
    QVERIFY(server.start());
    EngineFixture f;
    f.registerSite(site, server.server(), user, password);
    QByteArray seen;
    QTimer::singleShot(500, this, [&] {
        QFile log(f.eventLog.path());
        seen = log.open(QIODevice::ReadOnly) ? log.readAll() : QByteArray();
    });
    (void)f.connectTo(site, server.server(), user, password);
    QVERIFY2(seen.endsWith(" > PWD\n"), seen.constData());
}

void tst_Session::secretsStayOnThisSide_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("secret");
    QTest::newRow("CR in name") << QStringLiteral("us\rer") << password;
    QTest::newRow("LF in name") << QStringLiteral("us\ner") << password;
    QTest::newRow("CR LF in password") << user << QStringLiteral("pass\r\nDELE index.html");
    QTest::newRow("tab in name") << QStringLiteral("us\ter") << password;
    QTest::newRow("tab in password") << user << QStringLiteral("pa\tss");
    QTest::newRow("NUL in password") << user << QStringLiteral("pa%1ss").arg(QChar(0));
}

void tst_Session::secretsStayOnThisSide()
{
    QFETCH(QString, name);
    QFETCH(QString, secret);
    ScriptedServer server;
    QVERIFY(server.start());
    EngineFixture f;
    f.person.expectMessage(cannotConnect(server.server()));
    QVERIFY(!f.connectTo(site, server.server(), name, secret));
    QCOMPARE(server.commands(), QList<QByteArray>());
    QCOMPARE(f.errorLines(), QStringList(QStringLiteral("InternetConnect")));
    QVERIFY(f.person.verify());
}

void tst_Session::cacheEmptiedEvenWhenConnectFailed()
{
    ScriptedServer server;
    QVERIFY(server.start());
    EngineFixture f;
    f.registerSite(site, server.server(), user, password, false);
    QVERIFY(f.connectTo(site, server.server(), user, password));
    server.put("/a.txt", "hello");
    (void)f.cache.caFileNames(QStringLiteral("/"));
    QCOMPARE(f.cacheRows(site).size(), 1);
    f.session.CloseInternet(); // no disconnect: the rows stay
    QCOMPARE(f.cacheRows(site).size(), 1);
    server.stop();
    f.person.expectMessage(cannotConnect(server.server()));
    QVERIFY(!f.connectTo(site, server.server(), user, password));
    QCOMPARE(f.cacheRows(site), QStringList());
}

void tst_Session::keptCacheSurvives()
{
    ScriptedServer server;
    server.put("/a.txt", "hello");
    QVERIFY(server.start());
    EngineFixture f;
    f.registerSite(site, server.server(), user, password, true);
    QVERIFY(f.connectTo(site, server.server(), user, password));
    QVERIFY(f.session.SiteKeepsCache());
    (void)f.cache.caFileNames(QStringLiteral("/"));
    f.session.Disconnect();
    QVERIFY(f.connectTo(site, server.server(), user, password));
    QCOMPARE(f.cacheRows(site).size(), 1);
}

void tst_Session::siteNameWithDotIsNeverKept()
{
    ScriptedServer server;
    server.put("/a.txt", "hello");
    QVERIFY(server.start());
    EngineFixture f;
    const QString dotted = QStringLiteral("my.site-1");
    f.registerSite(dotted, server.server(), user, password, true);
    QVERIFY(f.connectTo(dotted, server.server(), user, password));
    QCOMPARE(f.session.currentSite(), QStringLiteral("my_site_1"));
    QVERIFY(!f.session.SiteKeepsCache());
    (void)f.cache.caFileNames(QStringLiteral("/"));
    QCOMPARE(f.cacheRows(QStringLiteral("my_site_1")).size(), 1);
    f.session.Disconnect();
    QCOMPARE(f.cacheRows(QStringLiteral("my_site_1")).size(), 0);
}

void tst_Session::ownTablesAreNoSites_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"msSite", "MSSYNC", "tbFold", "tbfile", "msSite ",
                             "incomplete directories", "Unfinished Uploads"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void tst_Session::ownTablesAreNoSites()
{
    QFETCH(QString, name);
    ScriptedServer server;
    QVERIFY(server.start());
    EngineFixture f;
    f.registerSite(QStringLiteral("precious"), server.server(), user, password);
    f.person.expectMessage(name + QStringLiteral(" は接続先の登録名に使用できません"));
    QVERIFY(!f.connectTo(name, server.server(), user, password));
    QCOMPARE(f.session.state(), Session::Open);
    QCOMPARE(server.connections(), 0);
    QCOMPARE(f.database.query(QStringLiteral("Select sName From msSite")).count(), 1);
    QVERIFY(f.person.verify());
}

void tst_Session::reconnectsOnce()
{
    ScriptedServer server;
    QVERIFY(server.start());
    EngineFixture f;
    QVERIFY(f.connectTo(site, server.server(), user, password));
    server.dropConnections();
    bool ok = false;
    f.session.ftReConect(ok);
    QVERIFY(ok);
    QCOMPARE(f.session.state(), Session::Connected);
    QCOMPARE(server.logins(), 2);
    QVERIFY(f.errorLines().isEmpty());
}

void tst_Session::reconnectGivesUpAfterFive()
{
    ScriptedServer server;
    QVERIFY(server.start());
    EngineFixture f;
    QVERIFY(f.connectTo(site, server.server(), user, password));
    server.on("PASS").reply(530, "Login incorrect");
    const int before = server.connections();
    f.person.expectMessage(connectionLost(server.server()));
    bool ok = true;
    f.session.ftReConect(ok);
    QVERIFY(!ok);
    QCOMPARE(server.connections() - before, 5);
    QCOMPARE(f.errorLines(), QStringList({reconnectLine(), reconnectLine(), reconnectLine(),
                                          reconnectLine(), reconnectLine()}));
    QCOMPARE(f.session.state(), Session::Open);
    QVERIFY(f.person.verify());
}

void tst_Session::homeDirectoryDropsBackslash()
{
    ScriptedServer server;
    server.on("PWD").reply(257, "\"/home\\\" is current");
    QVERIFY(server.start());
    EngineFixture f;
    QVERIFY(f.connectTo(site, server.server(), user, password));
    QCOMPARE(f.session.homeDirectory(), QStringLiteral("/home"));
}

void tst_Session::logRestartsOncePerOpen()
{
    EngineFixture f;
    bool ok = true;
    f.session.OpenInternet(QString(), ok, false);
    f.errorLog.LogError(QStringLiteral("kept"));
    f.session.OpenInternet(QString(), ok, false); // state 1: not restarted
    QCOMPARE(f.errorLines(), QStringList(QStringLiteral("kept")));
    f.session.CloseInternet();
    f.session.OpenInternet(QString(), ok, true); // reopened: not restarted
    QCOMPARE(f.errorLines(), QStringList(QStringLiteral("kept")));
    f.session.CloseInternet();
    f.session.OpenInternet(QString(), ok, false);
    QVERIFY(f.errorLines().isEmpty());
}

void tst_Session::cancelledReconnectIsNoError()
{
    ScriptedServer server;
    QVERIFY(server.start());
    EngineFixture f;
    QVERIFY(f.connectTo(site, server.server(), user, password));
    server.on("PASS").hang();
    f.person.cancelNow();
    bool ok = true;
    f.session.ftReConect(ok);
    QVERIFY(!ok);
    QCOMPARE(f.errorLines(), QStringList());
    QCOMPARE(f.session.state(), Session::Open);
    QVERIFY(f.person.verify());
}

void tst_Session::staysPassiveAfterReconnect()
{
    ScriptedServer server;
    server.on("PORT").reply(500, "no");
    QVERIFY(server.start());
    EngineFixture f;
    f.registerSite(site, server.server(), user, password);
    QVERIFY(f.connectTo(site, server.server(), user, password, false));
    QVERIFY(f.session.client().list());
    QVERIFY(f.session.client().list());
    server.dropConnections();
    bool ok = false;
    f.session.ftReConect(ok);
    QVERIFY(ok);
    QVERIFY(f.session.client().list());
    QCOMPARE(server.count("MLSD"), 3);
    QCOMPARE(server.count("PORT"), 1);
}

void tst_Session::passwordStaysOutOfTheSecondLog_data()
{
    QTest::addColumn<QString>("prefix");
    QTest::addColumn<QByteArray>("words");
    QTest::newRow("the reply echoes it") << QString() << QByteArray("Secret-77 is not it");
    QTest::newRow("server text holds it")
        << QStringLiteral("user:Secret-77@") << QByteArray("never asked");
}

void tst_Session::passwordStaysOutOfTheSecondLog()
{
    QFETCH(QString, prefix);
    QFETCH(QByteArray, words);
    ScriptedServer server;
    server.on("PASS").reply(530, words);
    QVERIFY(server.start());
    EngineFixture f;
    const QString hidden = prefix.isEmpty() ? prefix : QStringLiteral("****@");
    f.person.expectMessage(cannotConnect(hidden + server.server()));
    const QString given = prefix.isEmpty() ? QStringLiteral("Secret-77") : password;
    QVERIFY(!f.connectTo(site, prefix + server.server(), user, given));
    QVERIFY(f.events().contains(QLatin1String(" failed: ")));
    QVERIFY2(!f.events().contains(QLatin1String("Secret-77")), qPrintable(f.events()));
    QVERIFY(f.person.verify());
}

void tst_Session::lockedStoreIsNotAWrongName()
{
    ScriptedServer server;
    QVERIFY(server.start());
    EngineFixture f;
    Store other;
    other.open(f.path(QStringLiteral("dbFtp.mdb")));
    other.begin();
    other.exec(QStringLiteral("CREATE TABLE \"the lock\" (a)"));
    f.person.allowMessages();
    QVERIFY(!f.connectTo(site, server.server(), user, password));
    other.rollback();
    QVERIFY(!f.person.messages().isEmpty());
    const QString said = f.person.messages().join(QLatin1Char('\n'));
    QVERIFY2(said.contains(QStringLiteral("ﾃﾞｰﾀﾍﾞｰｽは他のﾌﾟﾛｸﾞﾗﾑが使用中です")), qPrintable(said));
    QVERIFY2(!said.contains(QStringLiteral("登録名")), qPrintable(said));
    QCOMPARE(f.session.state(), Session::Open);
}

void tst_Session::operationInsideAWaitIsLeftOut()
{
    ScriptedServer server;
    server.on("PASS").delay(400);
    QVERIFY(server.start());
    EngineFixture f;
    QList<bool> answers;
    QObject context;
    QTimer::singleShot(150, &context, [&] {
        bool ok = true;
        f.session.Connect(QStringLiteral("other"), server.server(), user, password, true, ok);
        answers.append(ok);
        ok = true;
        f.session.OpenInternet(QString(), ok, false);
        answers.append(ok);
        ok = true;
        f.session.ftReConect(ok);
        f.session.Disconnect();
        f.session.CloseInternet();
        QCOMPARE(f.session.state(), Session::Open);
    });
    QVERIFY(f.connectTo(site, server.server(), user, password));
    QCOMPARE(answers, QList<bool>({false, false}));
    QCOMPARE(f.session.currentSite(), site);
    QCOMPARE(server.connections(), 1);
    for (const char *what : {"Connect", "OpenInternet", "Disconnect", "CloseInternet"})
        QVERIFY2(f.events().contains(QLatin1String(what) + QLatin1String(" left out")), what);
    QVERIFY(f.person.verify());
}

QTEST_GUILESS_MAIN(tst_Session)
#include "tst_Session.moc"
