// The built program as a scheduled task runs it: no person, no display, real daemons.
#include "e2e/ProgramRun.h"
#include "support/DaemonTests.h"
#include "support/Ports.h"
#include "support/ScriptedServer.h"
#include "support/Trees.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

using namespace venlo;
using namespace venlo::test;

namespace
{

const std::vector<TreeRow> &publishedTree()
{
    static const QDateTime before = QDateTime::currentDateTime().addDays(-3);
    static const std::vector<TreeRow> rows{
        {"index.html", "<title>top</title>", before},
        {"with blank/100% #1 (copy).txt", "percent and hash", before},
        {"日本語/お知らせ.html", "お知らせの本文", before},
        {"日本語/画像/ロゴ.png", QByteArray(200'000, 'p'), before},
        {"a/b/c/d/e/f/deep.txt", "deep enough", before},
        {"empty folder/", {}, before},
        {"empty.txt", {}, before},
    };
    return rows;
}

QString up()
{
    return QStringLiteral("/b syncup|pair");
}

QString down()
{
    return QStringLiteral("/b syncdown|pair");
}

} // namespace

class tst_Unattended : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void upAndDown_data() { addDaemonsInBothModes(); }
    void upAndDown();
    void putAndGet_data() { addDaemons(); }
    void putAndGet();
    void nothingToDo();
    void withADisplay();
    void wrongPassword();
    void serverGone();
    void refusedFileIsStatusOne();
    void unusable_data();
    void unusable();
    void withoutBatchFlagNothingRuns();
    void partOfAVerbRunsNothing();
    void firstStartMakesTheFolder();
    void missingDatabase();
    void interruptedRunEndsInOrder();
    void filesArePrivate();

private:
    [[nodiscard]] bool startDaemon(FtpDaemon::Kind kind);
    std::unique_ptr<FtpDaemon> m_daemon;
};

bool tst_Unattended::startDaemon(FtpDaemon::Kind kind)
{
    m_daemon = std::make_unique<FtpDaemon>(kind);
    return m_daemon->start();
}

void tst_Unattended::upAndDown()
{
    QFETCH(FtpDaemon::Kind, kind);
    QFETCH(bool, passive);
    QVERIFY(startDaemon(kind));
    ProgramRun program;
    QVERIFY(program.prepare());
    program.registerSite(QStringLiteral("site"), m_daemon->server(), m_daemon->user(),
                         m_daemon->password(), passive);
    program.registerPattern(QStringLiteral("pair"), program.localFolder(), QStringLiteral("site"),
                            QStringLiteral("/public/site"));
    QVERIFY(makeTree(program.localFolder(), publishedTree()));
    const QString remote = m_daemon->root() + QStringLiteral("/public/site");
    const auto trees = [&] {
        return difference(snapshot(program.localFolder()), snapshot(remote), Times::Minutes);
    };

    // The first publish makes the folders on the way.
    RunResult run = program.run(up());
    QVERIFY2(run.status == 0, qPrintable(run.errors + run.output));
    QCOMPARE(trees(), QStringList());
    QVERIFY2(run.output.contains(QStringLiteral("お知らせ.html")), qPrintable(run.output));
    QVERIFY(run.output.contains(program.localFolder() +
                                QStringLiteral(" ⇒ /public/site の同期は実行されました")));

    // Both sides change; down makes the local side equal.
    QVERIFY(QFile::remove(program.localFolder() + QStringLiteral("/index.html")));
    QVERIFY(makeTree(program.localFolder(), {{"only here/draft.txt", "a draft, to be gone"}}));
    QVERIFY(m_daemon->put("public/site/日本語/追加.html", "added on the server"));
    QVERIFY(m_daemon->put("public/site/a/b/c/d/e/f/deep.txt", "changed on the server",
                          QDateTime::currentDateTime().addSecs(-120)));
    QVERIFY(QFile::remove(remote + QStringLiteral("/empty.txt")));
    run = program.run(down());
    QVERIFY2(run.status == 0, qPrintable(run.errors + run.output));
    QCOMPARE(trees(), QStringList());
    QVERIFY(!QFileInfo::exists(program.localFolder() + QStringLiteral("/only here")));
    QVERIFY(run.output.contains(QStringLiteral("/public/site ⇒ ") + program.localFolder() +
                                QStringLiteral(" の同期は実行されました")));

    // Nothing is left to do either way.
    for (const QString &verb : {up(), down()}) {
        run = program.run(verb);
        QCOMPARE(run.status, 0);
        QVERIFY2(run.output.contains(QStringLiteral(" の同期は実行されませんでした")),
                 qPrintable(run.output));
    }
    QCOMPARE(trees(), QStringList());
    QCOMPARE(run.errors, QString());
}

void tst_Unattended::putAndGet()
{
    QFETCH(FtpDaemon::Kind, kind);
    QVERIFY(startDaemon(kind));
    ProgramRun program;
    QVERIFY(program.prepare());
    program.registerSite(QStringLiteral("site"), m_daemon->server(), m_daemon->user(),
                         m_daemon->password());
    const QString local = program.localFolder();
    // LIST shows no seconds: a whole minute compares equal on every server.
    const QDateTime yesterday(QDate::currentDate().addDays(-1), QTime(12, 34, 0));
    QVERIFY(makeTree(local, {{"one.txt", "content of one", yesterday},
                             {"二.txt", "content of two", yesterday}}));
    RunResult run = program.run(QStringLiteral("/b put|%1|site|/in/box|one.txt,二.txt").arg(local));
    QVERIFY2(run.status == 0, qPrintable(run.errors));
    QCOMPARE(m_daemon->file("in/box/one.txt"), QByteArray("content of one"));
    QCOMPARE(m_daemon->file("in/box/二.txt"), QByteArray("content of two"));

    // Not newer: skipped, printed as such, and no failure.
    run = program.run(QStringLiteral("/b put|%1|site|/in/box|one.txt").arg(local));
    QCOMPARE(run.status, 0);
    QVERIFY2(run.output.contains(QStringLiteral("ｽｷｯﾌﾟ")), qPrintable(run.output));

    // One missing file: nothing is uploaded.
    QVERIFY(makeTree(local, {{"three.txt", "content of three"}}));
    run = program.run(QStringLiteral("/b put|%1|site|/in/box|three.txt,missing.txt").arg(local));
    QCOMPARE(run.status, 1);
    QVERIFY(!m_daemon->exists("in/box/three.txt"));

    const QString target = program.home() + QStringLiteral("/fetched/here");
    run = program.run(QStringLiteral("/b get|%1|site|/in/box|one.txt,二.txt").arg(target));
    QVERIFY2(run.status == 0, qPrintable(run.errors));
    QFile two(target + QStringLiteral("/二.txt"));
    QVERIFY(two.open(QIODevice::ReadOnly));
    QCOMPARE(two.readAll(), QByteArray("content of two"));

    run = program.run(QStringLiteral("/b get|%1|site|/in/box|no such.txt").arg(target));
    QCOMPARE(run.status, 1);
    QVERIFY2(program.errorLog().contains(QStringLiteral("FtpGetFile Err:/in/box/no such.txt > ")),
             qPrintable(program.errorLog()));
}

void tst_Unattended::nothingToDo()
{
    QVERIFY(startDaemon(FtpDaemon::Kind::Proftpd));
    ProgramRun program;
    QVERIFY(program.prepare());
    program.registerSite(QStringLiteral("site"), m_daemon->server(), m_daemon->user(),
                         m_daemon->password());
    program.registerPattern(QStringLiteral("pair"), program.localFolder(), QStringLiteral("site"),
                            QStringLiteral("/"));
    const RunResult run = program.run(up());
    QCOMPARE(run.status, 0);
    QVERIFY(run.output.contains(QStringLiteral(" の同期は実行されませんでした")));
}

/// The review window opens, runs and closes with nobody in front of it.
void tst_Unattended::withADisplay()
{
    QVERIFY(startDaemon(FtpDaemon::Kind::Proftpd));
    ProgramRun program;
    program.environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    QVERIFY(program.prepare());
    program.registerSite(QStringLiteral("site"), m_daemon->server(), m_daemon->user(),
                         m_daemon->password());
    program.registerPattern(QStringLiteral("pair"), program.localFolder(), QStringLiteral("site"),
                            QStringLiteral("/shown"));
    QVERIFY(makeTree(program.localFolder(), publishedTree()));
    RunResult run = program.run(up());
    QVERIFY2(run.status == 0, qPrintable(run.errors + run.output));
    QCOMPARE(difference(snapshot(program.localFolder()),
                        snapshot(m_daemon->root() + QStringLiteral("/shown")), Times::Minutes),
             QStringList());
    QVERIFY(QFile::remove(m_daemon->root() + QStringLiteral("/shown/index.html")));
    run = program.run(down());
    QVERIFY2(run.status == 0, qPrintable(run.errors + run.output));
    QVERIFY(!QFileInfo::exists(program.localFolder() + QStringLiteral("/index.html")));
}

void tst_Unattended::wrongPassword()
{
    QVERIFY(startDaemon(FtpDaemon::Kind::Vsftpd));
    ProgramRun program;
    QVERIFY(program.prepare());
    program.registerSite(QStringLiteral("site"), m_daemon->server(), m_daemon->user(),
                         QStringLiteral("wrong-secret"));
    program.registerPattern(QStringLiteral("pair"), program.localFolder(), QStringLiteral("site"),
                            QStringLiteral("/site"));
    QVERIFY(makeTree(program.localFolder(), {{"a.txt", "content"}}));
    const RunResult run = program.run(up());
    QCOMPARE(run.status, 1);
    QCOMPARE(run.errors.trimmed(),
             m_daemon->server() + QStringLiteral(" へ接続できません 設定を確認して下さい"));
    QVERIFY(program.errorLog().contains(QStringLiteral("InternetConnect")));
    QVERIFY(!run.output.contains(QStringLiteral("wrong-secret")));
}

void tst_Unattended::serverGone()
{
    ScriptedServer server;
    server.put("/site/keep.txt", "on the server only");
    server.on("MLSD").dropBeforeReply();
    QVERIFY(server.start());
    ProgramRun program;
    QVERIFY(program.prepare());
    program.registerSite(QStringLiteral("site"), server.server(), server.user(), server.password());
    program.registerPattern(QStringLiteral("pair"), program.localFolder(), QStringLiteral("site"),
                            QStringLiteral("/site"));
    QVERIFY(makeTree(program.localFolder(), {{"local.txt", "on this side only"}}));
    for (const QString &verb : {up(), down()}) {
        const RunResult run = program.run(verb);
        QCOMPARE(run.status, 1);
        QVERIFY2(run.errors.contains(QStringLiteral("/site")), qPrintable(run.errors));
    }
    QVERIFY(server.exists("/site/keep.txt"));
    QVERIFY(QFileInfo::exists(program.localFolder() + QStringLiteral("/local.txt")));
    QCOMPARE(server.count("DELE"), 0);
}

void tst_Unattended::refusedFileIsStatusOne()
{
    ScriptedServer server;
    server.makeFolder("/site");
    server.on("STOR", "no.txt").reply(553, "not this one");
    QVERIFY(server.start());
    ProgramRun program;
    QVERIFY(program.prepare());
    program.registerSite(QStringLiteral("site"), server.server(), server.user(), server.password());
    program.registerPattern(QStringLiteral("pair"), program.localFolder(), QStringLiteral("site"),
                            QStringLiteral("/site"));
    QVERIFY(makeTree(program.localFolder(), {{"no.txt", "refused"}, {"yes.txt", "accepted"}}));
    const RunResult run = program.run(up());
    QCOMPARE(run.status, 1);
    QCOMPARE(server.file("/site/yes.txt"), QByteArray("accepted"));
    QCOMPARE(server.count("STOR", "no.txt"), 5);
    QVERIFY2(program.errorLog().contains(QStringLiteral("FtpPutFile Err:")),
             qPrintable(program.errorLog()));
    QVERIFY2(run.output.contains(QStringLiteral("not this one")), qPrintable(run.output));
}

void tst_Unattended::unusable_data()
{
    QTest::addColumn<QString>("argument");
    QTest::newRow("unknown pattern") << "/b syncup|nobody knows it";
    QTest::newRow("unknown site") << "/b put|/tmp|nobody knows it|/x|a.txt";
    QTest::newRow("a verb without arguments is none") << "/b syncup";
    QTest::newRow("no pattern") << "/b syncup|";
    QTest::newRow("a launch record without a display") << "/tmp/no such UT_ACT.pdat";
    QTest::newRow("an unknown verb without a display") << "/b mirror|pair";
    QTest::newRow("put without names") << "/b put|/tmp|site|/x";
    QTest::newRow("get without anything") << "get|";
    QTest::newRow("open without a display") << "open|site";
    QTest::newRow("openp without a display") << "openp|pair";
    QTest::newRow("the window without a display") << "";
}

void tst_Unattended::unusable()
{
    QFETCH(QString, argument);
    ProgramRun program;
    QVERIFY(program.prepare());
    const RunResult run = program.run(argument);
    QCOMPARE(run.status, 2);
    QVERIFY(!run.errors.trimmed().isEmpty());
    QCOMPARE(run.errors.trimmed().count(QLatin1Char('\n')), 0);
}

void tst_Unattended::withoutBatchFlagNothingRuns()
{
    QVERIFY(startDaemon(FtpDaemon::Kind::Pureftpd));
    ProgramRun program;
    QVERIFY(program.prepare());
    program.registerSite(QStringLiteral("site"), m_daemon->server(), m_daemon->user(),
                         m_daemon->password());
    program.registerPattern(QStringLiteral("pair"), program.localFolder(), QStringLiteral("site"),
                            QStringLiteral("/site"));
    QVERIFY(makeTree(program.localFolder(), {{"a.txt", "content"}}));
    const RunResult run = program.run(QStringLiteral("syncup|pair"));
    QCOMPARE(run.status, 1);
    QVERIFY2(run.errors.contains(QStringLiteral(" へ同期を実行します (ﾏｲｺﾝﾋﾟｭｰﾀｰ側に合わせる)")),
             qPrintable(run.errors));
    QVERIFY(!m_daemon->exists("site/a.txt"));
}

void tst_Unattended::partOfAVerbRunsNothing()
{
    ProgramRun program;
    QVERIFY(program.prepare());
    const RunResult run = program.run(QStringLiteral("sync|pair"));
    QCOMPARE(run.status, 2);
    QCOMPARE(run.errors, QString());
    QCOMPARE(run.output, QString());
}

void tst_Unattended::firstStartMakesTheFolder()
{
    ProgramRun program;
    const RunResult run = program.run(QStringLiteral("/b syncup|none"));
    QCOMPARE(run.status, 2);
    for (const char *file : {"dbFtp.mdb", "User.xml"})
        QVERIFY2(QFileInfo::exists(program.userData() + QLatin1Char('/') + QLatin1String(file)),
                 file);
}

void tst_Unattended::missingDatabase()
{
    ProgramRun program;
    QVERIFY(QDir().mkpath(program.userData()));
    const RunResult run = program.run(up());
    QCOMPARE(run.status, 2);
    QCOMPARE(run.errors.trimmed(),
             program.userData() + QStringLiteral("/dbFtp.mdb  が存在しません"));
    QVERIFY(!QFileInfo::exists(program.userData() + QStringLiteral("/dbFtp.mdb")));
}

void tst_Unattended::interruptedRunEndsInOrder()
{
    ScriptedServer server;
    server.makeFolder("/site");
    server.on("STOR", "slow.bin").slow(1000, 20);
    QVERIFY(server.start());
    ProgramRun program;
    QVERIFY(program.prepare());
    program.registerSite(QStringLiteral("site"), server.server(), server.user(), server.password());
    program.registerPattern(QStringLiteral("pair"), program.localFolder(), QStringLiteral("site"),
                            QStringLiteral("/site"));
    QVERIFY(makeTree(program.localFolder(), {{"slow.bin", QByteArray(20'000'000, 's')}}));
    QProcess process;
    process.setProcessEnvironment(program.environment);
    process.start(QStringLiteral(VENLO_PROGRAM), {up()});
    QTRY_VERIFY_WITH_TIMEOUT(server.count("STOR") == 1, 20'000);
    process.terminate();
    QVERIFY(process.waitForFinished(15'000));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 1);
}

void tst_Unattended::filesArePrivate()
{
    QVERIFY(startDaemon(FtpDaemon::Kind::Proftpd));
    ProgramRun program;
    QCOMPARE(program.run(QStringLiteral("/b syncup|none")).status, 2);
    program.registerSite(QStringLiteral("site"), m_daemon->server(), m_daemon->user(),
                         m_daemon->password());
    program.registerPattern(QStringLiteral("pair"), program.localFolder(), QStringLiteral("site"),
                            QStringLiteral("/site"));
    QVERIFY(makeTree(program.localFolder(), {{"a.txt", "content"}}));
    QCOMPARE(program.run(up()).status, 0);
    const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther |
                        QFile::WriteOther | QFile::ExeOther;
    QCOMPARE(QFileInfo(program.userData()).permissions() & others, QFile::Permissions());
    for (const QFileInfo &file : QDir(program.userData()).entryInfoList(QDir::Files)) {
        QVERIFY2((file.permissions() & others) == QFile::Permissions(),
                 qPrintable(file.fileName()));
    }
}

QTEST_GUILESS_MAIN(tst_Unattended)
#include "tst_Unattended.moc"
