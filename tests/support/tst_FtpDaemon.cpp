#include "support/DaemonTests.h"
#include "support/Ports.h"
#include "support/RawClient.h"

#include <QFileInfo>
#include <QTest>
#include <QTimeZone>

using venlo::test::addDaemons;
using venlo::test::DaemonOptions;
using venlo::test::FtpDaemon;
using venlo::test::hasIpv6Loopback;
using venlo::test::RawClient;

class tst_FtpDaemon : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void storesAndRetrieves_data() { addDaemons(); }
    void storesAndRetrieves()
    {
        QFETCH(FtpDaemon::Kind, kind);
        if (skippedWithout(kind))
            return;
        FtpDaemon daemon(kind);
        QVERIFY(daemon.put("made by the test/old", "before"));
        QVERIFY(daemon.start());

        RawClient client;
        const QByteArray login =
            client.login(daemon.host(), daemon.port(), daemon.user(), daemon.password());
        QVERIFY2(login.startsWith("230"), login.constData());
        QVERIFY(client.command("TYPE I").startsWith("200"));
        QVERIFY(client.command("PWD").startsWith("257 \"/\""));
        QVERIFY(client.transfer("STOR made by the test/new", "twelve bytes").contains(" / 226"));
        QCOMPARE(daemon.file("made by the test/new"), QByteArray("twelve bytes"));
        QVERIFY(client.transfer("RETR made by the test/new").contains(" / 226"));
        QCOMPARE(client.received(), QByteArray("twelve bytes"));
        QVERIFY(client.command("DELE made by the test/old").startsWith("250"));
        QVERIFY(!daemon.exists("made by the test/old"));
        QVERIFY(client.command("MKD \x83\x65").startsWith("257")); // no UTF-8
        QVERIFY(daemon.exists("\x83\x65"));
        QVERIFY(client.command("RNFR made by the test/new").startsWith("350"));
        QVERIFY(client.command("RNTO x").startsWith("250"));
        QCOMPARE(daemon.file("x"), QByteArray("twelve bytes"));
    }

    void setsAndShowsTimesInUtc_data() { addDaemons(); }
    void setsAndShowsTimesInUtc()
    {
        QFETCH(FtpDaemon::Kind, kind);
        if (skippedWithout(kind))
            return;
        FtpDaemon daemon(kind);
        const QDateTime time(QDate(2020, 2, 29), QTime(23, 59, 58), Qt::UTC);
        QVERIFY(daemon.put("f", "x", time));
        QVERIFY(daemon.start());
        RawClient client;
        QVERIFY(client.login(daemon.host(), daemon.port(), daemon.user(), daemon.password())
                    .startsWith("230"));
        QCOMPARE(client.command("MDTM f"), QByteArray("213 20200229235958"));
        const QByteArray feat = client.command("FEAT");
        QCOMPARE(feat.contains("MLS"), kind != FtpDaemon::Kind::Vsftpd);
        QCOMPARE(feat.contains("UTF8"), kind != FtpDaemon::Kind::Vsftpd);
        const QByteArray set = feat.contains("MFMT") ? "MFMT" : "MDTM";
        QVERIFY(client.command(set + " 20190101120000 f").startsWith("213"));
        const QFileInfo info(daemon.root() + QLatin1String("/f"));
        QCOMPARE(info.lastModified().toUTC(), QDateTime(QDate(2019, 1, 1), QTime(12, 0), Qt::UTC));
    }

    void refusesAWrongPassword_data() { addDaemons(); }
    void refusesAWrongPassword()
    {
        QFETCH(FtpDaemon::Kind, kind);
        if (skippedWithout(kind))
            return;
        FtpDaemon daemon(kind);
        QVERIFY(daemon.start());
        RawClient client;
        QVERIFY(client.login(daemon.host(), daemon.port(), daemon.user(), QStringLiteral("wrong"))
                    .startsWith("530"));
    }

    void speaksIpv6_data() { addDaemons(); }
    void speaksIpv6()
    {
        QFETCH(FtpDaemon::Kind, kind);
        if (skippedWithout(kind))
            return;
        if (!hasIpv6Loopback())
            QSKIP("no ::1 on this machine");
        DaemonOptions options;
        options.ipv6 = true;
        FtpDaemon daemon(kind, options);
        QVERIFY(daemon.put("f", "six"));
        QVERIFY(daemon.start());
        RawClient client;
        QVERIFY(client.login(daemon.host(), daemon.port(), daemon.user(), daemon.password())
                    .startsWith("230"));
        QVERIFY(client.transfer("RETR f").contains(" / 226"));
        QCOMPARE(client.received(), QByteArray("six"));
    }

    void listsInTheZoneItIsTold_data() { addDaemons(); }
    void listsInTheZoneItIsTold()
    {
        QFETCH(FtpDaemon::Kind, kind);
        if (skippedWithout(kind))
            return;
        DaemonOptions options;
        options.localListTimes = true;
        FtpDaemon daemon(kind, options);
        const QDateTime now = QDateTime::currentDateTimeUtc().addDays(-1);
        QVERIFY(daemon.put("f", "x", now));
        QVERIFY(daemon.start());
        RawClient client;
        QVERIFY(client.login(daemon.host(), daemon.port(), daemon.user(), daemon.password())
                    .startsWith("230"));
        QVERIFY(client.transfer("LIST").contains(" / 226"));
        const QString tokyo = now.addSecs(9 * 3600LL).toString(QStringLiteral("HH:mm"));
        QVERIFY2(client.received().contains(tokyo.toLatin1()), client.received().constData());
    }

    void endsWithItsSessions_data() { addDaemons(); }
    void endsWithItsSessions()
    {
        QFETCH(FtpDaemon::Kind, kind);
        if (skippedWithout(kind))
            return;
        FtpDaemon daemon(kind);
        QVERIFY(daemon.start());
        const quint16 port = daemon.port();
        const auto login = [&daemon](RawClient &client) {
            return client.login(daemon.host(), daemon.port(), daemon.user(), daemon.password());
        };
        RawClient first;
        QVERIFY(login(first).startsWith("230"));
        daemon.dropSessions();
        QVERIFY(first.isClosed());
        QVERIFY(daemon.isRunning());
        RawClient second;
        QVERIFY(login(second).startsWith("230"));
        daemon.stop();
        QVERIFY(second.isClosed());
        QVERIFY(!daemon.isRunning());
        QVERIFY(daemon.start());
        QCOMPARE(daemon.port(), port);
        RawClient third;
        QVERIFY(login(third).startsWith("230"));
    }
};

QTEST_GUILESS_MAIN(tst_FtpDaemon)
#include "tst_FtpDaemon.moc"
