#include "support/RawClient.h"
#include "support/ScriptedServer.h"

#include <QElapsedTimer>
#include <QTest>

using venlo::test::ListDialect;
using venlo::test::RawClient;
using venlo::test::ScriptedServer;
using venlo::test::ServerOptions;

class tst_ScriptedServer : public QObject
{
    Q_OBJECT

private:
    static QByteArray login(RawClient &client, const ScriptedServer &server)
    {
        return client.login(server.host(), server.port(), server.user(), server.password());
    }

private Q_SLOTS:
    void carriesCommandsOut()
    {
        ScriptedServer server;
        server.put("/a/one", "1111");
        QVERIFY(server.start());
        RawClient client;
        QCOMPARE(login(client, server), QByteArray("230 Welcome"));
        QCOMPARE(client.command("PWD"), QByteArray("257 \"/\" is current"));
        QVERIFY(client.command("CWD a").startsWith("250"));
        QVERIFY(client.command("CWD b").startsWith("550"));
        QCOMPARE(client.command("SIZE one"), QByteArray("213 4"));
        QCOMPARE(client.command("MDTM one"), QByteArray("213 20240506070809"));
        QVERIFY(client.command("MFMT 20200102030405 one").startsWith("213 Modify=20200102030405"));
        QCOMPARE(server.tree().modified("/a/one"),
                 QDateTime(QDate(2020, 1, 2), QTime(3, 4, 5), Qt::UTC));
        QCOMPARE(client.transfer("RETR one"), QByteArray("150 Here it comes / 226 Done"));
        QCOMPARE(client.received(), QByteArray("1111"));
        QCOMPARE(client.transfer("STOR two", "22"), QByteArray("150 Here it comes / 226 Done"));
        QCOMPARE(server.file("/a/two"), QByteArray("22"));
        QVERIFY(client.command("RMD /a").startsWith("550")); // not empty
        QVERIFY(client.command("MKD /q\"q").startsWith("257 \"/q\"\"q\""));
        QVERIFY(client.command("RNFR /a").startsWith("350"));
        QVERIFY(client.command("RNTO /b").startsWith("250"));
        QVERIFY(client.command("DELE /b/one").startsWith("250"));
        QCOMPARE(server.tree().paths(), (QList<QByteArray>{"/b/", "/b/two", "/q\"q/"}));
    }

    void recordsTheDialogue()
    {
        ScriptedServer server;
        QVERIFY(server.start());
        RawClient client;
        QVERIFY(login(client, server).startsWith("230"));
        QVERIFY(client.command("DELE a b").startsWith("550"));
        QCOMPARE(server.commands(), (QList<QByteArray>{"USER user", "PASS pass", "DELE a b"}));
        QCOMPARE(server.verbs().last(), QByteArray("DELE"));
        QCOMPARE(server.count("DELE"), 1);
        QCOMPARE(server.count("DELE", "a b"), 1);
        QCOMPARE(server.count("DELE", "a"), 0);
        QCOMPARE(server.dialogue().first(), QByteArray("1< 220 scripted"));
        QCOMPARE(server.dialogue().last(), QByteArray("1< 550 No such file"));
        QCOMPARE(server.connections(), 1);
        QCOMPARE(server.logins(), 1);
    }

    void refusesAWrongPassword()
    {
        ScriptedServer server;
        QVERIFY(server.start());
        RawClient client;
        QVERIFY(client.login(server.host(), server.port(), server.user(), QStringLiteral("no"))
                    .startsWith("530"));
        QVERIFY(client.command("PWD").startsWith("530"));
        QCOMPARE(server.logins(), 0);
    }

    void listsInEveryDialect_data()
    {
        QTest::addColumn<ListDialect>("dialect");
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("ls -l") << ListDialect::Unix
                               << QByteArray("drwxr-xr-x    2 user     group            4096 "
                                             "May 06  2024 d\r\n"
                                             "-rw-r--r--    1 user     group               3 "
                                             "May 06  2024 f\r\n");
        QTest::newRow("ls -l without minutes")
            << ListDialect::UnixDay
            << QByteArray("drwxr-xr-x    2 user     group            4096 May 06  2024 d\r\n"
                          "-rw-r--r--    1 user     group               3 May 06  2024 f\r\n");
        QTest::newRow("DOS") << ListDialect::Dos
                             << QByteArray("05-06-24  04:08PM       <DIR>          d\r\n"
                                           "05-06-24  04:08PM                    3 f\r\n");
        QTest::newRow("EPLF") << ListDialect::Eplf
                              << QByteArray("+m1714979289,/,\td\r\n+m1714979289,r,s3,\tf\r\n");
    }
    void listsInEveryDialect()
    {
        QFETCH(ListDialect, dialect);
        QFETCH(QByteArray, text);
        ServerOptions options;
        options.dialect = dialect;
        ScriptedServer server(options);
        server.makeFolder("/d");
        server.put("/f", "fff");
        server.put("/.hidden", "h");
        QVERIFY(server.start());
        RawClient client;
        QVERIFY(login(client, server).startsWith("230"));
        QVERIFY(client.transfer("LIST -l /").endsWith("226 Done"));
        QCOMPARE(client.received(), text);
    }

    void showsMinutesOfRecentFiles()
    {
        ScriptedServer server;
        const QDateTime hourAgo = QDateTime::currentDateTimeUtc().addSecs(-3600);
        server.put("/f", "x", hourAgo);
        QVERIFY(server.start());
        RawClient client;
        QVERIFY(login(client, server).startsWith("230"));
        QVERIFY(client.transfer("LIST").endsWith("226 Done"));
        const QString tokyo = hourAgo.addSecs(9 * 3600LL).toString(QStringLiteral("HH:mm"));
        QVERIFY2(client.received().contains(tokyo.toLatin1()), client.received().constData());
    }

    void listsByMlsd()
    {
        ScriptedServer server;
        server.put("/f", "fff");
        server.tree().makeLink("/l", "f");
        server.setRawListing("/odd", "garbage\r\n");
        server.makeFolder("/odd");
        QVERIFY(server.start());
        RawClient client;
        QVERIFY(login(client, server).startsWith("230"));
        QVERIFY(client.transfer("MLSD").endsWith("226 Done"));
        QVERIFY(client.received().contains("modify=20240506070809;size=3;type=file; f\r\n"));
        QVERIFY(client.received().contains("type=OS.unix=slink:f; l\r\n"));
        QVERIFY(client.received().contains("type=cdir; .\r\n"));
        QVERIFY(client.transfer("MLSD /odd").endsWith("226 Done"));
        QCOMPARE(client.received(), QByteArray("garbage\r\n"));
        QVERIFY(client.transfer("MLSD /none").startsWith("550"));
    }

    void answersAsScripted()
    {
        ScriptedServer server;
        server.put("/a", "a");
        server.on("DELE").nth(2).reply(450, "busy\nvery");
        server.on("DELE", "a").once().reply(250, "lie");
        server.on("NOOP").reply(200, "x").afterwards("421 bye\r\n").thenClose();
        QVERIFY(server.start());
        RawClient client;
        QVERIFY(login(client, server).startsWith("230"));
        QCOMPARE(client.command("DELE a"), QByteArray("250 lie"));
        QVERIFY(server.exists("/a"));
        QCOMPARE(client.command("DELE a"), QByteArray("450-busy\n450 very"));
        QCOMPARE(client.command("DELE a"), QByteArray("250 Deleted"));
        QVERIFY(!server.exists("/a"));
        QCOMPARE(client.command("NOOP"), QByteArray("200 x"));
        QCOMPARE(client.reply(), QByteArray("421 bye"));
        QVERIFY(client.isClosed());
    }

    void doesWhatItDenies()
    {
        ScriptedServer server;
        server.on("MKD").reply(550, "no").butDoIt();
        QVERIFY(server.start());
        RawClient client;
        QVERIFY(login(client, server).startsWith("230"));
        QCOMPARE(client.command("MKD d"), QByteArray("550 no"));
        QVERIFY(server.exists("/d"));
    }

    void breaksTransfers_data()
    {
        QTest::addColumn<int>("how");
        QTest::addColumn<QByteArray>("replies");
        QTest::newRow("data ends early, and a good reply")
            << 0 << QByteArray("150 Here it comes / 226 Done");
        QTest::newRow("both connections end") << 1 << QByteArray("150 Here it comes / ");
        QTest::newRow("data connection reset") << 2 << QByteArray("150 Here it comes / 226 Done");
        QTest::newRow("a bad reply behind all data")
            << 3 << QByteArray("150 Here it comes / 451 disk");
        QTest::newRow("no opening reply") << 4 << QByteArray("226 Done");
    }
    void breaksTransfers()
    {
        QFETCH(int, how);
        QFETCH(QByteArray, replies);
        ScriptedServer server;
        server.put("/f", "0123456789");
        auto rule = server.on("RETR");
        switch (how) {
        case 0:
            rule.truncateAfter(4);
            break;
        case 1:
            rule.dropAfterBytes(4);
            break;
        case 2:
            rule.resetAfterBytes(4);
            break;
        case 3:
            rule.completion("451 disk");
            break;
        default:
            rule.opening({});
        }
        QVERIFY(server.start());
        RawClient client;
        QVERIFY(login(client, server).startsWith("230"));
        QCOMPARE(client.transfer("RETR f"), replies);
        if (how == 0 || how == 1)
            QCOMPARE(client.received(), QByteArray("0123"));
        QCOMPARE(client.isClosedNow(), how == 1);
    }

    void keepsHalfAnUpload()
    {
        ScriptedServer server;
        server.on("STOR").dropAfterBytes(3);
        QVERIFY(server.start());
        RawClient client;
        QVERIFY(login(client, server).startsWith("230"));
        QCOMPARE(client.transfer("STOR f", "012345"), QByteArray("150 Here it comes / "));
        QCOMPARE(server.file("/f"), QByteArray("012"));
    }

    void abortsAStalledTransfer()
    {
        ScriptedServer server;
        server.put("/f", "0123456789");
        server.on("RETR").stallAfterBytes(4);
        QVERIFY(server.start());
        RawClient client;
        QVERIFY(login(client, server).startsWith("230"));
        QVERIFY(client.openPassive());
        QVERIFY(client.command("RETR f").startsWith("150"));
        QVERIFY(client
                    .command("\xFF\xF4\xFF\xF2"
                             "ABOR")
                    .startsWith("426"));
        QVERIFY(client.reply().startsWith("226"));
        QVERIFY(client.command("NOOP").startsWith("200"));
        QCOMPARE(server.count("ABOR"), 1);
    }

    void speaksActive()
    {
        ScriptedServer server;
        server.put("/f", "data");
        QVERIFY(server.start());
        RawClient client;
        QVERIFY(login(client, server).startsWith("230"));
        QCOMPARE(client.transferActive("RETR f", false),
                 QByteArray("150 Here it comes / 226 Done"));
        QCOMPARE(client.received(), QByteArray("data"));
        QCOMPARE(client.transferActive("RETR f", true), QByteArray("150 Here it comes / 226 Done"));
        QVERIFY(client.command("PORT 10,0,0,1,4,4").startsWith("501")); // loopback only
    }

    void lacksWhatItIsToldToLack()
    {
        ServerOptions options;
        options.epsv = options.mlsd = options.mdtm = options.size = options.mfmt = false;
        options.utf8 = options.active = false;
        options.pasvHost = "10,9,8,7";
        ScriptedServer server(options);
        QVERIFY(server.start());
        RawClient client;
        QVERIFY(login(client, server).startsWith("230"));
        for (const char *verb :
             {"EPSV", "MLSD", "MDTM x", "SIZE x", "MFMT 1 x", "EPRT x", "PORT x"})
            QVERIFY2(client.command(verb).startsWith("500"), verb);
        QCOMPARE(client.command("FEAT"), QByteArray("211-Features:\n211 End"));
        QVERIFY(client.command("PASV").startsWith("227 Entering Passive Mode (10,9,8,7,"));
    }

    void namesAClosedPort()
    {
        ScriptedServer server;
        server.on("EPSV").closedPort();
        QVERIFY(server.start());
        RawClient client;
        QVERIFY(login(client, server).startsWith("230"));
        QVERIFY(!client.openPassive());
    }

    void closesAfterEachCommand()
    {
        ServerOptions options;
        options.closesAfterEachCommand = true;
        ScriptedServer server(options);
        QVERIFY(server.start());
        RawClient client;
        QVERIFY(login(client, server).startsWith("230"));
        QVERIFY(client.isClosed());
    }

    void speaksUnasked()
    {
        ScriptedServer server;
        QVERIFY(server.start());
        RawClient client;
        QVERIFY(login(client, server).startsWith("230"));
        server.say("421 Timeout\r\n");
        server.dropConnections();
        QCOMPARE(client.reply(), QByteArray("421 Timeout"));
        QVERIFY(client.isClosed());
    }

    void refusesAtTheDoor()
    {
        ScriptedServer server;
        server.on("CONNECT").once().reply(421, "full").thenClose();
        QVERIFY(server.start());
        RawClient first;
        QCOMPARE(first.connectTo(server.host(), server.port()), QByteArray("421 full"));
        QVERIFY(first.isClosed());
        RawClient second;
        QVERIFY(login(second, server).startsWith("230"));
    }

    void stopsAndStartsOnTheSamePort()
    {
        ScriptedServer server;
        QVERIFY(server.start());
        const quint16 port = server.port();
        RawClient first;
        QVERIFY(login(first, server).startsWith("230"));
        server.stop();
        QVERIFY(first.isClosed());
        RawClient refused;
        QVERIFY(refused.connectTo(server.host(), port).isEmpty());
        QVERIFY(server.start());
        QCOMPARE(server.port(), port);
        RawClient second;
        QVERIFY(login(second, server).startsWith("230"));
        QCOMPARE(server.connections(), 2);
    }

    void endsQuicklyWhileItHangs()
    {
        QElapsedTimer timer;
        RawClient client;
        {
            ScriptedServer server;
            server.on("PWD").hang();
            QVERIFY(server.start());
            QVERIFY(login(client, server).startsWith("230"));
            client.send("PWD");
            QTRY_COMPARE(server.count("PWD"), 1);
            timer.start();
        }
        QVERIFY(timer.elapsed() < 2000);
        QVERIFY(client.isClosed());
    }

    void talksForEverUntilTheClientLeaves()
    {
        QElapsedTimer timer;
        ScriptedServer server;
        server.on("FEAT").endlessReply();
        QVERIFY(server.start());
        {
            RawClient client;
            QVERIFY(login(client, server).startsWith("230"));
            client.send("FEAT");
            QTRY_VERIFY(server.dialogue().last().contains("endless"));
            timer.start();
        }
        server.stop();
        QVERIFY(timer.elapsed() < 2000);
    }

    void undoesTelnetDoubling()
    {
        ScriptedServer server;
        QVERIFY(server.start());
        RawClient client;
        QVERIFY(login(client, server).startsWith("230"));
        QVERIFY(client
                    .command("MKD a\xFF\xFF"
                             "b")
                    .startsWith("257 \"/a\xFF\xFF"
                                "b\""));
        QVERIFY(server.exists("/a\xFF"
                              "b"));
    }
};

QTEST_GUILESS_MAIN(tst_ScriptedServer)
#include "tst_ScriptedServer.moc"
