// The client under TLS on servers and lines that do it wrong.
#include "ftp/DaemonClient.h"
#include "ftp/TinyTlsServer.h"
#include "ftp/protocol/DataChannel.h"
#include "support/ConnectProxy.h"
#include "support/ScriptedServer.h"

#include <QElapsedTimer>
#include <QFile>
#include <QSslKey>
#include <QSslServer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>

using namespace venlo;
using namespace std::chrono_literals;
using venlo::test::addDaemonsUnderTls;
using venlo::test::Certificates;
using venlo::test::ConnectProxy;
using venlo::test::DaemonClient;
using venlo::test::DaemonOptions;
using venlo::test::DaemonTls;
using venlo::test::FtpDaemon;
using venlo::test::ScriptedServer;
using venlo::test::TinyTlsServer;

namespace
{
/// Bytes of the TLS record that close_notify is, with the ciphers the daemons agree on.
int closeNotifySize(FtpDaemon::Kind kind, DaemonTls tls)
{
    if (tls == DaemonTls::V13)
        return 24;
    return kind == FtpDaemon::Kind::Pureftpd ? 23 : 31;
}

ClientLimits testLimits()
{
    ClientLimits limits;
    limits.connect = 1s;
    limits.reply = 5s;
    limits.idleData = 5s;
    return limits;
}

/// A client of one scripted server, which knows no TLS.
struct PlainFixture {
    PlainFixture() : waiter([this] { return cancelled; }), client(waiter, testLimits())
    {
        client.setTrace([this](const QString &line) { trace.append(line); });
    }
    [[nodiscard]] Result<void> login(const QString &prefix = {})
    {
        return client.open({prefix + server.server(), server.user(), server.password(), {}});
    }
    ScriptedServer server;
    bool cancelled = false;
    Waiter waiter;
    FtpClient client;
    QStringList trace;
};
} // namespace

class tst_TlsFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void endWithoutCloseNotify_data();
    void endWithoutCloseNotify();
    void wholeThroughAProxy_data() { addDaemonsUnderTls(); }
    void wholeThroughAProxy();
    void dataTowardsAnotherServer_data();
    void dataTowardsAnotherServer();
    void refusals_data();
    void refusals();
    void brokenTlsGoesOnPlain_data();
    void brokenTlsGoesOnPlain();
    void brokenTlsFailsWhereItIsAMust_data() { brokenTlsGoesOnPlain_data(); }
    void brokenTlsFailsWhereItIsAMust();
    void repliesBeforeTheHandshake();
    void silentHandshakeEnds();
    void tlsIsNotGivenUpOnceUsed();
    void protectionRefused_data();
    void protectionRefused();
    void protectionAfterTheLogin();
    void sessionsThatResumeUnder12Only_data();
    void sessionsThatResumeUnder12Only();

private:
    [[nodiscard]] QSslConfiguration serverConfiguration(Certificates::Kind kind) const;
    static void breakTls(ScriptedServer &server, const QString &fault);
    [[nodiscard]] DaemonOptions options(DaemonTls tls) const
    {
        return tlsOptions(m_certificates, tls);
    }

    Certificates m_certificates;
};

void tst_TlsFaults::initTestCase()
{
    QString why;
    QVERIFY2(m_certificates.make(&why), qPrintable(why));
    m_certificates.trustAuthority();
}

void tst_TlsFaults::endWithoutCloseNotify_data()
{
    QTest::addColumn<FtpDaemon::Kind>("kind");
    QTest::addColumn<DaemonTls>("tls");
    QTest::addColumn<int>("swallowed");
    for (const FtpDaemon::Kind kind : FtpDaemon::all()) {
        for (const DaemonTls tls : {DaemonTls::V12, DaemonTls::V13}) {
            const bool old = tls == DaemonTls::V12;
            // All of the file arrives, and only the word that this was all does not.
            for (const int bytes : {1, closeNotifySize(kind, tls), 100})
                QTest::addRow("%s %s, %d bytes", FtpDaemon::name(kind), old ? "TLS 1.2" : "TLS 1.3",
                              bytes)
                    << kind << tls << bytes;
        }
    }
}

void tst_TlsFaults::endWithoutCloseNotify()
{
    QFETCH(FtpDaemon::Kind, kind);
    QFETCH(DaemonTls, tls);
    QFETCH(int, swallowed);
    if (skippedWithout(kind))
        return;
    DaemonClient f(kind, options(tls), testLimits());
    QVERIFY(f.daemon.put("a.txt", QByteArray(50'000, 'a')));
    const QByteArray longName(200, 'n');
    for (int i = 0; i < 100; ++i) // a listing that is longer than what the proxy lets pass
        QVERIFY(f.daemon.put("many/" + longName + QByteArray::number(i), "x"));
    QVERIFY(f.start());
    ConnectProxy proxy;
    QVERIFY(proxy.start());
    proxy.swallowEnd(swallowed);
    QVERIFY2(f.login({}, true, proxy.text()), qPrintable(f.words));
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    const auto got = f.client.retrieve("a.txt", buffer, {});
    QVERIFY2(!got, qPrintable(f.report()));
    QCOMPARE(got.error().kind, ErrorClass::Retry);
    if (swallowed < 100)
        QCOMPARE(buffer.data().size(), 50'000);
    QVERIFY(f.client.changeDirectory("/many"));
    const auto listing = f.client.list();
    QVERIFY(listing);
    QVERIFY(!listing.value().whole);
    if (swallowed < 100)
        QCOMPARE(listing.value().entries.size(), 100U);
    QVERIFY(f.client.changeDirectory("/"));
    // The same connection goes on once the line is good again.
    proxy.swallowEnd(0);
    QCOMPARE(f.get("a.txt").size(), 50'000);
}

void tst_TlsFaults::wholeThroughAProxy()
{
    QFETCH(FtpDaemon::Kind, kind);
    QFETCH(DaemonTls, tls);
    if (skippedWithout(kind))
        return;
    DaemonClient f(kind, options(tls));
    QVERIFY(f.start());
    ConnectProxy proxy;
    QVERIFY(proxy.start());
    QVERIFY2(f.login({}, false, proxy.text()), qPrintable(f.words));
    QVERIFY(!f.client.security().isEmpty());
    const QByteArray bytes(700'000, 'z');
    const auto put = f.put("z", bytes);
    QVERIFY2(put, qPrintable(put ? QString() : put.error().words + f.report()));
    QVERIFY(f.daemon.file("z") == bytes);
    QVERIFY(f.get("z") == bytes);
    QVERIFY(f.client.list().value().whole);
    QCOMPARE(proxy.asked().size(), 4);
}

QSslConfiguration tst_TlsFaults::serverConfiguration(Certificates::Kind kind) const
{
    QFile pem(m_certificates.file(kind));
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    if (pem.open(QIODevice::ReadOnly))
        configuration.setPrivateKey(QSslKey(&pem, QSsl::Rsa));
    configuration.setLocalCertificate(m_certificates.certificate(kind));
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    return configuration;
}

void tst_TlsFaults::dataTowardsAnotherServer_data()
{
    QTest::addColumn<Certificates::Kind>("shown");
    QTest::addColumn<bool>("connected");
    QTest::newRow("the same") << Certificates::Kind::Signed << true;
    QTest::newRow("another, though it is vouched for") << Certificates::Kind::WrongHost << false;
    QTest::newRow("self-signed") << Certificates::Kind::SelfSigned << false;
}

void tst_TlsFaults::dataTowardsAnotherServer()
{
    QFETCH(Certificates::Kind, shown);
    QFETCH(bool, connected);
    QSslServer server;
    server.setSslConfiguration(serverConfiguration(shown));
    QVERIFY(server.listen(QHostAddress::LocalHost));
    QSslConfiguration session = QSslConfiguration::defaultConfiguration();
    session.setPeerVerifyMode(QSslSocket::QueryPeer);
    DataChannel channel(DataChannel::Direction::Send);
    channel.protect({session, QStringLiteral("127.0.0.1"),
                     m_certificates.certificate(Certificates::Kind::Signed)});
    channel.connectTo(QStringLiteral("127.0.0.1"), server.serverPort(), QNetworkProxy::NoProxy);
    QTRY_VERIFY(channel.connected() || channel.failed());
    QCOMPARE(channel.connected(), connected);
    QCOMPARE(channel.wantsBytes(), connected);
    if (!connected)
        QCOMPARE(channel.errorWords(),
                 QStringLiteral("another certificate than that of the control connection"));
}

void tst_TlsFaults::refusals_data()
{
    QTest::addColumn<int>("code");
    for (const int code : {334, 431, 500, 502, 504, 530, 534})
        QTest::addRow("%d", code) << code;
}

void tst_TlsFaults::refusals()
{
    QFETCH(int, code);
    PlainFixture f;
    f.server.on("AUTH").reply(code, "no");
    QVERIFY(f.server.start());
    QVERIFY(f.login());
    QCOMPARE(f.server.connections(), 1);
    QCOMPARE(f.server.verbs().first(2), QList<QByteArray>({"AUTH", "USER"}));
    QCOMPARE(f.client.security(), QString());
    QVERIFY(f.login());
    QCOMPARE(f.server.count("AUTH"), 1);
    PlainFixture must;
    must.server.on("AUTH").reply(code, "no");
    QVERIFY(must.server.start());
    QVERIFY(!must.login(QStringLiteral("ftps:")));
    QCOMPARE(must.server.verbs(), QList<QByteArray>({"AUTH"}));
}

void tst_TlsFaults::brokenTlsGoesOnPlain_data()
{
    QTest::addColumn<QString>("fault");
    for (const char *fault : {"closes at AUTH", "no TLS behind 234", "closes behind 234"})
        QTest::newRow(fault) << QString::fromLatin1(fault);
}

void tst_TlsFaults::breakTls(ScriptedServer &server, const QString &fault)
{
    if (fault == QLatin1String("closes at AUTH"))
        server.on("AUTH").dropBeforeReply();
    else if (fault == QLatin1String("no TLS behind 234"))
        server.on("AUTH").reply(234, "go on");
    else
        server.on("AUTH").reply(234, "go on").thenClose();
}

void tst_TlsFaults::brokenTlsGoesOnPlain()
{
    QFETCH(QString, fault);
    PlainFixture f;
    breakTls(f.server, fault);
    QVERIFY(f.server.start());
    const auto opened = f.login();
    QVERIFY2(opened, qPrintable(f.trace.join(QLatin1Char('\n'))));
    QCOMPARE(f.server.connections(), 2);
    QCOMPARE(f.server.logins(), 1);
    QCOMPARE(f.client.security(), QString());
    QVERIFY(f.trace.contains(QStringLiteral("! TLS does not work with this server: without it")));
    QVERIFY(f.login());
    QCOMPARE(f.server.count("AUTH"), 1);
}

void tst_TlsFaults::brokenTlsFailsWhereItIsAMust()
{
    QFETCH(QString, fault);
    PlainFixture f;
    breakTls(f.server, fault);
    QVERIFY(f.server.start());
    QVERIFY(!f.login(QStringLiteral("ftps:")));
    QCOMPARE(f.server.connections(), 1);
    QCOMPARE(f.server.count("USER"), 0);
    QVERIFY(!f.client.isOpen());
}

void tst_TlsFaults::repliesBeforeTheHandshake()
{
    PlainFixture f;
    f.server.on("AUTH").rawReply("234 go on\r\n200 put there by somebody\r\n");
    QVERIFY(f.server.start());
    const auto opened = f.login();
    QVERIFY(!opened);
    QCOMPARE(opened.error().kind, ErrorClass::Lost);
    QCOMPARE(opened.error().words,
             QStringLiteral("the server sent something before the TLS handshake"));
    QCOMPARE(f.server.count("USER"), 0);
}

void tst_TlsFaults::silentHandshakeEnds()
{
    QTcpServer silent; // takes connections, greets, says 234 and nothing more
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    QObject::connect(&silent, &QTcpServer::newConnection, &silent, [&silent] {
        QTcpSocket *socket = silent.nextPendingConnection();
        socket->write("220 hello\r\n");
        QObject::connect(socket, &QTcpSocket::readyRead, socket, [socket] {
            if (socket->readAll().startsWith("AUTH"))
                socket->write("234 go on\r\n");
        });
    });
    PlainFixture f;
    QElapsedTimer timer;
    timer.start();
    const auto opened = f.client.open({QStringLiteral("127.0.0.1:%1").arg(silent.serverPort()),
                                       QStringLiteral("user"),
                                       QStringLiteral("pass"),
                                       {}});
    QVERIFY(!opened);
    QCOMPARE(opened.error().kind, ErrorClass::Lost);
    QVERIFY2(timer.elapsed() < 10'000, "the limit of a handshake is that of a connect");
    // Cancel does not wait for that limit.
    PlainFixture cancelled;
    QTimer::singleShot(200, &silent, [&cancelled] { cancelled.cancelled = true; });
    const auto stopped =
        cancelled.client.open({QStringLiteral("127.0.0.1:%1").arg(silent.serverPort()),
                               QStringLiteral("user"),
                               QStringLiteral("pass"),
                               {}});
    QVERIFY(!stopped);
    QCOMPARE(stopped.error().kind, ErrorClass::Cancelled);
}

void tst_TlsFaults::tlsIsNotGivenUpOnceUsed()
{
    if (skippedWithout(FtpDaemon::Kind::Proftpd))
        return;
    DaemonOptions with = options(DaemonTls::V13);
    auto first = std::make_unique<DaemonClient>(FtpDaemon::Kind::Proftpd, with);
    QVERIFY(first->start());
    QVERIFY2(first->login(), qPrintable(first->words));
    const QString server = first->daemon.server();
    const quint16 port = first->daemon.port();
    first->daemon.stop();
    DaemonOptions without;
    without.port = port; // the same address, and somebody who knows no TLS
    FtpDaemon other(FtpDaemon::Kind::Proftpd, without);
    QVERIFY(other.start());
    const auto again = first->login();
    QVERIFY(!again);
    QCOMPARE(again.error().kind, ErrorClass::Refused);
    QCOMPARE(first->trace.filter(QStringLiteral("> USER")).size(), 1);
}

void tst_TlsFaults::protectionRefused_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("534") << QByteArray("534 not here");
    QTest::newRow("not before and not after the login") << QByteArray("530 log in first");
}

void tst_TlsFaults::protectionRefused()
{
    QFETCH(QByteArray, reply);
    TinyTlsServer server(serverConfiguration(Certificates::Kind::Signed));
    server.on("PROT", [reply](auto) { return reply; });
    QVERIFY(server.start());
    PlainFixture f;
    const auto open = [&](const QString &prefix) {
        return f.client.open(
            {prefix + server.server(), QStringLiteral("user"), QStringLiteral("pass"), {}});
    };
    QVERIFY(open({}));
    QCOMPARE(f.client.security(), QString()); // no lock where the files travel without TLS
    const auto listing = f.client.list();
    QVERIFY(listing && listing.value().whole);
    QVERIFY(f.trace.contains(QStringLiteral("! data connections stay without TLS")));
    QVERIFY(!open(QStringLiteral("ftps:")));
}

void tst_TlsFaults::protectionAfterTheLogin()
{
    TinyTlsServer server(serverConfiguration(Certificates::Kind::Signed));
    server.on("PROT", [&server](auto) {
        return server.verbs().contains("PASS") ? QByteArray("200 fine")
                                               : QByteArray("530 log in first");
    });
    QVERIFY(server.start());
    PlainFixture f;
    QVERIFY(f.client.open({QStringLiteral("ftps:") + server.server(),
                           QStringLiteral("user"),
                           QStringLiteral("pass"),
                           {}}));
    QVERIFY(!f.client.security().isEmpty());
    const auto listing = f.client.list();
    QVERIFY2(listing, qPrintable(f.trace.join(QLatin1Char('\n'))));
    QVERIFY(listing.value().whole);
    QCOMPARE(listing.value().entries.size(), 1U);
}

void tst_TlsFaults::sessionsThatResumeUnder12Only_data()
{
    QTest::addColumn<QByteArray>("refusal");
    QTest::newRow("522") << QByteArray("522 session reuse required");
    QTest::newRow("425") << QByteArray("425 cannot build the data connection");
}

void tst_TlsFaults::sessionsThatResumeUnder12Only()
{
    QFETCH(QByteArray, refusal);
    TinyTlsServer server(serverConfiguration(Certificates::Kind::Signed));
    server.on("LIST", [refusal](QSsl::SslProtocol version) {
        return version == QSsl::TlsV1_3 ? refusal : QByteArray("150 here it comes");
    });
    QVERIFY(server.start());
    PlainFixture f;
    const auto open = [&] {
        return f.client.open({server.server(), QStringLiteral("user"), QStringLiteral("pass"), {}});
    };
    QVERIFY(open());
    QCOMPARE(f.client.security(), QStringLiteral("TLSv1.3"));
    const auto refused = f.client.list();
    QVERIFY(!refused);
    QCOMPARE(refused.error().kind, ErrorClass::Lost); // whoever asked connects again
    QVERIFY(refused.error().words.contains(QStringLiteral("next with TLS 1.2")));
    QVERIFY(open());
    QCOMPARE(f.client.security(), QStringLiteral("TLSv1.2"));
    const auto listing = f.client.list();
    QVERIFY2(listing, qPrintable(f.trace.join(QLatin1Char('\n'))));
    QVERIFY(listing.value().whole);
    // Only once: a refusal under TLS 1.2 is a refusal.
    server.on("LIST", [refusal](auto) { return refusal; });
    const auto again = f.client.list();
    QVERIFY(!again);
    QVERIFY(again.error().kind != ErrorClass::Lost);
}

QTEST_GUILESS_MAIN(tst_TlsFaults)
#include "tst_TlsFaults.moc"
