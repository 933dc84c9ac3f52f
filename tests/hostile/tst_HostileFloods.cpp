// Replies that never end, at every step: bounded in memory and time, and the session is none the
// worse for it.
#include "hostile/HostileWorld.h"
#include "hostile/PeakMemory.h"

#include <QTest>

using namespace venlo;
using venlo::test::HostileWorld;
using venlo::test::PeakMemory;

namespace
{
constexpr qint64 mebi = 1024LL * 1024;
/// What a flood may cost: some buffers of the size of the longest reply.
constexpr qint64 mostMemory = 24 * mebi;

struct Flood {
    const char *name;
    QByteArray block;
    bool again = false; ///< tried in the middle of a session, too
};

const std::vector<Flood> &floods()
{
    static const std::vector<Flood> all{
        {"a line without end", QByteArray(64 * 1024, 'x'), true},
        {"continuation lines", QByteArray("220-and so on\r\n").repeated(4000), true},
        {"lines of one byte", QByteArray("x\n").repeated(30'000)},
        {"empty lines", QByteArray("\r\n").repeated(30'000)},
        {"whole replies", QByteArray("200 fine\r\n").repeated(6000), true},
        {"preliminary replies", QByteArray("120 soon\r\n").repeated(6000), true},
        {"a telnet negotiation", QByteArray("\xff\xfa").append(QByteArray(64 * 1024, 'n'))},
        {"NULs", QByteArray(64 * 1024, '\0')},
        {"random bytes",
         [] {
             QByteArray bytes;
             for (quint32 i = 1, v = 12345; i < 64 * 1024; ++i) {
                 v = v * 1664525U + 1013904223U;
                 bytes += static_cast<char>(v >> 24);
             }
             return bytes;
         }()},
    };
    return all;
}

/// List, get, put and delete; what they do with the answers is theirs.
void workThrough(HostileWorld &world)
{
    const QString pub = QStringLiteral("/pub");
    QString folders;
    QString files;
    bool ok = true;
    world.engine.cache.caDirNames(pub, folders, files);
    world.engine.operations.ftGetFile(pub, QStringLiteral("a.txt"), world.chosen(), ok);
    ok = true;
    world.engine.operations.ftDelFile(pub, QStringLiteral("b.txt"), ok);
    world.engine.session.Disconnect();
}
} // namespace

class tst_HostileFloods : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { HostileWorld::useMemory(); }
    void floodsWhileConnecting_data();
    void floodsWhileConnecting();
    void floodsInstead_data();
    void floodsInstead();
    void aBannerOfAHundredMebibytes_data();
    void aBannerOfAHundredMebibytes();
    void repliesThatNobodyAskedFor_data();
    void repliesThatNobodyAskedFor();
    void aFewWordsUnaskedAreNoLoss();
};

void tst_HostileFloods::floodsWhileConnecting_data()
{
    QTest::addColumn<QByteArray>("verb");
    QTest::addColumn<QByteArray>("block");
    for (const char *verb : {"CONNECT", "AUTH", "USER", "PASS", "FEAT", "OPTS", "TYPE", "PWD"}) {
        for (const Flood &flood : floods())
            QTest::addRow("%s: %s", verb, flood.name) << QByteArray(verb) << flood.block;
    }
}

void tst_HostileFloods::floodsWhileConnecting()
{
    QFETCH(QByteArray, verb);
    QFETCH(QByteArray, block);
    HostileWorld world(HostileWorld::hastyLimits());
    world.server.put("/pub/a.txt", "a");
    world.server.on(verb).endlessReply(block);
    QVERIFY(world.start());
    const PeakMemory memory;
    if (!world.connect())
        QCOMPARE(world.engine.person.messages().size(), 1);
    world.engine.session.CloseInternet();
    QCOMPARE(world.broken(8000), QString());
    QVERIFY2(memory.grown() < mostMemory, qPrintable(QString::number(memory.grown())));
    world.server.script().clear();
    QVERIFY(world.connect());
    QCOMPARE(world.engine.session.state(), Session::Connected);
}

void tst_HostileFloods::floodsInstead_data()
{
    QTest::addColumn<QByteArray>("verb");
    QTest::addColumn<QByteArray>("block");
    for (const char *verb : {"CWD", "EPSV", "MLSD", "RETR", "DELE"}) {
        for (const Flood &flood : floods()) {
            if (flood.again)
                QTest::addRow("%s: %s", verb, flood.name) << QByteArray(verb) << flood.block;
        }
    }
}

void tst_HostileFloods::floodsInstead()
{
    QFETCH(QByteArray, verb);
    QFETCH(QByteArray, block);
    HostileWorld world(HostileWorld::hastyLimits());
    world.server.put("/pub/a.txt", "a");
    QVERIFY(world.start());
    QVERIFY(world.connect());
    world.server.on(verb).endlessReply(block);
    const PeakMemory memory;
    workThrough(world);
    QCOMPARE(world.broken(30'000), QString());
    QVERIFY2(memory.grown() < mostMemory, qPrintable(QString::number(memory.grown())));
    const auto tree = world.chosenTree();
    if (tree.count("a.txt") > 0)
        QCOMPARE(tree.at("a.txt").bytes, QByteArray("a"));
    QVERIFY2(tree.count("a.txt") == 0 || verb != "RETR", "a file came although nothing was sent");
}

void tst_HostileFloods::aBannerOfAHundredMebibytes_data()
{
    QTest::addColumn<QByteArray>("block");
    QTest::newRow("short lines") << QByteArray("220-welcome\r\n").repeated(5000);
    QTest::newRow("long lines") << ("220-" + QByteArray(15'000, 'w') + "\r\n").repeated(4);
    QTest::newRow("one line") << QByteArray(64 * 1024, 'w');
}

void tst_HostileFloods::aBannerOfAHundredMebibytes()
{
    QFETCH(QByteArray, block);
    HostileWorld world;
    world.server.on("CONNECT").flood(block, 100 * mebi).reply(220, "welcome");
    QVERIFY(world.start());
    const PeakMemory memory;
    QVERIFY(!world.connect());
    QVERIFY2(memory.grown() < mostMemory, qPrintable(QString::number(memory.grown())));
    QVERIFY(
        world.engine.person.messages().join(QString()).contains(QStringLiteral("接続できません")));
    QVERIFY(world.engine.errorLogText().contains("InternetConnect"));
    QCOMPARE(world.engine.session.state(), Session::Open);
    QCOMPARE(world.broken(4000), QString());
}

void tst_HostileFloods::repliesThatNobodyAskedFor_data()
{
    QTest::addColumn<QByteArray>("verb");
    for (const char *verb : {"CONNECT", "PASS", "PWD", "CWD", "MLSD", "RETR"})
        QTest::newRow(verb) << QByteArray(verb);
}

void tst_HostileFloods::repliesThatNobodyAskedFor()
{
    QFETCH(QByteArray, verb);
    HostileWorld world(HostileWorld::hastyLimits());
    world.server.put("/pub/a.txt", "a");
    world.server.on(verb).afterwards(QByteArray("200 by the way\r\n").repeated(4000), 4000);
    QVERIFY(world.start());
    const PeakMemory memory;
    if (world.connect())
        workThrough(world);
    QCOMPARE(world.broken(30'000), QString());
    QVERIFY2(memory.grown() < mostMemory + 16 * mebi, // the server's record of what it said
             qPrintable(QString::number(memory.grown())));
}

void tst_HostileFloods::aFewWordsUnaskedAreNoLoss()
{
    HostileWorld world(HostileWorld::hastyLimits());
    QVERIFY(world.start());
    QVERIFY(world.connect());
    world.server.say(QByteArray("200 by the way\r\n").repeated(50));
    const FtpClient &client = world.engine.session.client();
    QTRY_COMPARE(world.said().count(QStringLiteral("(unasked)")), client.isOpen() ? 50 : 0);
    QVERIFY(client.isOpen());
    world.server.say(QByteArray("200 by the way\r\n").repeated(51));
    QTRY_VERIFY(!client.isOpen());
    QVERIFY(world.said().contains(QStringLiteral("nobody asked for")));
    QCOMPARE(world.broken(8000), QString());
}

QTEST_GUILESS_MAIN(tst_HostileFloods)
#include "tst_HostileFloods.moc"
