#include "sync/Comparison.h"

#include "startup/ConsoleFrontEnd.h"
#include "support/ScriptedServer.h"
#include "sync/SyncWorld.h"

#include <QDir>
#include <QTest>

using namespace venlo;
using namespace venlo::test;

namespace
{
const QString pub = QStringLiteral("/pub");
const QDateTime noon(QDate(2024, 5, 6), QTime(3, 0, 10), Qt::UTC);

/// Does something while it is asked, as a window event would.
class AskingDesk : public ConsoleFrontEnd
{
public:
    using ConsoleFrontEnd::ConsoleFrontEnd;
    bool question(const QString & /*text*/) override
    {
        ++questions;
        if (questions == 1 && asked)
            asked();
        return true;
    }
    std::function<void()> asked;
    int questions = 0;
};
} // namespace

/// What the work tables hold after a comparison.
class tst_Comparison : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void marks_data();
    void marks();
    void rootRowWithoutItsParentInTheCache();
    void minutesAndSizes();
    void secondsTakeNoPart();
    void letterCaseIsOneRow();
    void theServersRoot();
    void emptyLocalFolder();
    void timesMeetWhatTheTransferLeaves();
    void dayOnlyTimesTakeTheMinute();
    void dayOnlyTimesFarApartStay();
    void checks_data();
    void checks();
    void aSecondOneMeanwhileDoesNothing();
    void confirmation_data();
    void confirmation();
    void cancelledAtTheQuestion();
    void waitTexts();
    void cancelledDuringTheWalk();
    void temporaryDownloadsAreLeftOut();
    void aFailedComparisonKeepsTheTables();

private:
    void connectAll();
    void put(const char *path, const QByteArray &bytes, const QDateTime &modified = noon);
    void write(const std::vector<TreeRow> &rows);

    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<SyncWorld> m_world;
};

void tst_Comparison::init()
{
    m_server = std::make_unique<ScriptedServer>();
    m_world = std::make_unique<SyncWorld>();
    m_server->makeFolder("/pub");
}

void tst_Comparison::cleanup()
{
    QCOMPARE(m_world->person.openWaits(), 0);
    m_world.reset();
    m_server.reset();
}

void tst_Comparison::connectAll()
{
    QVERIFY(m_server->start());
    m_world->registerSite(m_server->server(), m_server->user(), m_server->password());
    QVERIFY(m_world->connectToSite());
    (void)m_world->cache.caSubFolds(QStringLiteral("/")); // as a pane shows it
}

void tst_Comparison::put(const char *path, const QByteArray &bytes, const QDateTime &modified)
{
    m_server->put(path, bytes, modified);
}

void tst_Comparison::write(const std::vector<TreeRow> &rows)
{
    QVERIFY(makeTree(m_world->local(), rows));
}

void tst_Comparison::marks_data()
{
    QTest::addColumn<bool>("down");
    QTest::addColumn<QString>("expected");
    QTest::newRow("up: the FTP side is made equal") << false
                                                    << QStringLiteral("FD .|L|F|比較\n"
                                                                      "FD /both|L|F|比較\n"
                                                                      "FD /far||F|削除\n"
                                                                      "FD /far/deep||F|削除\n"
                                                                      "FD /near|L||追加\n"
                                                                      "FL .|both.txt|L10|F11|比較\n"
                                                                      "FL .|far.txt|0|F7|削除\n"
                                                                      "FL .|near.txt|L8|0|追加\n"
                                                                      "FL /far/deep|d|0|F2|削除\n"
                                                                      "FL /near|n|L3|0|追加\n");
    QTest::newRow("down: the local side is made equal")
        << true
        << QStringLiteral("FD .|L|F|比較\n"
                          "FD /both|L|F|比較\n"
                          "FD /far||F|追加\n"
                          "FD /far/deep||F|追加\n"
                          "FD /near|L||削除\n"
                          "FL .|both.txt|L10|F11|比較\n"
                          "FL .|far.txt|0|F7|追加\n"
                          "FL .|near.txt|L8|0|削除\n"
                          "FL /far/deep|d|0|F2|追加\n"
                          "FL /near|n|L3|0|削除\n");
}

void tst_Comparison::marks()
{
    QFETCH(bool, down);
    QFETCH(QString, expected);
    put("/pub/both.txt", QByteArray(10, 'b'));
    put("/pub/far.txt", QByteArray(6, 'f'));
    put("/pub/far/deep/d", "d");
    m_server->makeFolder("/pub/both");
    put("/publication/other.txt", "not ours");
    write({{"both.txt", QByteArray(10, 'b')},
           {"near.txt", QByteArray(8, 'n')},
           {"both/"},
           {"near/n", "nnn"}});
    connectAll();
    QVERIFY(m_world->compare(down, pub).ok);
    QCOMPARE(m_world->tables(), expected);
}

void tst_Comparison::rootRowWithoutItsParentInTheCache()
{
    connectAll();
    m_world->database.run(QStringLiteral("Delete From site"));
    QVERIFY(m_world->compare(false, pub).ok);
    QCOMPARE(m_world->tables(), QStringLiteral("FD .|L||追加\n"));
    QCOMPARE(m_world->plan(true, pub), QStringLiteral("    ./\n"));
}

void tst_Comparison::minutesAndSizes()
{
    put("/pub/a", QByteArray(1000, 'a'));
    write({{"a", QByteArray(1000, 'a'), noon}});
    connectAll();
    QVERIFY(m_world->compare(false, pub).ok);
    const Rows row =
        m_world->database.query(QStringLiteral("Select sUL, nSL, sUF, nSF From tbFile"));
    QCOMPARE(row.count(), 1);
    QCOMPARE(row.at(0, 0).toString(), QStringLiteral("24/05/06 12:00"));
    QCOMPARE(row.at(1, 0).toInt(), 1000);
    QCOMPARE(row.at(2, 0).toString(), QStringLiteral("24/05/06 12:00"));
    QVERIFY2(row.at(3, 0).toInt() == 1001, "the cache counts one byte more");
}

void tst_Comparison::secondsTakeNoPart()
{
    put("/pub/a", QByteArray(1000, 'a'), noon);
    write({{"a", QByteArray(1000, 'a'), noon.addSecs(40)}});
    connectAll();
    QCOMPARE(m_world->plan(false, pub), QStringLiteral("    ./\n[ ] /a\n"));
    QVERIFY(m_world->tables().contains(QStringLiteral("比較")));
}

void tst_Comparison::letterCaseIsOneRow()
{
    put("/pub/doc/x", "12345");
    write({{"Doc/x", "12345"}});
    connectAll();
    const ComparisonResult result = m_world->compare(false, pub);
    QVERIFY(result.ok);
    QCOMPARE(m_world->tables(), QStringLiteral("FD .|L|F|比較\n"
                                               "FD /doc|L|F|比較\n"
                                               "FL /doc|x|L5|F6|比較\n"));
    QCOMPARE(result.localSpelling.value(QStringLiteral("/doc")), QStringLiteral("/Doc"));
}

void tst_Comparison::theServersRoot()
{
    put("/a/f", "f");
    put("/a/b/g", "g");
    write({{"a/f", "f"}, {"top", "t"}});
    connectAll();
    QVERIFY(m_server->tree().removeFolder("/pub"));
    QVERIFY(m_world->compare(false, QStringLiteral("/")).ok);
    QCOMPARE(m_world->tables(), QStringLiteral("FD .|L||追加\n"
                                               "FD /a|L|F|比較\n"
                                               "FD a/b||F|削除\n"
                                               "FL .|top|L1|0|追加\n"
                                               "FL /a|f|L1|0|追加\n"
                                               "FL a|f|0|F2|削除\n"
                                               "FL a/b|g|0|F2|削除\n"));
    QVERIFY(m_world->compare(true, QStringLiteral("/")).ok);
    QVERIFY(m_world->tables().startsWith(QStringLiteral("FD .|L||削除\n")));
}

void tst_Comparison::emptyLocalFolder()
{
    write({{"empty/"}});
    connectAll();
    QVERIFY(m_world->compare(false, pub).ok);
    QCOMPARE(m_world->tables(), QStringLiteral("FD .|L|F|比較\nFD /empty|L||追加\n"));
}

void tst_Comparison::timesMeetWhatTheTransferLeaves()
{
    const QDateTime winter(QDate(2024, 1, 6), QTime(20, 30), Qt::UTC);
    put("/pub/a", QByteArray(1000, 'a'), winter);
    write({{"a", QByteArray(1000, 'a'), winter}});
    m_server->options().mlsd = false;
    connectAll();
    QVERIFY(m_world->compare(false, pub).ok);
    const Rows row = m_world->database.query(QStringLiteral("Select sUL, sUF From tbFile"));
    QCOMPARE(row.at(0, 0).toString(), row.at(1, 0).toString());
}

void tst_Comparison::dayOnlyTimesTakeTheMinute()
{
    put("/pub/a", QByteArray(1000, 'a'), noon);
    put("/pub/gone", QByteArray(1000, 'a'), noon);
    write({{"a", QByteArray(1000, 'a'), noon}});
    m_server->options().mlsd = false;
    m_server->options().dialect = ListDialect::UnixDay;
    connectAll();
    m_server->log().clear();
    QVERIFY(m_world->compare(false, pub).ok);
    const Rows row =
        m_world->database.query(QStringLiteral("Select sUL, sUF From tbFile Where sFL='a'"));
    QCOMPARE(row.at(1, 0).toString(), row.at(0, 0).toString());
    QCOMPARE(m_server->count("MDTM"), 1);
}

void tst_Comparison::dayOnlyTimesFarApartStay()
{
    put("/pub/a", QByteArray(1000, 'a'), noon);
    write({{"a", QByteArray(1000, 'a'), noon.addDays(3)}});
    m_server->options().mlsd = false;
    m_server->options().dialect = ListDialect::UnixDay;
    connectAll();
    m_server->log().clear();
    QVERIFY(m_world->compare(false, pub).ok);
    QCOMPARE(m_server->count("MDTM"), 0);
}

void tst_Comparison::checks_data()
{
    QTest::addColumn<QString>("sLph");
    QTest::addColumn<QString>("sFph");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QByteArray>("logged");
    const QString bare = QStringLiteral("FTPｻｰﾊﾞｰ内のﾃﾞｨﾚｸﾄﾘを指定して下さい");
    const QString empty = QStringLiteral("送信元･送信先を指定して下さい");
    const QString web = QStringLiteral("/web");
    QTest::newRow("the bare server entry")
        << web << QStringLiteral("SERVER") << bare << QByteArray();
    QTest::newRow("the bare server entry comes before an empty local path")
        << QString() << QStringLiteral("SERVER") << bare << QByteArray();
    QTest::newRow("no local path") << QString() << pub << empty << QByteArray();
    QTest::newRow("no remote path") << web << QString() << empty << QByteArray();
    QTest::newRow("a star would match other folders")
        << web << QStringLiteral("/pub*") << QStringLiteral("/pub* は同期できません")
        << QByteArray("ftSync Err sLph=/web");
    QTest::newRow("a question mark too")
        << web << QStringLiteral("/p?b") << QStringLiteral("/p?b は同期できません")
        << QByteArray("ftSync Err sLph=/web");
    QTest::newRow("the server's text inside the path")
        << web << QStringLiteral("/pubSERVER/x") << QStringLiteral("/pubSERVER/x は同期できません")
        << QByteArray("ftSync Err sLph=/web");
    QTest::newRow("the server text in a deeper name")
        << web << QStringLiteral("/pub/SERVER") << QStringLiteral("/pub/SERVER は同期できません")
        << QByteArray("ftSync Err sLph=/web");
}

void tst_Comparison::aSecondOneMeanwhileDoesNothing()
{
    m_server->makeFolder("/pub");
    connectAll();
    ConsolePrinter printer(stdout, stderr);
    AskingDesk desk(printer, m_world->flags);
    m_world->flags.batch = false;
    Comparison comparison(m_world->session, m_world->database, m_world->cache, desk,
                          m_world->flags);
    bool second = true;
    desk.asked = [&] {
        (void)comparison.ftSync(m_world->local(), QStringLiteral("/other"), true, second);
    };
    bool first = false;
    const ComparisonResult result =
        comparison.ftSync(m_world->local(), QStringLiteral("/pub"), false, first);
    QVERIFY(first && result.ok);
    QVERIFY(!second);
    QCOMPARE(desk.questions, 1);
    QCOMPARE(result.pair.sFph, QStringLiteral("/pub"));
}

void tst_Comparison::checks()
{
    QFETCH(QString, sLph);
    QFETCH(QString, sFph);
    QFETCH(QString, message);
    QFETCH(QByteArray, logged);
    connectAll();
    const QString server = m_server->server();
    m_server->log().clear();
    bool ok = true;
    const ComparisonResult result =
        m_world->comparison.ftSync(sLph, sFph.replace(QStringLiteral("SERVER"), server), true, ok);
    QVERIFY(!ok && !result.cancelled);
    QCOMPARE(m_world->person.messages(),
             QStringList{message.replace(QStringLiteral("SERVER"), server)});
    QVERIFY(m_world->errorLogText().contains(logged));
    QCOMPARE(m_world->errorLogText().isEmpty(), logged.isEmpty());
    QVERIFY(m_server->verbs().isEmpty());
}

void tst_Comparison::confirmation_data()
{
    QTest::addColumn<bool>("down");
    QTest::addColumn<QString>("text");
    QTest::newRow("down") << true
                          << QStringLiteral(
                                 "host/pub から /web へ同期を実行します (FTP側に合わせる)");
    QTest::newRow("up") << false
                        << QStringLiteral(
                               "/web から host/pub へ同期を実行します (ﾏｲｺﾝﾋﾟｭｰﾀｰ側に合わせる)");
}

void tst_Comparison::confirmation()
{
    QFETCH(bool, down);
    QFETCH(QString, text);
    m_world->flags.batch = false;
    m_world->person.expectQuestion(text, false);
    bool ok = true;
    const ComparisonResult result =
        m_world->comparison.ftSync(QStringLiteral("/web"), QStringLiteral("host/pub"), down, ok);
    QVERIFY(!ok && result.cancelled);
    QVERIFY(m_world->person.verify());
}

void tst_Comparison::cancelledAtTheQuestion()
{
    connectAll();
    m_world->flags.batch = false;
    m_server->log().clear();
    QVERIFY(m_world->compare(false, pub).cancelled);
    QVERIFY2(m_server->verbs().isEmpty(), "nothing was listed");
    m_world->person.allowQuestions();
    QVERIFY(m_world->compare(false, pub).ok);
}

void tst_Comparison::waitTexts()
{
    connectAll();
    QVERIFY(m_world->compare(false, pub).ok);
    QCOMPARE(m_world->person.texts(ScriptedPerson::What::ShowWait),
             (QStringList{QStringLiteral("FTP側のﾃﾞｨﾚｸﾄﾘ情報を更新しています"),
                          QStringLiteral("FTP側とﾏｲｺﾝﾋﾟｭｰﾀｰ側のﾃﾞｨﾚｸﾄﾘ情報を比較しています")}));
}

void tst_Comparison::cancelledDuringTheWalk()
{
    connectAll();
    std::vector<TreeRow> rows;
    for (int i = 0; i < 600; ++i)
        rows.push_back({"f" + QByteArray::number(i), "x"});
    write(rows);
    m_world->person.cancelAt(ScriptedPerson::What::ShowWait,
                             QStringLiteral("FTP側とﾏｲｺﾝﾋﾟｭｰﾀｰ側のﾃﾞｨﾚｸﾄﾘ情報を"
                                            "比較しています"));
    const ComparisonResult result = m_world->compare(false, pub);
    QVERIFY(!result.ok && result.cancelled);
    QVERIFY2(!m_world->errorLogText().contains("sySync Err"), "a cancel is no error");
    QCOMPARE(m_world->tables(), QString());
}

void tst_Comparison::temporaryDownloadsAreLeftOut()
{
    put("/pub/.venlo-0123abcd.part", "remote");
    m_server->options().listsDotNames = true;
    m_server->options().mlsd = false;
    write({{".venlo-0123abce.part", "local"}, {"dir/.venlo-0123abcf.part", "local"}});
    connectAll();
    QVERIFY(m_world->compare(false, pub).ok);
    QCOMPARE(m_world->tables(), QStringLiteral("FD .|L|F|比較\nFD /dir|L||追加\n"));
}

void tst_Comparison::aFailedComparisonKeepsTheTables()
{
    write({{"a", "a"}});
    connectAll();
    QVERIFY(m_world->compare(false, pub).ok);
    const QString before = m_world->tables();
    write({{"b'c", "a"}, {"d", "d"}});
    QVERIFY(!m_world->compare(false, pub).ok);
    QCOMPARE(m_world->tables(), before);
}

QTEST_GUILESS_MAIN(tst_Comparison)
#include "tst_Comparison.moc"
