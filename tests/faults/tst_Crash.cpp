#include "db/Store.h"
#include "e2e/ProgramRun.h"
#include "startup/settings/SettingsFile.h"
#include "support/ScriptedPerson.h"
#include "support/ScriptedServer.h"
#include "support/Trees.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTest>

using namespace venlo;
using namespace venlo::test;

namespace
{
const QString pattern = QStringLiteral("p");
constexpr int startLimitMs = 60'000;

/// Moments of each kind; there are four kinds.
int moments()
{
    return qEnvironmentVariableIsSet("VENLO_ALL_FAULTS") ? 50 : 8;
}

std::vector<TreeRow> treeOf(int round)
{
    std::vector<TreeRow> rows;
    for (int i = 0; i < 40; ++i) {
        // A part of the files is new, changed or gone from one round to the next.
        if ((i + round) % 5 == 0)
            continue;
        const int version = round - (i + round) % 3; // never older than it was
        const QByteArray name =
            "d" + QByteArray::number(i % 4) + "/f" + QByteArray::number(i) + ".txt";
        // The large ones do not fit into the system's buffers, so that a kill cuts them.
        const int size = i % 8 == 0 ? 1'500'000 : 20'000 + 500 * i;
        rows.push_back({name, QByteArray(size, static_cast<char>('c' + version % 20)),
                        QDateTime(QDate(2024, 1, 1), QTime(10, 0)).addDays(version)});
    }
    return rows;
}
} // namespace

/// The program is killed at random moments; nothing registered is lost, the database is sound, and
/// the next run does what this one could not. The seed is printed; VENLO_SEED repeats it.
class tst_Crash : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void synchronisation_data();
    void synchronisation();
    void compaction();
    void editsAndSettings();
    void cleanupTestCase();

private:
    void setTrees(bool upwards, int round);
    [[nodiscard]] QString argument(bool upwards) const;
    [[nodiscard]] qint64 wholeRun(bool upwards);
    /// Starts it and kills it after that long; false when it had ended before.
    [[nodiscard]] bool killed(const QString &program, const QStringList &arguments, int afterMs,
                              QByteArray *output = nullptr);
    void checkStore(int sites, int patterns);
    /// What the kill left on the server: the next run must send it again.
    void countRemnants(const std::vector<TreeRow> &rows);
    void checkNoHalfFile(const std::vector<TreeRow> &before, const std::vector<TreeRow> &after);

    QRandomGenerator m_random;
    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<ProgramRun> m_program;
    int m_moments = 0;
    int m_remnants = 0;
    int m_ended = 0;
};

void tst_Crash::initTestCase()
{
    const quint32 seed = qEnvironmentVariableIsSet("VENLO_SEED")
                             ? qEnvironmentVariable("VENLO_SEED").toUInt()
                             : QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    m_random.seed(seed);
}

void tst_Crash::init()
{
    m_server = std::make_unique<ScriptedServer>();
    QVERIFY(m_server->start());
    m_server->makeFolder("/pub");
    m_program = std::make_unique<ProgramRun>();
    QVERIFY(m_program->prepare());
    m_program->registerSite(QStringLiteral("site"), m_server->server(), m_server->user(),
                            m_server->password());
    m_program->registerPattern(pattern, m_program->localFolder(), QStringLiteral("site"),
                               QStringLiteral("/pub"));
}

QString tst_Crash::argument(bool upwards) const
{
    return (upwards ? QStringLiteral("/b syncup|") : QStringLiteral("/b syncdown|")) + pattern;
}

void tst_Crash::setTrees(bool upwards, int round)
{
    const std::vector<TreeRow> rows = treeOf(round);
    if (upwards) {
        QDir(m_program->localFolder()).removeRecursively();
        QVERIFY(makeTree(m_program->localFolder(), rows));
    } else {
        m_server->tree().clear();
        makeTree(m_server->tree(), "/pub", rows);
    }
}

qint64 tst_Crash::wholeRun(bool upwards)
{
    QElapsedTimer time;
    time.start();
    const RunResult result = m_program->run(argument(upwards));
    if (result.status != 0)
        qWarning("%d: %s%s%s", result.status, qPrintable(result.output), qPrintable(result.errors),
                 qPrintable(m_program->errorLog()));
    return result.status == 0 ? time.elapsed() : -1;
}

bool tst_Crash::killed(const QString &program, const QStringList &arguments, int afterMs,
                       QByteArray *output)
{
    QProcess process;
    process.setProcessEnvironment(m_program->environment);
    process.start(program, arguments);
    if (!process.waitForStarted(startLimitMs))
        qFatal("%s does not start", qPrintable(program));
    const bool ended = process.waitForFinished(afterMs);
    process.kill();
    process.waitForFinished(startLimitMs);
    if (output != nullptr)
        *output = process.readAllStandardOutput();
    ++m_moments;
    m_ended += ended ? 1 : 0;
    return !ended;
}

void tst_Crash::checkStore(int sites, int patterns)
{
    Store store;
    store.open(m_program->userData() + QStringLiteral("/dbFtp.mdb"));
    QCOMPARE(store.query(QStringLiteral("PRAGMA integrity_check")).at(0, 0).toString(),
             QStringLiteral("ok"));
    const auto count = [&store](const QString &table) {
        return store.query(QStringLiteral("SELECT COUNT(*) FROM ") + table).at(0, 0).toInt();
    };
    QVERIFY2(count(QStringLiteral("msSite")) >= sites, "a site is lost");
    QVERIFY2(count(QStringLiteral("msSync")) >= patterns, "a pattern is lost");
    const auto site = store.query(QStringLiteral("SELECT sSvr, sUsr, sPwd FROM msSite"
                                                 " WHERE sName = 'site'"));
    QCOMPARE(site.count(), 1);
    QCOMPARE(site.at(0, 0).toString(), m_server->server());
    QCOMPARE(site.at(2, 0).toString(), m_server->password());
}

/// Under final names there are whole files only, of before or of after.
void tst_Crash::checkNoHalfFile(const std::vector<TreeRow> &before,
                                const std::vector<TreeRow> &after)
{
    const TreeSnapshot was = snapshot(before);
    const TreeSnapshot wanted = snapshot(after);
    for (const auto &[path, item] : snapshot(m_program->localFolder())) {
        const auto old = was.find(path);
        const auto now = wanted.find(path);
        if (old == was.end() && now == wanted.end())
            continue; // a temporary download, which the next run takes away
        QVERIFY2((old != was.end() && old->second.bytes == item.bytes) ||
                     (now != wanted.end() && now->second.bytes == item.bytes),
                 path.constData());
    }
}

void tst_Crash::countRemnants(const std::vector<TreeRow> &rows)
{
    QTest::qSleep(300); // the server still takes what was under way
    for (const TreeRow &row : rows) {
        const QByteArray there = m_server->file("/pub/" + row.path);
        if (there.size() < row.bytes.size() && row.bytes.startsWith(there) &&
            m_server->exists("/pub/" + row.path))
            ++m_remnants;
    }
}

void tst_Crash::synchronisation_data()
{
    QTest::addColumn<bool>("upwards");
    QTest::newRow("up") << true;
    QTest::newRow("down") << false;
}

void tst_Crash::synchronisation()
{
    QFETCH(bool, upwards);
    for (const char *verb : {"MLSD", "DELE"})
        m_server->on(verb).delay(3);
    for (const char *verb : {"STOR", "RETR"})
        m_server->on(verb).slow(30'000, 2);
    setTrees(upwards, 0);
    QVERIFY(wholeRun(upwards) >= 0);
    setTrees(upwards, 1);
    const qint64 whole = wholeRun(upwards);
    QVERIFY(whole >= 0);
    for (int moment = 0; moment < moments(); ++moment) {
        const int round = moment + 2;
        setTrees(upwards, round);
        const int after = static_cast<int>(m_random.bounded(static_cast<quint32>(whole)));
        (void)killed(QStringLiteral(VENLO_PROGRAM), {argument(upwards)}, after);
        checkStore(1, 1);
        if (upwards)
            countRemnants(treeOf(round));
        else
            checkNoHalfFile(treeOf(round - 1), treeOf(round));
        if (QTest::currentTestFailed())
            qWarning("moment %d, after %d ms of %lld", moment, after,
                     static_cast<long long>(whole));
        QVERIFY2(wholeRun(upwards) >= 0, "the next run does not complete");
        QCOMPARE(difference(snapshot(m_program->localFolder()), snapshot(m_server->tree(), "/pub")),
                 QStringList());
        QCOMPARE(difference(snapshot(treeOf(round)), snapshot(m_server->tree(), "/pub")),
                 QStringList());
    }
}

void tst_Crash::compaction()
{
    setTrees(true, 0);
    QVERIFY(wholeRun(true) >= 0);
    for (int moment = 0; moment < moments(); ++moment) {
        (void)killed(QStringLiteral(VENLO_COMPACT_AGAIN),
                     {m_program->userData() + QLatin1Char('/')},
                     20 + static_cast<int>(m_random.bounded(200)));
        checkStore(1, 1);
        if (moment % 4 == 0)
            QVERIFY(wholeRun(true) >= 0);
    }
}

void tst_Crash::editsAndSettings()
{
    int sites = 1;
    int patterns = 1;
    int first = 0;
    for (int moment = 0; moment < moments(); ++moment) {
        QByteArray output;
        (void)killed(QStringLiteral(VENLO_EDIT_AGAIN),
                     {m_program->userData() + QLatin1Char('/'), QString::number(first)},
                     20 + static_cast<int>(m_random.bounded(300)), &output);
        sites += static_cast<int>(output.count("site "));
        patterns += static_cast<int>(output.count("pattern "));
        checkStore(sites, patterns);
        first += 100'000;
        ScriptedPerson person;
        yIni settings(person);
        bool loaded = false;
        settings.GetTxt(m_program->userData() + QStringLiteral("/User.xml"), loaded);
        QVERIFY(loaded);
        settings.GetGtx(QStringLiteral("crash"));
        const auto head = settings.vGtVal(QStringLiteral("first"), -1.0);
        const auto text = settings.vGtVal(QStringLiteral("text"), QString());
        const auto tail = settings.vGtVal(QStringLiteral("last"), -1.0);
        QVERIFY(head && tail && text);
        QCOMPARE(head.value(), tail.value());
        if (output.contains("settings ")) {
            QCOMPARE(text.value().toString().size(), 4000);
            const int last = output.mid(output.lastIndexOf("settings ") + 9)
                                 .trimmed()
                                 .split('\n')
                                 .value(0)
                                 .toInt();
            QVERIFY2(head.value().toInt() >= last, "a save that was done is lost");
        }
        if (moment % 4 == 0)
            QVERIFY(wholeRun(true) >= 0);
    }
}

void tst_Crash::cleanupTestCase()
{
    qInfo("killed at %d moments, %d of them after the end; %d half uploads sent again", m_moments,
          m_ended, m_remnants);
}

QTEST_GUILESS_MAIN(tst_Crash)
#include "tst_Crash.moc"
