// What the session asks about certificates, what it remembers, and what it does with nobody there.
#include "ftp/CertificatePins.h"
#include "ftp/EngineFixture.h"
#include "support/DaemonTests.h"
#include "support/ScriptedServer.h"

#include <QTest>
#include <QTimer>

#include <map>
#include <memory>

using namespace venlo;
using venlo::test::Certificates;
using venlo::test::DaemonOptions;
using venlo::test::DaemonTls;
using venlo::test::EngineFixture;
using venlo::test::FtpDaemon;
using venlo::test::ScriptedPerson;
using venlo::test::ScriptedServer;
using Kind = venlo::test::Certificates::Kind;

namespace
{
const QString site = QStringLiteral("web");

class MemoryStore final : public TrustStore
{
public:
    [[nodiscard]] QString pin(const QString &server) override
    {
        const auto found = pins.find(server);
        return found == pins.end() ? QString() : found->second;
    }
    void remember(const QString &server, const QString &fingerprint) override
    {
        pins[server] = fingerprint;
    }
    std::map<QString, QString> pins;
};

/// A session with a memory for certificates.
struct Fixture : EngineFixture {
    explicit Fixture(MemoryStore &pins) { session.setTrust(pins, flags); }
    [[nodiscard]] bool connectTls(const FtpDaemon &daemon, const QString &prefix = {})
    {
        return connectTo(site, prefix + daemon.server(), daemon.user(), daemon.password());
    }
    void expectCannotConnect(const QString &server)
    {
        person.expectMessage(server + QStringLiteral(" へ接続できません 設定を確認して下さい"));
    }
};

QString fingerprint(const Certificates &certificates, Kind kind)
{
    return ServerCertificate{{}, certificates.certificate(kind), {}}.fingerprint();
}

QString shown(QString fingerprint)
{
    for (qsizetype at = fingerprint.size() - 2; at > 0; at -= 2)
        fingerprint.insert(at, QLatin1Char(':'));
    return fingerprint.toUpper();
}
} // namespace

class tst_SessionTls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void vouchedForNeedsNoQuestion();
    void acceptedIsRemembered();
    void refusedConnectsNowhere();
    void questionTexts_data();
    void questionTexts();
    void changedPinIsAnotherQuestion();
    void changedPinRefused();
    void reconnectDoesNotAskAgain();
    void reconnectAsksAboutAnother();
    void unattendedFirstCertificate();
    void unattendedMustHaveIt_data();
    void unattendedMustHaveIt();
    void unattendedPinnedIsFine();
    void unattendedChangedPin_data();
    void unattendedChangedPin();
    void unattendedReconnect();
    void refusedAuthIsAskedOnce();
    void operationInsideTheQuestionIsLeftOut();
    void pathsHoldTheServerText();
    void namesOfACertificateAreOneLineEach();

private:
    [[nodiscard]] std::unique_ptr<FtpDaemon> daemon(Kind kind, quint16 port = 0,
                                                    DaemonTls tls = DaemonTls::V13) const;
    [[nodiscard]] QString question(const FtpDaemon &daemon, Kind kind,
                                   const QString &pinned = {}) const;

    Certificates m_certificates;
};

void tst_SessionTls::initTestCase()
{
    QString why;
    if (!FtpDaemon::available(FtpDaemon::Kind::Proftpd, &why))
        QSKIP(qPrintable(why));
    QVERIFY2(m_certificates.make(&why), qPrintable(why));
    m_certificates.trustAuthority();
}

std::unique_ptr<FtpDaemon> tst_SessionTls::daemon(Kind kind, quint16 port, DaemonTls tls) const
{
    DaemonOptions options = tlsOptions(m_certificates, tls, kind);
    options.port = port;
    auto made = std::make_unique<FtpDaemon>(FtpDaemon::Kind::Proftpd, options);
    (void)made->start();
    return made;
}

QString tst_SessionTls::question(const FtpDaemon &daemon, Kind kind, const QString &pinned) const
{
    const QSslError::SslError error = kind == Kind::Expired     ? QSslError::CertificateExpired
                                      : kind == Kind::WrongHost ? QSslError::HostNameMismatch
                                                                : QSslError::SelfSignedCertificate;
    return certificateQuestion(
        {daemon.server(), m_certificates.certificate(kind), {QSslError(error)}}, pinned);
}

void tst_SessionTls::vouchedForNeedsNoQuestion()
{
    MemoryStore pins;
    Fixture f(pins);
    const auto server = daemon(Kind::Signed);
    QVERIFY(f.connectTls(*server));
    QCOMPARE(f.session.security(), QStringLiteral("TLSv1.3"));
    QVERIFY(pins.pins.empty());
    f.session.Disconnect();
    QCOMPARE(f.session.security(), QString());
    QVERIFY(f.connectTls(*server, QStringLiteral("ftps:")));
    QCOMPARE(f.session.server(), QStringLiteral("ftps:") + server->server());
    QVERIFY(f.person.verify());
}

void tst_SessionTls::acceptedIsRemembered()
{
    MemoryStore pins;
    const auto server = daemon(Kind::SelfSigned, 0, DaemonTls::V12);
    {
        Fixture f(pins);
        f.person.expectQuestion(question(*server, Kind::SelfSigned), true);
        QVERIFY(f.connectTls(*server));
        QCOMPARE(f.session.security(), QStringLiteral("TLSv1.2"));
        QVERIFY(f.person.verify());
        f.session.Disconnect();
    }
    QCOMPARE(pins.pin(server->server()), fingerprint(m_certificates, Kind::SelfSigned));
    Fixture next(pins);
    QVERIFY(next.connectTls(*server));
    QVERIFY(next.person.verify());
}

void tst_SessionTls::refusedConnectsNowhere()
{
    MemoryStore pins;
    Fixture f(pins);
    const auto server = daemon(Kind::SelfSigned);
    f.person.expectQuestion(question(*server, Kind::SelfSigned), false);
    f.expectCannotConnect(server->server());
    QVERIFY(!f.connectTls(*server));
    QCOMPARE(f.session.state(), Session::Open);
    QCOMPARE(f.errorLines(), QStringList(QStringLiteral("InternetConnect")));
    QVERIFY(pins.pins.empty());
    QVERIFY2(!f.events().contains(QStringLiteral("> USER")), "nothing goes on without TLS");
    QVERIFY(f.person.verify());
}

void tst_SessionTls::questionTexts_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("reason");
    QTest::addColumn<QString>("subject");
    QTest::addColumn<QString>("issuer");
    const QString authority = QStringLiteral("CN=Test Authority, O=Test");
    QTest::newRow("self-signed") << Kind::SelfSigned << QStringLiteral("自己署名の証明書です")
                                 << QStringLiteral("CN=self, O=Test")
                                 << QStringLiteral("CN=self, O=Test");
    QTest::newRow("expired") << Kind::Expired << QStringLiteral("有効期限が切れています")
                             << QStringLiteral("CN=server, O=Test") << authority;
    QTest::newRow("wrong host") << Kind::WrongHost << QStringLiteral("別のｻｰﾊﾞｰの証明書です")
                                << QStringLiteral("CN=server, O=Test") << authority;
}

void tst_SessionTls::questionTexts()
{
    QFETCH(Kind, kind);
    QFETCH(QString, reason);
    QFETCH(QString, subject);
    QFETCH(QString, issuer);
    MemoryStore pins;
    Fixture f(pins);
    const auto server = daemon(kind);
    const QString until = m_certificates.certificate(kind).expiryDate().toLocalTime().toString(
        QStringLiteral("yyyy/MM/dd hh:mm"));
    const QStringList lines{server->server() + QStringLiteral(" の証明書を確認できません"),
                            QString(),
                            QStringLiteral("・") + reason,
                            QString(),
                            QStringLiteral("所有者: ") + subject,
                            QStringLiteral("発行者: ") + issuer,
                            QStringLiteral("有効期限: ") + until,
                            QStringLiteral("SHA-256: ") + shown(fingerprint(m_certificates, kind)),
                            QString(),
                            QStringLiteral("この証明書を信頼して接続しますか?")};
    f.person.expectQuestion(lines.join(QLatin1Char('\r')), true);
    QVERIFY(f.connectTls(*server));
    QVERIFY(f.person.verify());
}

void tst_SessionTls::changedPinIsAnotherQuestion()
{
    MemoryStore pins;
    Fixture f(pins);
    const auto server = daemon(Kind::OtherSelfSigned);
    const QString before = fingerprint(m_certificates, Kind::SelfSigned);
    const QString now = fingerprint(m_certificates, Kind::OtherSelfSigned);
    pins.remember(server->server(), before);
    const QString text = question(*server, Kind::OtherSelfSigned, before);
    QVERIFY(text.startsWith(server->server() +
                            QStringLiteral(" の証明書が以前に確認したものと違います\r")));
    QVERIFY(text.contains(QStringLiteral("\rSHA-256: ") + shown(now)));
    QVERIFY(text.contains(QStringLiteral("\r以前のSHA-256: ") + shown(before)));
    QVERIFY(text.endsWith(QStringLiteral("\r新しい証明書を信頼して接続しますか?")));
    f.person.expectQuestion(text, true);
    QVERIFY(f.connectTls(*server));
    QCOMPARE(pins.pin(server->server()), now);
    QVERIFY(f.person.verify());
}

void tst_SessionTls::changedPinRefused()
{
    MemoryStore pins;
    Fixture f(pins);
    const auto server = daemon(Kind::OtherSelfSigned);
    const QString before = fingerprint(m_certificates, Kind::SelfSigned);
    pins.remember(server->server(), before);
    f.person.expectQuestion(question(*server, Kind::OtherSelfSigned, before), false);
    f.expectCannotConnect(server->server());
    QVERIFY(!f.connectTls(*server));
    QCOMPARE(pins.pin(server->server()), before);
    QVERIFY(f.person.verify());
}

void tst_SessionTls::reconnectDoesNotAskAgain()
{
    EngineFixture f; // without a memory: what was accepted holds for the connect
    const auto server = daemon(Kind::SelfSigned);
    f.person.expectQuestion(question(*server, Kind::SelfSigned), true);
    QVERIFY(f.connectTo(site, server->server(), server->user(), server->password()));
    server->dropSessions();
    bool ok = false;
    f.session.ftReConect(ok);
    QVERIFY(ok);
    QCOMPARE(f.session.security(), QStringLiteral("TLSv1.3"));
    QVERIFY(f.person.verify());
    f.session.Disconnect();
    f.person.expectQuestion(question(*server, Kind::SelfSigned), true);
    QVERIFY(f.connectTo(site, server->server(), server->user(), server->password()));
    QVERIFY(f.person.verify());
}

void tst_SessionTls::reconnectAsksAboutAnother()
{
    MemoryStore pins;
    Fixture f(pins);
    auto server = daemon(Kind::Signed);
    const quint16 port = server->port();
    QVERIFY(f.connectTls(*server));
    server.reset();
    server = daemon(Kind::SelfSigned, port);
    // Vouched for before and not now is a change too. Five attempts ask once.
    f.person.expectQuestion(
        question(*server, Kind::SelfSigned, fingerprint(m_certificates, Kind::Signed)), false);
    f.person.expectMessage(server->server() +
                           QStringLiteral(" へ接続が切断されました　再度起動後実行して下さい"));
    bool ok = true;
    f.session.ftReConect(ok);
    QVERIFY(!ok);
    QCOMPARE(f.session.state(), Session::Open);
    QCOMPARE(f.errorLines().size(), 5);
    QVERIFY(f.person.verify());
}

void tst_SessionTls::unattendedFirstCertificate()
{
    MemoryStore pins;
    Fixture f(pins);
    f.flags.batch = true;
    const auto server = daemon(Kind::SelfSigned);
    QVERIFY(f.connectTls(*server));
    QCOMPARE(f.session.security(), QStringLiteral("TLSv1.3"));
    QVERIFY2(pins.pins.empty(), "nobody looked at it");
    QVERIFY(f.events().contains(
        QStringLiteral("certificate used without anything that vouches for it")));
    QVERIFY(f.events().contains(fingerprint(m_certificates, Kind::SelfSigned)));
    QVERIFY(f.person.verify());
    f.session.Disconnect();
    QVERIFY(f.connectTls(*server, QStringLiteral("ftp:")) || f.session.state() == Session::Open);
    QCOMPARE(f.session.security(), QString());
}

void tst_SessionTls::unattendedMustHaveIt_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::newRow("self-signed") << Kind::SelfSigned;
    QTest::newRow("expired") << Kind::Expired;
    QTest::newRow("wrong host") << Kind::WrongHost;
}

void tst_SessionTls::unattendedMustHaveIt()
{
    QFETCH(Kind, kind);
    MemoryStore pins;
    Fixture f(pins);
    f.flags.batch = true;
    const auto server = daemon(kind);
    const QString text = QStringLiteral("ftps:") + server->server();
    f.expectCannotConnect(text);
    QVERIFY(!f.connectTls(*server, QStringLiteral("ftps:")));
    QCOMPARE(f.errorLines(), QStringList(QStringLiteral("InternetConnect")));
    QVERIFY(f.events().contains(QStringLiteral("certificate refused, nothing vouches for it")));
    QVERIFY(!f.events().contains(QStringLiteral("> USER")));
    QVERIFY(pins.pins.empty());
    QVERIFY(f.person.verify());
}

void tst_SessionTls::unattendedPinnedIsFine()
{
    MemoryStore pins;
    Fixture f(pins);
    f.flags.batch = true;
    const auto server = daemon(Kind::SelfSigned);
    pins.remember(server->server(), fingerprint(m_certificates, Kind::SelfSigned));
    QVERIFY(f.connectTls(*server, QStringLiteral("ftps:")));
    QVERIFY(f.person.verify());
}

void tst_SessionTls::unattendedChangedPin_data()
{
    QTest::addColumn<QString>("prefix");
    QTest::newRow("plain server text") << QString();
    QTest::newRow("ftps") << QStringLiteral("ftps:");
}

void tst_SessionTls::unattendedChangedPin()
{
    QFETCH(QString, prefix);
    MemoryStore pins;
    Fixture f(pins);
    f.flags.batch = true;
    const auto server = daemon(Kind::OtherSelfSigned);
    const QString before = fingerprint(m_certificates, Kind::SelfSigned);
    pins.remember(server->server(), before);
    f.expectCannotConnect(prefix + server->server());
    QVERIFY(!f.connectTls(*server, prefix));
    QCOMPARE(f.errorLines(), QStringList(QStringLiteral("InternetConnect")));
    QCOMPARE(pins.pin(server->server()), before);
    QVERIFY(!f.events().contains(QStringLiteral("> USER")));
    QVERIFY(f.person.verify());
}

void tst_SessionTls::unattendedReconnect()
{
    MemoryStore pins;
    Fixture f(pins);
    f.flags.batch = true;
    auto server = daemon(Kind::SelfSigned);
    const quint16 port = server->port();
    QVERIFY(f.connectTls(*server));
    server->dropSessions();
    bool ok = false;
    f.session.ftReConect(ok);
    QVERIFY(ok);
    server.reset();
    server = daemon(Kind::OtherSelfSigned, port);
    f.person.expectMessage(server->server() +
                           QStringLiteral(" へ接続が切断されました　再度起動後実行して下さい"));
    f.session.ftReConect(ok);
    QVERIFY(!ok);
    QVERIFY(f.person.verify());
}

void tst_SessionTls::refusedAuthIsAskedOnce()
{
    ScriptedServer server;
    QVERIFY(server.start());
    EngineFixture f;
    QVERIFY(f.connectTo(site, server.server(), server.user(), server.password()));
    QCOMPARE(f.session.security(), QString());
    server.dropConnections();
    bool ok = false;
    f.session.ftReConect(ok);
    QVERIFY(ok);
    QCOMPARE(server.logins(), 2);
    QCOMPARE(server.count("AUTH"), 1);
    f.session.Disconnect();
    QVERIFY(f.connectTo(site, server.server(), server.user(), server.password()));
    QCOMPARE(server.count("AUTH"), 2);
    f.session.Disconnect();
    QVERIFY(f.connectTo(site, QStringLiteral("ftp:") + server.server(), server.user(),
                        server.password()));
    QCOMPARE(server.count("AUTH"), 2);
}

void tst_SessionTls::operationInsideTheQuestionIsLeftOut()
{
    /// A person who presses something else while the question stands there.
    class Restless final : public TrustStore
    {
    public:
        [[nodiscard]] QString pin(const QString & /*server*/) override
        {
            session->Connect(QStringLiteral("other"), QStringLiteral("h"), QString(), QString(),
                             true, ok);
            session->CloseInternet();
            return fingerprint;
        }
        void remember(const QString & /*server*/, const QString & /*fingerprint*/) override {}
        Session *session = nullptr;
        QString fingerprint;
        bool ok = true;
    };
    EngineFixture f;
    Restless store;
    store.session = &f.session;
    store.fingerprint = fingerprint(m_certificates, Kind::SelfSigned);
    f.session.setTrust(store, f.flags);
    const auto server = daemon(Kind::SelfSigned);
    QVERIFY(f.connectTo(site, server->server(), server->user(), server->password()));
    QVERIFY(!store.ok);
    QCOMPARE(f.session.state(), Session::Connected);
    QCOMPARE(f.session.currentSite(), site);
    QVERIFY(f.events().contains(QStringLiteral("Connect left out")));
    QVERIFY(f.events().contains(QStringLiteral("CloseInternet left out")));
}

void tst_SessionTls::pathsHoldTheServerText()
{
    MemoryStore pins;
    Fixture f(pins);
    const auto server = daemon(Kind::Signed);
    QVERIFY(server->put("sub/a.txt", "hello"));
    server->own();
    const QString text = QStringLiteral("ftps:") + server->server();
    f.registerSite(site, text, server->user(), server->password());
    QVERIFY(f.connectTls(*server, QStringLiteral("ftps:")));
    QString dir = text + QStringLiteral("/sub");
    f.cache.sjNormDir(dir);
    QCOMPARE(dir, QStringLiteral("/sub"));
    QVERIFY(!f.cache.refusesPath(text + QStringLiteral("/sub")));
    (void)f.cache.caFileNames(text + QStringLiteral("/sub"));
    QCOMPARE(f.cacheRows(site).size(), 1);
    QVERIFY(f.cacheRows(site).constFirst().startsWith(QStringLiteral("/sub|")));
    QVERIFY(f.cacheRows(site).constFirst().contains(QStringLiteral("|a.txt|")));
}

void tst_SessionTls::namesOfACertificateAreOneLineEach()
{
    const auto text = certificateQuestion(
        {QStringLiteral("h:21"),
         m_certificates.certificate(Kind::SelfSigned),
         {QSslError(QSslError::SelfSignedCertificate), QSslError(QSslError::SelfSignedCertificate),
          QSslError(QSslError::HostNameMismatch)}},
        {});
    QCOMPARE(text.count(QStringLiteral("自己署名の証明書です")), 1);
    QCOMPARE(text.count(QStringLiteral("・")), 2);
    QCOMPARE(text.count(QLatin1Char('\r')), 10);
}

QTEST_GUILESS_MAIN(tst_SessionTls)
#include "tst_SessionTls.moc"
