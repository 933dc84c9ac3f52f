// The client against the real daemons: every operation, both modes, both address families.
#include "ftp/DaemonClient.h"

#include <QTest>

using namespace venlo;
using venlo::test::addDaemonsInBothModes;
using venlo::test::DaemonClient;
using venlo::test::DaemonOptions;
using venlo::test::FtpDaemon;
using venlo::test::noise;

class tst_FtpClientDaemons : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyOperation_data() { addDaemonsInBothModes(); }
    void everyOperation();
    void names_data() { addDaemonsInBothModes(); }
    void names();
    void commandsPerSmallFile_data() { addDaemonsInBothModes(); }
    void commandsPerSmallFile();
    void wrongPassword_data() { addDaemonsInBothModes(); }
    void wrongPassword();
    void droppedSession_data() { addDaemonsInBothModes(); }
    void droppedSession();
    void ipv6_data() { addDaemonsInBothModes(); }
    void ipv6();
};

#define FIXTURE(options)                                                                           \
    QFETCH(FtpDaemon::Kind, kind);                                                                 \
    QFETCH(bool, passive);                                                                         \
    if (skippedWithout(kind))                                                                      \
        return;                                                                                    \
    DaemonClient f(kind, options);                                                                 \
    QVERIFY(f.start())

void tst_FtpClientDaemons::everyOperation()
{
    FIXTURE({});
    QVERIFY(f.login({}, passive));
    const auto home = f.client.printDirectory();
    QVERIFY(home);
    QCOMPARE(home.value(), QStringLiteral("/"));
    QVERIFY(f.client.makeDirectory("made"));
    QVERIFY(f.client.changeDirectory("/made"));
    const auto empty = f.client.list();
    QVERIFY(empty);
    QVERIFY2(empty.value().whole, qPrintable(empty.value().why));
    QVERIFY(empty.value().entries.empty());

    const QByteArray large = noise(5 * 1024 * 1024 + 17);
    QCOMPARE(f.put("large.bin", large).value(), large.size());
    QCOMPARE(f.put("empty.txt", {}).value(), 0);
    QCOMPARE(f.daemon.file("made/large.bin"), large);
    QCOMPARE(f.get("large.bin"), large);
    QCOMPARE(f.get("empty.txt"), QByteArray());
    QCOMPARE(f.client.size("large.bin").value(), large.size());

    QVERIFY(f.client.rename("large.bin", "renamed.bin"));
    const auto listing = f.client.list();
    QVERIFY(listing);
    QVERIFY2(listing.value().whole, qPrintable(listing.value().why));
    QStringList names;
    for (const ListedEntry &entry : listing.value().entries)
        names.append(entry.name + QLatin1Char(' ') + QString::number(entry.size));
    names.sort();
    QCOMPARE(names, QStringList({QStringLiteral("empty.txt 0"),
                                 QStringLiteral("renamed.bin %1").arg(large.size())}));

    const QDateTime time(QDate(2024, 2, 29), QTime(1, 2, 0), Qt::UTC);
    QVERIFY(f.client.canSetTime());
    QVERIFY(f.client.setModificationTime("renamed.bin", time));
    QCOMPARE(f.client.modificationTime("renamed.bin").value(), time);

    const auto refused = f.client.removeFile("missing");
    QVERIFY(!refused);
    QCOMPARE(refused.error().kind, ErrorClass::Refused);
    QCOMPARE(refused.error().replyCode, 550);
    QVERIFY(f.client.removeFile("renamed.bin"));
    QVERIFY(f.client.removeFile("empty.txt"));
    QVERIFY(f.client.changeDirectory("/"));
    QVERIFY(f.client.removeDirectory("made"));
    QVERIFY(!f.daemon.exists("made"));
    QVERIFY(!f.client.activeUnusable());
    QCOMPARE(f.verbs().count(QStringLiteral("TYPE")), 1);
}

void tst_FtpClientDaemons::names()
{
    FIXTURE({});
    QVERIFY(f.login({}, passive));
    QList<QByteArray> names{"with  two blanks",
                            "100% sure.txt",
                            "#hash.html",
                            "it's \"quoted\".txt",
                            "日本語のページ.html",
                            "\x93\xfa\x96\x7b.txt",
                            "a&b;c",
                            "plus+minus-",
                            "[x]{y}"};
    if (f.daemon.kind() != FtpDaemon::Kind::Pureftpd)
        names << " leading"
              << "trailing "; // pure-ftpd stores them with "_" by its own rule
    for (const QByteArray &name : std::as_const(names)) {
        const auto put = f.put(name, "content of " + name);
        QVERIFY2(put, name.constData());
        QVERIFY2(f.daemon.exists(name), name.constData());
    }
    const auto listing = f.client.list();
    QVERIFY(listing);
    QVERIFY2(listing.value().whole, qPrintable(listing.value().why));
    for (const QByteArray &name : std::as_const(names)) {
        const auto &entries = listing.value().entries;
        const bool shown = std::any_of(entries.begin(), entries.end(),
                                       [&](const ListedEntry &e) { return e.rawName == name; });
        QVERIFY2(shown, name.constData());
        QCOMPARE(f.get(name), "content of " + name);
        QVERIFY2(f.client.removeFile(name), name.constData());
    }
}

void tst_FtpClientDaemons::commandsPerSmallFile()
{
    FIXTURE({});
    QVERIFY(f.login({}, passive));
    QVERIFY(f.client.changeDirectory("/"));
    const QString prepare = passive ? QStringLiteral("EPSV") : QStringLiteral("PORT");
    f.trace.clear();
    QVERIFY(f.put("one.txt", "one"));
    QVERIFY(f.client.changeDirectory("/"));
    QVERIFY(f.put("two.txt", "two"));
    QCOMPARE(f.get("one.txt"), QByteArray("one"));
    QCOMPARE(f.verbs(), QStringList({prepare, QStringLiteral("STOR"), prepare,
                                     QStringLiteral("STOR"), prepare, QStringLiteral("RETR")}));
}

void tst_FtpClientDaemons::wrongPassword()
{
    FIXTURE({});
    const auto login =
        f.client.open({f.daemon.server(), f.daemon.user(), QStringLiteral("wrong"), {}, passive});
    QVERIFY(!login);
    QCOMPARE(login.error().kind, ErrorClass::Refused);
    QVERIFY(!f.client.isOpen());
    QVERIFY(f.trace.filter(QStringLiteral("wrong")).isEmpty());
}

void tst_FtpClientDaemons::droppedSession()
{
    FIXTURE({});
    QVERIFY(f.login({}, passive));
    f.daemon.dropSessions();
    const auto put = f.put("x.txt", "x");
    QVERIFY(!put);
    QCOMPARE(put.error().kind, ErrorClass::Lost);
    QVERIFY(!f.client.isOpen());
    QVERIFY(f.login({}, passive));
    QCOMPARE(f.put("x.txt", "x").value(), 1);
}

void tst_FtpClientDaemons::ipv6()
{
    DaemonOptions options;
    options.ipv6 = true;
    FIXTURE(options);
    QVERIFY(f.login({}, passive));
    QCOMPARE(f.put("six.txt", "six").value(), 3);
    QCOMPARE(f.get("six.txt"), QByteArray("six"));
    QVERIFY(f.client.list().value().whole);
    const QString prepare = passive ? QStringLiteral("EPSV") : QStringLiteral("EPRT");
    QCOMPARE(f.verbs().count(prepare), 3);
    QVERIFY(!f.client.activeUnusable());
}

QTEST_GUILESS_MAIN(tst_FtpClientDaemons)
#include "tst_FtpClientDaemons.moc"
