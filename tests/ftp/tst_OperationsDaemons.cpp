// The operations against the real daemons: what goes there comes back the same, times included.
#include "ftp/EngineFixture.h"
#include "ftp/RemoteOperations.h"
#include "platform/CodePage.h"
#include "support/DaemonTests.h"
#include "support/Trees.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace venlo;
using venlo::test::addDaemonsInBothModes;
using venlo::test::EngineFixture;
using venlo::test::FtpDaemon;
using venlo::test::noise;
using venlo::test::snapshot;
using venlo::test::Times;
using venlo::test::TreeRow;

namespace
{
struct Fixture : EngineFixture {
    explicit Fixture(FtpDaemon::Kind kind)
        : EngineFixture(ClientLimits{}), daemon(kind), operations(session, cache, person, flags)
    {
    }
    [[nodiscard]] bool start(bool passive)
    {
        if (!daemon.start())
            return false;
        registerSite(QStringLiteral("web"), daemon.server(), daemon.user(), daemon.password());
        return connectTo(QStringLiteral("web"), daemon.server(), daemon.user(), daemon.password(),
                         passive);
    }
    [[nodiscard]] QString at(const QString &name) const { return local.filePath(name); }
    [[nodiscard]] QString server(const QString &name) const
    {
        return daemon.root() + QLatin1Char('/') + name;
    }
    /// Puts a tree there and gets it back into the folder "back".
    void roundTrip(const std::vector<TreeRow> &rows)
    {
        QVERIFY(venlo::test::makeTree(at(QStringLiteral("site")), rows));
        operations.ftPutFold(local.path(), QStringLiteral("site"), QStringLiteral("/"), ok);
        QVERIFY2(ok, qPrintable(events()));
        QCOMPARE(difference(snapshot(at(QStringLiteral("site"))),
                            snapshot(server(QStringLiteral("site")))),
                 QStringList());
        cache.caRefresh(QStringLiteral("/"));
        operations.ftGetFold(at(QStringLiteral("back")), QStringLiteral("site"),
                             QStringLiteral("/"), ok);
        QVERIFY2(ok, qPrintable(events()));
        QCOMPARE(difference(snapshot(at(QStringLiteral("site"))),
                            snapshot(at(QStringLiteral("back/site"))), Times::Minutes),
                 QStringList());
        QCOMPARE(errorLines(), QStringList());
        QCOMPARE(operations.counts().givenUp, 0);
    }

    FtpDaemon daemon;
    RemoteOperations operations;
    QTemporaryDir local;
    bool ok = true;
};

QDateTime minute(int day)
{
    return {QDate(2024, 3, day), QTime(12, 34)};
}
} // namespace

class tst_OperationsDaemons : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void names_data() { addDaemonsInBothModes(); }
    void names();
    void sizes_data() { addDaemonsInBothModes(); }
    void sizes();
    void deepTree_data() { addDaemonsInBothModes(); }
    void deepTree();
    void renameDeleteMakeRemove_data() { addDaemonsInBothModes(); }
    void renameDeleteMakeRemove();
    void namesInCp932_data() { addDaemonsInBothModes(); }
    void namesInCp932();
    void uploadKeepsTheTime_data() { addDaemonsInBothModes(); }
    void uploadKeepsTheTime();
    void survivesDroppedSessions_data() { addDaemonsInBothModes(); }
    void survivesDroppedSessions();
};

#define FIXTURE                                                                                    \
    QFETCH(FtpDaemon::Kind, kind);                                                                 \
    QFETCH(bool, passive);                                                                         \
    if (skippedWithout(kind))                                                                      \
        return;                                                                                    \
    Fixture f(kind);                                                                               \
    QVERIFY(f.start(passive))

void tst_OperationsDaemons::names()
{
    FIXTURE;
    f.roundTrip({{"a b.txt", "blank", minute(1)},
                 {"100%.txt", "percent", minute(2)},
                 {"%41.txt", "percent", minute(2)},
                 {"a#b.txt", "number sign", minute(3)},
                 {"it's.txt", "quote", minute(4)},
                 {"\"x\".txt", "double quote", minute(5)},
                 {"what?.txt", "question mark", minute(6)},
                 {"a*b[c].txt", "wildcards", minute(7)},
                 {"-la", "option", minute(8)},
                 {"日本語 ファイル.html", "Japanese", minute(9)},
                 {"ﾊﾝｶｸ.txt", "half-width", minute(10)},
                 {"表 示/ソ.txt", "the second byte is a backslash in CP932", minute(11)},
                 {"it's #1 100%/x.txt", "folder", minute(12)}});
}

void tst_OperationsDaemons::sizes()
{
    FIXTURE;
    f.roundTrip({{"empty", "", minute(1)},
                 {"one", "1", minute(2)},
                 {"line ends", "a\r\nb\nc\rd", minute(3)},
                 {"all bytes", QByteArray("\0\xff\xf4\xf2\r\n\x1a", 7), minute(4)},
                 {"large.bin", noise(20 * 1024 * 1024 + 3), minute(5)}});
}

void tst_OperationsDaemons::deepTree()
{
    FIXTURE;
    std::vector<TreeRow> rows;
    QByteArray path;
    for (int depth = 0; depth < 30; ++depth) {
        path += "d" + QByteArray::number(depth) + '/';
        rows.push_back({path + "f.txt", path, minute(1 + depth % 28)});
    }
    rows.push_back({path + "empty/"});
    f.roundTrip(rows);
    f.operations.ftRemDir(QStringLiteral("/"), QStringLiteral("site"), f.ok);
    QVERIFY(f.ok);
    QVERIFY(!f.daemon.exists("site"));
    QCOMPARE(f.errorLines(), QStringList());
}

void tst_OperationsDaemons::renameDeleteMakeRemove()
{
    FIXTURE;
    QVERIFY(f.daemon.put("pub/a b.txt", "1"));
    QVERIFY(f.daemon.put("pub/日本.txt", "2"));
    QVERIFY(f.daemon.put("pub/sub/deep/x.txt", "3"));
    const QString pub = QStringLiteral("/pub");
    f.operations.ftRename(pub, QStringLiteral("a b.txt"), QStringLiteral("it's 100%.txt"), false,
                          f.ok);
    f.operations.ftRename(pub, QStringLiteral("sub"), QStringLiteral("下"), true, f.ok);
    f.operations.ftMakeDir(pub, QStringLiteral("新 #1"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.daemon.file("pub/it's 100%.txt"), QByteArray("1"));
    QCOMPARE(f.daemon.file("pub/下/deep/x.txt"), QByteArray("3"));
    QVERIFY(f.daemon.exists("pub/新 #1"));
    f.operations.ftDelFile(pub, QStringLiteral("it's 100%.txt\r日本.txt"), f.ok);
    f.operations.ftRemDir(pub, QStringLiteral("下\r新 #1"), f.ok);
    QVERIFY(f.ok);
    QVERIFY(QDir(f.server(QStringLiteral("pub"))).isEmpty());
    QCOMPARE(f.errorLines(), QStringList());
    f.operations.ftDelFile(pub, QStringLiteral("missing"), f.ok);
    f.operations.ftRemDir(QStringLiteral("/"), QStringLiteral("pub"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.errorLines(),
             QStringList({QStringLiteral("FtpDeleteFile Err: /pub/missing Delete")}));
    QVERIFY(!f.daemon.exists("pub"));
}

void tst_OperationsDaemons::namesInCp932()
{
    FIXTURE;
    // pure-ftpd refuses the backslash that is the second byte of some characters.
    const bool plain = f.daemon.kind() == FtpDaemon::Kind::Pureftpd;
    const QString folder = plain ? QStringLiteral("日本") : QStringLiteral("表示");
    const QString file = plain ? QStringLiteral("テスト") : QStringLiteral("ソフト");
    const QByteArray rawFolder = toSystemText(folder);
    const QByteArray rawFile = toSystemText(file);
    QVERIFY(f.daemon.put(rawFolder + '/' + rawFile, "cp932"));
    f.cache.caRefresh(QStringLiteral("/"));
    f.operations.ftGetFold(f.local.path(), folder, QStringLiteral("/"), f.ok);
    QVERIFY2(f.ok, qPrintable(f.events()));
    QFile got(f.at(folder + QLatin1Char('/') + file));
    QVERIFY2(got.open(QIODevice::ReadOnly), qPrintable(f.events()));
    QCOMPARE(got.readAll(), QByteArray("cp932"));
    // Sent again, it replaces the file it came from instead of adding one in other bytes.
    QVERIFY(venlo::test::makeTree(f.at(folder), {{file.toUtf8(), "newer"}}));
    f.operations.ftPutFile(QLatin1Char('/') + folder, got.fileName(), f.at(folder), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.daemon.file(rawFolder + '/' + rawFile), QByteArray("newer"));
    f.operations.ftRemDir(QStringLiteral("/"), folder, f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.errorLines(), QStringList());
    QVERIFY(!f.daemon.exists(rawFolder));
}

void tst_OperationsDaemons::uploadKeepsTheTime()
{
    FIXTURE;
    QVERIFY(venlo::test::makeTree(f.local.path(), {{"a.txt", "x", minute(17)}}));
    f.operations.ftPutFile(QStringLiteral("/"), f.at(QStringLiteral("a.txt")), f.local.path(),
                           f.ok);
    QVERIFY(f.ok);
    QCOMPARE(QFileInfo(f.server(QStringLiteral("a.txt"))).lastModified(), minute(17));
}

void tst_OperationsDaemons::survivesDroppedSessions()
{
    FIXTURE;
    QVERIFY(f.daemon.put("pub/a.txt", "1"));
    f.cache.caRefresh(QStringLiteral("/"));
    f.daemon.dropSessions();
    f.operations.ftGetFile(QStringLiteral("/pub"), QStringLiteral("a.txt"), f.local.path(), f.ok);
    QVERIFY(f.ok);
    f.daemon.dropSessions();
    f.operations.ftDelFile(QStringLiteral("/pub"), QStringLiteral("a.txt"), f.ok);
    QVERIFY(f.ok);
    QVERIFY(QFile::exists(f.at(QStringLiteral("a.txt"))));
    QVERIFY(!f.daemon.exists("pub/a.txt"));
    QCOMPARE(f.errorLines(), QStringList());
}

QTEST_GUILESS_MAIN(tst_OperationsDaemons)
#include "tst_OperationsDaemons.moc"
