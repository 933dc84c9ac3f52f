// Accepted certificates among the settings.
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "platform/CodePage.h"
#include "startup/PinnedCertificates.h"
#include "startup/settings/SettingsFile.h"
#include "support/ScriptedPerson.h"

using namespace venlo;
using venlo::test::ScriptedPerson;

namespace
{
const QString one(64, QLatin1Char('1'));
const QString two(64, QLatin1Char('e'));

/// The settings of one run of the program.
struct Run {
    explicit Run(const QTemporaryDir &folder) : settings(person), pins(settings)
    {
        settings.GetTxt(folder.filePath(QStringLiteral("User.xml")), loaded);
    }
    ScriptedPerson person;
    bool loaded = false;
    yIni settings;
    PinnedCertificates pins;
};

QString text(const QTemporaryDir &folder)
{
    QFile file(folder.filePath(QStringLiteral("User.xml")));
    return file.open(QIODevice::ReadOnly) ? fromSystemText(file.readAll()) : QString();
}
} // namespace

class tst_PinnedCertificates : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rememberedAtOnce();
    void everyServerHasItsOwn_data();
    void everyServerHasItsOwn();
    void otherSettingsStay();
    void onlyFingerprintsCount_data();
    void onlyFingerprintsCount();
};

void tst_PinnedCertificates::rememberedAtOnce()
{
    const QTemporaryDir folder;
    Run first(folder);
    QVERIFY(first.loaded);
    QCOMPARE(first.pins.pin(QStringLiteral("ftp.example.com:21")), QString());
    first.pins.remember(QStringLiteral("ftp.example.com:21"), one);
    // Another run reads the file while the first one still goes on, as after a crash of it.
    Run second(folder);
    QCOMPARE(second.pins.pin(QStringLiteral("ftp.example.com:21")), one);
    QCOMPARE(second.pins.pin(QStringLiteral("FTP.Example.com:21")), one);
    second.pins.remember(QStringLiteral("ftp.example.com:21"), two);
    QCOMPARE(second.pins.pin(QStringLiteral("ftp.example.com:21")), two);
    QCOMPARE(Run(folder).pins.pin(QStringLiteral("ftp.example.com:21")), two);
    QCOMPARE(text(folder).count(QStringLiteral("<証明書>")), 1);
}

void tst_PinnedCertificates::everyServerHasItsOwn_data()
{
    QTest::addColumn<QString>("server");
    for (const char *server :
         {"h:21", "h:990", "h.21:1", "[::1]:21", "my_host:21", "日本語.example:21",
          "\xf0\xa0\xae\xb7.example:21", "127.0.0.1:2121"})
        QTest::newRow(server) << QString::fromUtf8(server);
}

void tst_PinnedCertificates::everyServerHasItsOwn()
{
    QFETCH(QString, server);
    const QTemporaryDir folder;
    Run run(folder);
    run.pins.remember(QStringLiteral("h:2"), two);
    run.pins.remember(server, one);
    run.pins.remember(QStringLiteral("h:211"), two);
    Run next(folder);
    QCOMPARE(next.pins.pin(server), one);
    QCOMPARE(next.pins.pin(QStringLiteral("h:2")), two);
    QVERIFY(!PinnedCertificates::keyOf(server).contains(QLatin1Char('<')));
    QVERIFY(next.person.verify());
}

void tst_PinnedCertificates::otherSettingsStay()
{
    const QTemporaryDir folder;
    Run run(folder);
    run.settings.GetGtx(QStringLiteral("画面"));
    run.settings.SetVal(QStringLiteral("Left"), 120);
    run.settings.SetGtx();
    run.pins.remember(QStringLiteral("h:21"), one);
    Run next(folder);
    next.settings.GetGtx(QStringLiteral("画面"));
    QCOMPARE(next.settings.vGtVal(QStringLiteral("Left"), 0).value().toInt(), 120);
    QCOMPARE(next.pins.pin(QStringLiteral("h:21")), one);
}

void tst_PinnedCertificates::onlyFingerprintsCount_data()
{
    QTest::addColumn<QString>("value");
    QTest::newRow("empty") << QString();
    QTest::newRow("short") << one.left(63);
    QTest::newRow("long") << one + QLatin1Char('1');
    QTest::newRow("no digits") << QString(64, QLatin1Char('g'));
    QTest::newRow("a line end behind it") << one + QLatin1Char('\n');
    QTest::newRow("a tag") << QStringLiteral("</証明書>");
}

void tst_PinnedCertificates::onlyFingerprintsCount()
{
    QFETCH(QString, value);
    const QTemporaryDir folder;
    Run run(folder);
    run.pins.remember(QStringLiteral("h:21"), value);
    QVERIFY(!text(folder).contains(QStringLiteral("h_003a21")));
    run.settings.GetGtx(QStringLiteral("証明書"));
    run.settings.SetVal(QStringLiteral("h_003a21"), value);
    run.settings.SetGtx();
    QCOMPARE(run.pins.pin(QStringLiteral("h:21")), QString());
}

QTEST_GUILESS_MAIN(tst_PinnedCertificates)
#include "tst_PinnedCertificates.moc"
