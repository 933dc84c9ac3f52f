// The client under TLS against the real daemons, which insist on resumed sessions.
#include "ftp/DaemonClient.h"

#include <QTest>

using namespace venlo;
using venlo::test::addDaemons;
using venlo::test::addDaemonsUnderTls;
using venlo::test::Certificates;
using venlo::test::DaemonClient;
using venlo::test::DaemonOptions;
using venlo::test::DaemonTls;
using venlo::test::FtpDaemon;
using Kind = venlo::test::Certificates::Kind;

class tst_TlsDaemons : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void everyOperation_data();
    void everyOperation();
    void manySmallFiles_data() { addDaemonsUnderTls(); }
    void manySmallFiles();
    void implicit_data() { addDaemonsUnderTls(); }
    void implicit();
    void refusedAuthGoesOnPlain_data() { addDaemons(); }
    void refusedAuthGoesOnPlain();
    void refusedAuthFailsWhereTlsIsAMust();
    void neverAsksForTls();
    void certificates_data();
    void certificates();

private:
    [[nodiscard]] DaemonOptions options(DaemonTls tls, Kind kind = Kind::Signed) const
    {
        return tlsOptions(m_certificates, tls, kind);
    }

    Certificates m_certificates;
};

void tst_TlsDaemons::initTestCase()
{
    QString why;
    QVERIFY2(m_certificates.make(&why), qPrintable(why));
    m_certificates.trustAuthority();
}

void tst_TlsDaemons::everyOperation_data()
{
    QTest::addColumn<FtpDaemon::Kind>("kind");
    QTest::addColumn<DaemonTls>("tls");
    QTest::addColumn<bool>("passive");
    for (const FtpDaemon::Kind kind : FtpDaemon::all()) {
        for (const DaemonTls tls : {DaemonTls::V12, DaemonTls::V13}) {
            for (const bool passive : {true, false})
                QTest::addRow("%s %s %s", FtpDaemon::name(kind),
                              tls == DaemonTls::V12 ? "TLS 1.2" : "TLS 1.3",
                              passive ? "passive" : "active")
                    << kind << tls << passive;
        }
    }
}

void tst_TlsDaemons::everyOperation()
{
    QFETCH(FtpDaemon::Kind, kind);
    QFETCH(DaemonTls, tls);
    QFETCH(bool, passive);
    if (skippedWithout(kind))
        return;
    DaemonClient f(kind, options(tls));
    QVERIFY(f.start());
    QVERIFY2(f.login({}, passive), qPrintable(f.words + f.report()));
    QCOMPARE(f.client.security(),
             tls == DaemonTls::V12 ? QStringLiteral("TLSv1.2") : QStringLiteral("TLSv1.3"));
    QCOMPARE(f.client.printDirectory().value(), QStringLiteral("/"));
    QVERIFY(f.client.makeDirectory("made"));
    QVERIFY(f.client.changeDirectory("/made"));
    const auto empty = f.client.list();
    QVERIFY2(empty, qPrintable(empty ? QString() : empty.error().words + f.report()));
    QVERIFY2(empty.value().whole, qPrintable(empty.value().why + f.report()));

    QByteArray large(3 * 1024 * 1024 + 17, 'x');
    for (qsizetype at = 0; at < large.size(); at += 7)
        large[at] = static_cast<char>(at >> 3);
    const auto put = f.put("large.bin", large);
    QVERIFY2(put, qPrintable(put ? QString() : put.error().words + f.report()));
    QCOMPARE(put.value(), large.size());
    QCOMPARE(f.put("empty.txt", {}).value(), 0);
    QVERIFY(f.daemon.file("made/large.bin") == large);
    QVERIFY(f.get("large.bin") == large);
    QCOMPARE(f.get("empty.txt"), QByteArray());
    const auto listing = f.client.list();
    QVERIFY2(listing && listing.value().whole, qPrintable(f.report()));
    QCOMPARE(listing.value().entries.size(), 2U);
    QVERIFY(f.client.rename("large.bin", "renamed.bin"));
    QVERIFY(f.client.removeFile("renamed.bin"));
    QVERIFY(f.client.removeFile("empty.txt"));
    QVERIFY(!f.client.removeFile("empty.txt"));
    QVERIFY(f.client.changeDirectory("/"));
    QVERIFY(f.client.removeDirectory("made"));
    QVERIFY(!f.client.activeUnusable());
    QCOMPARE(f.trace.count(QStringLiteral("> AUTH TLS")), 1);
    f.client.close();
    QCOMPARE(f.client.security(), QString());
}

void tst_TlsDaemons::manySmallFiles()
{
    QFETCH(FtpDaemon::Kind, kind);
    QFETCH(DaemonTls, tls);
    if (skippedWithout(kind))
        return;
    DaemonClient f(kind, options(tls));
    QVERIFY(f.start());
    QVERIFY2(f.login(), qPrintable(f.words));
    for (int i = 0; i < 60; ++i) {
        const QByteArray name = QByteArray::number(i);
        const QByteArray bytes = QByteArray(i * 997, char('a' + i % 26));
        const auto put = f.put(name, bytes);
        QVERIFY2(put, qPrintable(put ? QString() : put.error().words + f.report()));
        QVERIFY2(f.daemon.file(name) == bytes, name.constData());
        QVERIFY2(f.get(name) == bytes, name.constData());
    }
    QCOMPARE(f.client.list().value().entries.size(), 60U);
}

void tst_TlsDaemons::implicit()
{
    QFETCH(FtpDaemon::Kind, kind);
    QFETCH(DaemonTls, tls);
    if (kind == FtpDaemon::Kind::Pureftpd)
        QSKIP("pure-ftpd has no implicit TLS");
    if (skippedWithout(kind))
        return;
    DaemonOptions wanted = options(tls);
    wanted.implicitTls = true;
    DaemonClient f(kind, wanted);
    QVERIFY(f.start());
    QVERIFY2(f.login(QStringLiteral("ftpsi:")), qPrintable(f.words + f.report()));
    QVERIFY(!f.client.security().isEmpty());
    QCOMPARE(f.put("a", "hello").value(), 5);
    QCOMPARE(f.get("a"), QByteArray("hello"));
    QVERIFY(f.client.list().value().whole);
    QVERIFY(!f.trace.contains(QStringLiteral("> AUTH TLS")));
}

void tst_TlsDaemons::refusedAuthGoesOnPlain()
{
    QFETCH(FtpDaemon::Kind, kind);
    if (skippedWithout(kind))
        return;
    DaemonClient f(kind, {});
    QVERIFY(f.start());
    QVERIFY2(f.login(), qPrintable(f.words + f.report()));
    QCOMPARE(f.client.security(), QString());
    QCOMPARE(f.put("a", "hello").value(), 5);
    QVERIFY(f.shown.empty());
    // Once refused, it is not asked for again.
    f.client.close();
    QVERIFY(f.login());
    QCOMPARE(f.trace.count(QStringLiteral("> AUTH TLS")), 1);
}

void tst_TlsDaemons::refusedAuthFailsWhereTlsIsAMust()
{
    if (skippedWithout(FtpDaemon::Kind::Vsftpd))
        return;
    DaemonClient f(FtpDaemon::Kind::Vsftpd, {});
    QVERIFY(f.start());
    const auto opened = f.login(QStringLiteral("ftps:"));
    QVERIFY(!opened);
    QCOMPARE(opened.error().kind, ErrorClass::Refused);
    QVERIFY(f.trace.filter(QStringLiteral("> USER")).isEmpty());
    QVERIFY(!f.login(QStringLiteral("ftpsi:")));
    QVERIFY(f.trace.filter(QStringLiteral("> USER")).isEmpty());
}

void tst_TlsDaemons::neverAsksForTls()
{
    if (skippedWithout(FtpDaemon::Kind::Vsftpd))
        return;
    DaemonClient f(FtpDaemon::Kind::Vsftpd, options(DaemonTls::V13));
    QVERIFY(f.start());
    (void)f.login(QStringLiteral("ftp:")); // vsftpd may insist on TLS before the password
    QVERIFY(f.trace.filter(QStringLiteral("> USER")).size() == 1);
    QVERIFY(!f.trace.contains(QStringLiteral("> AUTH TLS")));
}

void tst_TlsDaemons::certificates_data()
{
    QTest::addColumn<FtpDaemon::Kind>("daemon");
    QTest::addColumn<DaemonTls>("tls");
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QSslError::SslError>("problem");
    const auto rows = [](const char *name, Kind kind, QSslError::SslError problem) {
        for (const FtpDaemon::Kind daemon : FtpDaemon::all()) {
            QTest::addRow("%s %s TLS 1.2", name, FtpDaemon::name(daemon))
                << daemon << DaemonTls::V12 << kind << problem;
            QTest::addRow("%s %s TLS 1.3", name, FtpDaemon::name(daemon))
                << daemon << DaemonTls::V13 << kind << problem;
        }
    };
    rows("signed", Kind::Signed, QSslError::NoError);
    rows("self-signed", Kind::SelfSigned, QSslError::SelfSignedCertificate);
    rows("expired", Kind::Expired, QSslError::CertificateExpired);
    rows("wrong host", Kind::WrongHost, QSslError::HostNameMismatch);
}

void tst_TlsDaemons::certificates()
{
    QFETCH(FtpDaemon::Kind, daemon);
    QFETCH(DaemonTls, tls);
    QFETCH(Kind, kind);
    QFETCH(QSslError::SslError, problem);
    if (skippedWithout(daemon))
        return;
    DaemonClient f(daemon, options(tls, kind));
    QVERIFY(f.start());
    const bool good = problem == QSslError::NoError;
    QCOMPARE(f.login().ok(), good);
    QCOMPARE(f.shown.size(), 1U);
    QCOMPARE(f.shown[0].server, f.daemon.server());
    QCOMPARE(f.shown[0].certificate, m_certificates.certificate(kind));
    QCOMPARE(f.shown[0].fingerprint().size(), 64);
    QCOMPARE(f.shown[0].verified(), good);
    const auto is = [&](const QSslError &error) { return error.error() == problem; };
    QCOMPARE(std::any_of(f.shown[0].problems.begin(), f.shown[0].problems.end(), is), !good);
    if (good)
        return;
    // Nothing secret went to a server that was not believed, and it was not tried without TLS.
    QVERIFY(f.trace.filter(QStringLiteral("> USER")).isEmpty());
    f.accepts = [](const ServerCertificate &) { return true; };
    QVERIFY2(f.login(), qPrintable(f.words));
    QCOMPARE(f.put("a", "hello").value(), 5); // the data connection shows the same certificate
    QCOMPARE(f.get("a"), QByteArray("hello"));
}

QTEST_GUILESS_MAIN(tst_TlsDaemons)
#include "tst_TlsDaemons.moc"
