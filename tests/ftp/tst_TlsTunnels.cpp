// TLS through proxies, and through a line that ends or falls silent at any byte.
#include "ftp/DaemonClient.h"
#include "support/TunnelProxy.h"

#include <QElapsedTimer>
#include <QTest>

#include <algorithm>

using namespace venlo;
using namespace std::chrono_literals;
using venlo::test::Certificates;
using venlo::test::DaemonClient;
using venlo::test::DaemonOptions;
using venlo::test::DaemonTls;
using venlo::test::FtpDaemon;
using venlo::test::TunnelProxy;

namespace
{
constexpr int manyFiles = 300;
const QByteArray &content()
{
    static const QByteArray bytes(60'000, 'c');
    return bytes;
}

ClientLimits shortLimits()
{
    ClientLimits limits;
    limits.connect = 1500ms;
    limits.reply = 1500ms;
    limits.idleData = 1500ms;
    return limits;
}
} // namespace

class tst_TlsTunnels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void throughAProxy_data();
    void throughAProxy();
    void theServersNameCounts_data();
    void theServersNameCounts();
    void wrongProxyLogin();
    void cutAnywhere_data();
    void cutAnywhere();

private:
    [[nodiscard]] DaemonOptions options(DaemonTls tls,
                                        Certificates::Kind kind = Certificates::Kind::Signed) const
    {
        return tlsOptions(m_certificates, tls, kind);
    }
    [[nodiscard]] Result<void> open(FtpClient &client, const QString &proxy) const;
    void checkAll(FtpClient &client, const QByteArray &name, const TunnelProxy &proxy) const;

    Certificates m_certificates;
    std::unique_ptr<FtpDaemon> m_daemon; ///< of cutAnywhere
};

void tst_TlsTunnels::initTestCase()
{
    QString why;
    if (!FtpDaemon::available(FtpDaemon::Kind::Proftpd, &why))
        QSKIP(qPrintable(why));
    QVERIFY2(m_certificates.make(&why), qPrintable(why));
    m_certificates.trustAuthority();
}

void tst_TlsTunnels::throughAProxy_data()
{
    QTest::addColumn<FtpDaemon::Kind>("kind");
    QTest::addColumn<QString>("proxy");
    QTest::addColumn<QString>("prefix");
    QTest::addColumn<DaemonTls>("tls");
    for (const FtpDaemon::Kind kind : FtpDaemon::all()) {
        for (const char *proxy : {"http", "socks5", "socks5 with a login"}) {
            for (const DaemonTls tls : {DaemonTls::V12, DaemonTls::V13}) {
                for (const char *prefix : {"", "ftps:", "ftpsi:"}) {
                    const bool implicit = QByteArray(prefix) == "ftpsi:";
                    if (implicit && kind == FtpDaemon::Kind::Pureftpd)
                        continue; // it cannot
                    QTest::addRow("%s %s TLS 1.%d '%s'", FtpDaemon::name(kind), proxy,
                                  tls == DaemonTls::V12 ? 2 : 3, prefix)
                        << kind << QString::fromLatin1(proxy) << QString::fromLatin1(prefix) << tls;
                }
            }
        }
    }
}

void tst_TlsTunnels::throughAProxy()
{
    QFETCH(FtpDaemon::Kind, kind);
    QFETCH(QString, proxy);
    QFETCH(QString, prefix);
    QFETCH(DaemonTls, tls);
    if (skippedWithout(kind))
        return;
    DaemonOptions with = options(tls);
    with.implicitTls = prefix == QLatin1String("ftpsi:");
    DaemonClient f(kind, with);
    QVERIFY(f.start());
    TunnelProxy tunnels;
    QVERIFY(tunnels.start());
    if (proxy.contains(QLatin1String("login")))
        tunnels.requireLogin("taro", "himitsu");
    const QString text = proxy == QLatin1String("http") ? tunnels.http() : tunnels.socks();
    QVERIFY2(f.login(prefix, false, text), qPrintable(f.words + f.report()));
    QVERIFY(!f.client.security().isEmpty());
    QVERIFY(f.shown.back().verified());
    const auto put = f.put("c", content());
    QVERIFY2(put, qPrintable(put ? QString() : put.error().words + f.report()));
    QVERIFY(f.daemon.file("c") == content());
    QVERIFY(f.get("c") == content());
    const auto listing = f.client.list();
    QVERIFY(listing && listing.value().whole);
    // Control and the three data connections, and none beside the proxy.
    QCOMPARE(tunnels.asked().size(), 4);
}

void tst_TlsTunnels::theServersNameCounts_data()
{
    QTest::addColumn<bool>("socks");
    QTest::addColumn<Certificates::Kind>("certificate");
    QTest::addColumn<bool>("fits");
    for (const bool socks : {false, true}) {
        const char *name = socks ? "socks5" : "http";
        QTest::addRow("%s, the server's", name) << socks << Certificates::Kind::WrongHost << true;
        QTest::addRow("%s, the proxy's", name) << socks << Certificates::Kind::Signed << false;
    }
}

/// The proxy is asked for "elsewhere.example" and stands itself on 127.0.0.1.
void tst_TlsTunnels::theServersNameCounts()
{
    QFETCH(bool, socks);
    QFETCH(Certificates::Kind, certificate);
    QFETCH(bool, fits);
    DaemonClient f(FtpDaemon::Kind::Proftpd, options(DaemonTls::V13, certificate));
    QVERIFY(f.start());
    TunnelProxy tunnels;
    QVERIFY(tunnels.start());
    const QString server = QStringLiteral("elsewhere.example:%1").arg(f.daemon.port());
    const auto opened = f.client.open({server, f.daemon.user(), f.daemon.password(),
                                       socks ? tunnels.socks() : tunnels.http(), true,
                                       [&f](const ServerCertificate &shown) {
                                           f.shown.push_back(shown);
                                           return shown.verified();
                                       }});
    QCOMPARE(opened.ok(), fits);
    QCOMPARE(tunnels.asked().constFirst(), server.toLatin1());
    QCOMPARE(f.shown.size(), 1U);
    QCOMPARE(f.shown.front().server, server);
    if (!fits) {
        QCOMPARE(f.shown.front().problems.constFirst().error(), QSslError::HostNameMismatch);
        return;
    }
    const auto listing = f.client.list();
    QVERIFY2(listing && listing.value().whole, qPrintable(f.report()));
}

void tst_TlsTunnels::wrongProxyLogin()
{
    DaemonClient f(FtpDaemon::Kind::Proftpd, options(DaemonTls::V13));
    QVERIFY(f.start());
    TunnelProxy tunnels;
    QVERIFY(tunnels.start());
    tunnels.requireLogin("taro", "himitsu");
    QString text = tunnels.socks();
    QVERIFY(
        !f.login({}, true, text.replace(QStringLiteral("himitsu"), QStringLiteral("Wrong-77"))));
    QVERIFY(!f.words.isEmpty());
    QVERIFY2(!f.words.contains(QStringLiteral("Wrong-77")), qPrintable(f.words));
    QVERIFY(f.trace.filter(QStringLiteral("Wrong-77")).isEmpty());
    QVERIFY(tunnels.asked().isEmpty());
}

void tst_TlsTunnels::cutAnywhere_data()
{
    using Kind = TunnelProxy::Fault::Kind;
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<int>("tunnel");
    QTest::addColumn<int>("bytes");
    const std::array names{"closed", "reset", "silent"};
    // Most of a place's time is waiting for a line that fell silent: each place in one of the three
    // ways, in all of them where that is asked for.
    const int step = qEnvironmentVariableIsSet("VENLO_ALL_FAULTS") ? 1 : 3;
    int place = 0;
    for (const Kind kind : {Kind::Close, Kind::Reset, Kind::Stall}) {
        const auto row = [&](const char *what, int tunnel, int bytes) {
            if (place++ % step != 0)
                return;
            QTest::addRow("%s %s after %d", what, names.at(static_cast<size_t>(kind)), bytes)
                << kind << tunnel << bytes;
        };
        for (const int bytes : {0, 50, 150, 400, 1500, 2500, 3200, 3600, 4000, 4500, 5000, 6000})
            row("control", 0, bytes);
        for (const int bytes : {0, 100, 400, 700, 1000, 5'000, 20'000})
            row("list", 1, bytes);
        for (const int bytes : {0, 100, 400, 700, 1000, 20'000, 60'000, 60'900})
            row("get", 2, bytes);
        for (const int bytes : {0, 100, 400, 700, 1000, 20'000, 60'000, 60'900})
            row("put", 3, bytes);
    }
}

Result<void> tst_TlsTunnels::open(FtpClient &client, const QString &proxy) const
{
    return client.open({QStringLiteral("ftps:") + m_daemon->server(),
                        m_daemon->user(),
                        m_daemon->password(),
                        proxy,
                        true,
                        {}});
}

/// Each of list, get and put either has done the whole of it or says that it has not.
void tst_TlsTunnels::checkAll(FtpClient &client, const QByteArray &name,
                              const TunnelProxy &proxy) const
{
    const auto opened = [&] { return client.isOpen() || open(client, proxy.http()).ok(); };
    if (opened() && client.changeDirectory("/many")) {
        const auto listing = client.list();
        if (listing && listing.value().whole)
            QCOMPARE(listing.value().entries.size(), static_cast<size_t>(manyFiles));
    }
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    if (opened() && client.retrieve("/c", buffer, {}))
        QVERIFY(buffer.data() == content());
    QBuffer source;
    source.setData(content());
    source.open(QIODevice::ReadOnly);
    if (!opened() || !client.store(name, source, {}))
        return;
    // This daemon says 226 to what ended without close_notify; its size tells, as it tells the
    // program, which asks for it behind every upload.
    const auto size = client.size(name);
    if (size && size.value() == content().size())
        QVERIFY(m_daemon->file(name.mid(1)) == content());
}

void tst_TlsTunnels::cutAnywhere()
{
    QFETCH(TunnelProxy::Fault::Kind, kind);
    QFETCH(int, tunnel);
    QFETCH(int, bytes);
    if (!m_daemon) {
        m_daemon = std::make_unique<FtpDaemon>(FtpDaemon::Kind::Proftpd, options(DaemonTls::V13));
        QVERIFY(m_daemon->put("c", content()));
        for (int i = 0; i < manyFiles; ++i)
            QVERIFY(m_daemon->put("many/" + QByteArray(60, 'n') + QByteArray::number(i), "x"));
        QString why;
        QVERIFY2(m_daemon->start(&why), qPrintable(why));
    }
    TunnelProxy proxy;
    QVERIFY(proxy.start());
    proxy.setFault({kind, tunnel, bytes});
    Waiter waiter([] { return false; });
    FtpClient client(waiter, shortLimits());
    QStringList trace;
    client.setTrace([&trace](const QString &line) { trace.append(line); });
    QElapsedTimer timer;
    timer.start();
    const QByteArray name = "/put " + QByteArray(QTest::currentDataTag());
    checkAll(client, name, proxy);
    QVERIFY2(timer.elapsed() < 30'000, qPrintable(trace.join(QLatin1Char('\n'))));
    // A line that is good again is enough.
    proxy.clearFault();
    FtpClient next(waiter, shortLimits());
    next.setTrace([&trace](const QString &line) { trace.append(line); });
    QVERIFY(open(next, proxy.http()));
    checkAll(next, name, proxy);
    QVERIFY2(m_daemon->file(name.mid(1)) == content(), qPrintable(trace.join(QLatin1Char('\n'))));
    if (bytes < 1000)
        QVERIFY2(proxy.hits() > 0, qPrintable(trace.join(QLatin1Char('\n'))));
}

QTEST_GUILESS_MAIN(tst_TlsTunnels)
#include "tst_TlsTunnels.moc"
