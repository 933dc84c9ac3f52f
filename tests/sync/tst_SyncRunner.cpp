#include "sync/SyncRunner.h"

#include <functional>
#include <stdexcept>

#include <QTest>

#include "startup/ConsoleFrontEnd.h"
#include "support/ScriptedServer.h"
#include "sync/Execution.h"
#include "sync/ReviewHost.h"
#include "sync/SyncWorld.h"

using namespace venlo;
using namespace venlo::test;

namespace
{
const QString pub = QStringLiteral("/pub");

/// Writes down what it was handed and executes nothing.
class NotingHost : public ReviewHost
{
public:
    int act(SyncReview &review, Execution & /*execution*/, bool runsUnattended) override
    {
        ++shown;
        bCfl = review.chCmp(0);
        bCfd = review.chCmp(1);
        unattended = runsUnattended;
        if (action)
            action();
        return Execution::NothingToDo;
    }
    std::function<void()> action;
    int shown = 0;
    bool bCfl = false;
    bool bCfd = false;
    bool unattended = false;
};

/// A desk on which Cancel was pressed.
class CancelledDesk : public ConsoleFrontEnd
{
public:
    using ConsoleFrontEnd::ConsoleFrontEnd;
    bool cancelled() const override { return pressed; }
    void beginOperation() override { pressed = false; }
    bool pressed = true;
};
} // namespace

/// From an order to the executed review.
class tst_SyncRunner : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void optionsOfThePair_data();
    void optionsOfThePair();
    void optionsThatCannotBeRead();
    void onlyACommandLineRunsByItself_data();
    void onlyACommandLineRunsByItself();
    void aFailureIsLoggedAndTold();
    void anEarlierCancelNoLongerCounts_data();
    void anEarlierCancelNoLongerCounts();

private:
    [[nodiscard]] SyncRunner::Report run(const SyncRunner::Order &order);

    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<SyncWorld> m_world;
    std::unique_ptr<NotingHost> m_host;
};

void tst_SyncRunner::init()
{
    m_world.reset();
    m_server = std::make_unique<ScriptedServer>();
    m_world = std::make_unique<SyncWorld>();
    m_server->makeFolder("/pub");
    QVERIFY(m_server->start());
    m_world->registerSite(m_server->server(), m_server->user(), m_server->password());
    QVERIFY(m_world->connectToSite());
    m_host = std::make_unique<NotingHost>();
}

SyncRunner::Report tst_SyncRunner::run(const SyncRunner::Order &order)
{
    SyncRunner runner(m_world->comparison, m_world->worker, *m_host, m_world->database,
                      m_world->person, m_world->flags);
    return runner.run(order);
}

void tst_SyncRunner::optionsOfThePair_data()
{
    QTest::addColumn<QString>("registered");
    QTest::addColumn<QString>("given");
    QTest::addColumn<bool>("found");
    QTest::newRow("as given") << pub << pub << true;
    QTest::newRow("as given, not in normal form")
        << QStringLiteral("/pub/") << QStringLiteral("/pub/") << true;
    QTest::newRow("in normal form") << pub << QStringLiteral("/pub/") << true;
    QTest::newRow("another folder") << QStringLiteral("/other") << pub << false;
}

void tst_SyncRunner::optionsOfThePair()
{
    QFETCH(QString, registered);
    QFETCH(QString, given);
    QFETCH(bool, found);
    m_world->registerPattern(QStringLiteral("p"), registered, true, true);
    QCOMPARE(run({m_world->local(), given, false, QString(), false}).result, -1);
    QCOMPARE(m_host->shown, 1);
    QCOMPARE(m_host->bCfl, found);
    QCOMPARE(m_host->bCfd, found);
}

void tst_SyncRunner::optionsThatCannotBeRead()
{
    const QString quoted = m_world->local() + QStringLiteral("/it's");
    QVERIFY(makeTree(quoted, {{"f", "f"}}));
    QCOMPARE(run({quoted, pub, false, QString(), false}).result, -1);
    QVERIFY2(m_host->bCfd, "the option may be set, and nothing is deleted that it protects");
    QVERIFY(!m_host->bCfl);
    QVERIFY(m_world->warned(quoted));
}

void tst_SyncRunner::onlyACommandLineRunsByItself_data()
{
    QTest::addColumn<bool>("batch");
    QTest::addColumn<bool>("fromBatchRun");
    QTest::addColumn<bool>("unattended");
    QTest::newRow("a command line under /b") << true << true << true;
    QTest::newRow("a window that was opened under /b") << true << false << false;
    QTest::newRow("a command line without /b") << false << true << false;
}

void tst_SyncRunner::onlyACommandLineRunsByItself()
{
    QFETCH(bool, batch);
    QFETCH(bool, fromBatchRun);
    m_world->flags.batch = batch;
    m_world->person.allowQuestions();
    (void)run({m_world->local(), pub, false, QString(), fromBatchRun});
    QCOMPARE(m_host->shown, 1);
    QTEST(m_host->unattended, "unattended");
}

void tst_SyncRunner::aFailureIsLoggedAndTold()
{
    m_host->action = [this] {
        m_world->flags.unattendedTransfer = true;
        throw std::runtime_error("disk");
    };
    const SyncRunner::Report report = run({m_world->local(), pub, false, QString(), true});
    QCOMPARE(report.result, 0);
    QVERIFY(report.leftOver);
    QVERIFY(m_world->errorLogText().contains("ftSync Err sLph=" + m_world->local().toUtf8()));
    QVERIFY(m_world->warned(QStringLiteral("disk")));
    QVERIFY(!m_world->flags.unattendedTransfer);
}

void tst_SyncRunner::anEarlierCancelNoLongerCounts_data()
{
    QTest::addColumn<bool>("fromBatchRun");
    QTest::addColumn<int>("shown");
    QTest::newRow("a new operation of a window") << false << 1;
    QTest::newRow("a command line, cancelled while it connects") << true << 0;
}

void tst_SyncRunner::anEarlierCancelNoLongerCounts()
{
    QFETCH(bool, fromBatchRun);
    ConsolePrinter printer(stdout, stderr);
    CancelledDesk desk(printer, m_world->flags);
    Comparison comparison(m_world->session, m_world->database, m_world->cache, desk,
                          m_world->flags);
    SyncRunner runner(comparison, m_world->worker, *m_host, m_world->database, desk,
                      m_world->flags);
    (void)runner.run({m_world->local(), pub, false, QString(), fromBatchRun});
    QTEST(m_host->shown, "shown");
}

QTEST_GUILESS_MAIN(tst_SyncRunner)
#include "tst_SyncRunner.moc"
