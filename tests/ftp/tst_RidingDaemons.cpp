// Many small files up, listed and down on the real daemons, plain and under TLS: commands ride, and
// what arrives is what was sent.
#include "ftp/RidingFixture.h"
#include "support/ConnectProxy.h"
#include "support/DaemonTests.h"

#include <QTest>

using namespace venlo;
using venlo::test::Certificates;
using venlo::test::ConnectProxy;
using venlo::test::DaemonTls;
using venlo::test::FtpDaemon;
using venlo::test::RidingClient;

namespace
{
constexpr int fileCount = 50;

QByteArray nameOf(int i)
{
    return "file" + QByteArray::number(i);
}

/// Of all sizes from nothing to some segments.
QByteArray contentOf(int i)
{
    return ("content of " + nameOf(i)).repeated(i * i);
}

/// How often a command was sent before the transfer in front of it had its final reply.
int riders(const QStringList &trace, const QString &verb)
{
    int found = 0;
    bool running = false;
    for (const QString &line : trace) {
        static const QStringList moving{QStringLiteral("> STOR"), QStringLiteral("> RETR"),
                                        QStringLiteral("> MLSD"), QStringLiteral("> LIST")};
        const bool starts = moving.contains(line.section(QLatin1Char(' '), 0, 1));
        if (running && line.section(QLatin1Char(' '), 0, 1) == QStringLiteral("> ") + verb)
            ++found;
        const bool final_ =
            line.startsWith(QLatin1String("< ")) && !line.startsWith(QLatin1String("< 1"));
        running = starts || (running && !final_);
    }
    return found;
}
} // namespace

class tst_RidingDaemons : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void manySmallFiles_data();
    void manySmallFiles();

private:
    Certificates m_certificates;
};

void tst_RidingDaemons::initTestCase()
{
    QString why;
    QVERIFY2(m_certificates.make(&why), qPrintable(why));
}

void tst_RidingDaemons::manySmallFiles_data()
{
    QTest::addColumn<FtpDaemon::Kind>("kind");
    QTest::addColumn<DaemonTls>("tls");
    QTest::addColumn<bool>("proxied");
    for (const FtpDaemon::Kind kind : FtpDaemon::all()) {
        QTest::addRow("%s", FtpDaemon::name(kind)) << kind << DaemonTls::None << false;
        QTest::addRow("%s TLS 1.2", FtpDaemon::name(kind)) << kind << DaemonTls::V12 << false;
        QTest::addRow("%s TLS 1.3", FtpDaemon::name(kind)) << kind << DaemonTls::V13 << false;
        QTest::addRow("%s proxy", FtpDaemon::name(kind)) << kind << DaemonTls::None << true;
    }
}

void tst_RidingDaemons::manySmallFiles()
{
    QFETCH(FtpDaemon::Kind, kind);
    QFETCH(DaemonTls, tls);
    QFETCH(bool, proxied);
    if (skippedWithout(kind))
        return;
    FtpDaemon daemon(kind, tlsOptions(m_certificates, tls));
    QVERIFY(daemon.start());
    ConnectProxy proxy;
    QVERIFY(proxy.start());
    RidingClient f;
    const QString server = (tls == DaemonTls::None ? QString() : QStringLiteral("ftps:"));
    const auto opened = f.client.open({server + daemon.server(), daemon.user(), daemon.password(),
                                       proxied ? proxy.text() : QString(), true,
                                       [](const ServerCertificate &) { return true; }});
    QVERIFY2(opened, qPrintable(opened ? QString() : opened.error().words));
    QVERIFY(f.client.makeDirectory("made") && f.client.changeDirectory("/made"));
    const auto report = [&] { return f.trace.join(QLatin1Char('\n')) + daemon.log(); };

    for (int i = 0; i < fileCount; ++i) {
        const auto put = f.put(nameOf(i), contentOf(i));
        QVERIFY2(put, qPrintable(report()));
        QCOMPARE(f.there.sizeThere, std::optional<qint64>(contentOf(i).size()));
        QVERIFY2(!f.there.timeNotSet, qPrintable(report()));
    }
    for (int i = 0; i < fileCount; ++i)
        QCOMPARE(daemon.file("made/" + nameOf(i)), contentOf(i));
    const auto listing = f.client.list();
    QVERIFY2(listing && listing.value().whole, qPrintable(report()));
    QCOMPARE(listing.value().entries.size(), size_t(fileCount));
    for (int i = 0; i < fileCount; ++i)
        QCOMPARE(f.get(nameOf(i), contentOf(i).size()), contentOf(i));
    QCOMPARE(f.client.modificationTime(nameOf(7)).value(), RidingClient::time());

    QVERIFY2(f.slowings().isEmpty(), qPrintable(report()));
    QCOMPARE(riders(f.trace, QStringLiteral("SIZE")), fileCount - 1);
    QCOMPARE(riders(f.trace, QStringLiteral("EPSV")), 2 * fileCount);
    QVERIFY(f.trace.filter(QStringLiteral("> EPSV")).size() <= 2 * fileCount + 2);
}

QTEST_GUILESS_MAIN(tst_RidingDaemons)
#include "tst_RidingDaemons.moc"
