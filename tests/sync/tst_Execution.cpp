#include "sync/Execution.h"

#include <functional>

#include <QTest>

#include "shared/Flags.h"
#include "sync/ConsoleReviewHost.h"
#include "sync/RowWorker.h"
#include "sync/WorkTables.h"

using namespace venlo;
using venlo::test::rowOf;
using venlo::test::ScriptedPerson;
using venlo::test::WorkTables;

namespace
{
const QString early = QStringLiteral("24/05/06 07:08");
const QString add = QStringLiteral("追加");
const QString removal = QStringLiteral("削除");
const QString compare = QStringLiteral("比較");

/// Writes down what it is asked for and ends each row as the test wants.
class FakeWorker : public RowWorker
{
public:
    bool connected() override { return isConnected; }
    bool reconnect() override
    {
        said << QStringLiteral("reconnect");
        isConnected = isConnected || reconnects;
        return reconnects;
    }
    RowEnd work(const SyncReview &review, int row) override
    {
        const SyncRow &here = review.row(row);
        const QString path = here.folder ? here.sPh : relativeFile(here.sPh, here.name);
        said << path;
        return end ? end(path) : RowEnd();
    }
    void log(const QString &line) override { logged << line; }

    std::function<RowEnd(const QString &path)> end;
    QStringList said;
    QStringList logged;
    bool isConnected = true;
    bool reconnects = true;
};
} // namespace

/// Passes, order, marks and results of carrying out a review.
class tst_Execution : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void foldersBeforeFiles();
    void nothingTicked();
    void doneRowsAreNotRepeated();
    void aFailureEndsThePass();
    void tenPassesWithReconnects();
    void doneInTheLastPass();
    void aFailedReconnectEnds();
    void notConnectedDoesNoRow();
    void aConnectionLostDuringARowLeavesItPending();
    void givenUpDoesNotHoldUpTheRest();
    void cancelLeavesTheRestPending();
    void cancelInTheLastRowIsDone();
    void cancelledAtOnceDoesNothing();
    void setsTheUnattendedFlagAndLeavesIt();
    void blockedRowsAreRefused();
    void heldRowsNeedAPerson();
    void progressComesPerRow();
    void consoleRunsOnlyUnattended();

private:
    SyncReview review(bool down = true);
    int run(SyncReview &plan, bool unattended = false);

    std::unique_ptr<ScriptedPerson> m_person;
    std::unique_ptr<FakeWorker> m_worker;
    Flags m_flags;
};

void tst_Execution::init()
{
    m_person = std::make_unique<ScriptedPerson>();
    m_worker = std::make_unique<FakeWorker>();
    m_flags = {};
}

SyncReview tst_Execution::review(bool down)
{
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, early, compare);
    tables.addFile(QStringLiteral("."), QStringLiteral("a.txt"), {}, {early, 1}, add);
    tables.addFile(QStringLiteral("."), QStringLiteral("b.txt"), {early, 1}, {}, removal);
    tables.addFolder(QStringLiteral("/new"), QString(), early, add);
    tables.addFile(QStringLiteral("/new"), QStringLiteral("n.txt"), {}, {early, 1}, add);
    tables.addFolder(QStringLiteral("/old"), early, QString(), removal);
    tables.addFile(QStringLiteral("/old"), QStringLiteral("o.txt"), {early, 1}, {}, removal);
    return tables.review(WorkTables::compared(down, QStringLiteral("/pub")));
}

int tst_Execution::run(SyncReview &plan, bool unattended)
{
    return Execution(*m_worker, *m_person, m_flags).run(plan, unattended);
}

void tst_Execution::foldersBeforeFiles()
{
    SyncReview plan = review();
    QCOMPARE(run(plan), 1);
    QCOMPARE(m_worker->said, (QStringList{QStringLiteral("/new"), QStringLiteral("/old"),
                                          QStringLiteral("/a.txt"), QStringLiteral("/b.txt")}));
    QCOMPARE(plan.stateText(rowOf(plan, QStringLiteral("/old/o.txt"))), QStringLiteral("a"));
    QVERIFY(!plan.leftOver());
}

void tst_Execution::nothingTicked()
{
    SyncReview plan = review();
    for (int i = 0; i < plan.count(); ++i)
        plan.setTicked(i, false);
    QCOMPARE(run(plan), -1);
    QVERIFY(m_worker->said.isEmpty());
}

void tst_Execution::doneRowsAreNotRepeated()
{
    int failures = 1;
    m_worker->end = [&](const QString &path) {
        return RowEnd{path != QStringLiteral("/b.txt") || failures-- <= 0, false, {}};
    };
    SyncReview plan = review();
    QCOMPARE(run(plan), 1);
    QCOMPARE(m_worker->said,
             (QStringList{QStringLiteral("/new"), QStringLiteral("/old"), QStringLiteral("/a.txt"),
                          QStringLiteral("/b.txt"), QStringLiteral("/b.txt")}));
}

void tst_Execution::aFailureEndsThePass()
{
    int failures = 1;
    m_worker->end = [&](const QString &path) {
        return RowEnd{path != QStringLiteral("/new") || failures-- <= 0, false, {}};
    };
    SyncReview plan = review();
    QCOMPARE(run(plan), 1);
    QCOMPARE(m_worker->said.mid(0, 3),
             (QStringList{QStringLiteral("/new"), QStringLiteral("/new"), QStringLiteral("/old")}));
}

void tst_Execution::tenPassesWithReconnects()
{
    m_worker->end = [](const QString &) { return RowEnd{false, false, {}}; };
    SyncReview plan = review();
    QCOMPARE(run(plan), 0);
    QCOMPARE(m_worker->said.count(QStringLiteral("/new")), 10);
    QCOMPARE(m_worker->said.count(QStringLiteral("reconnect")), 8);
    QCOMPARE(m_worker->said.indexOf(QStringLiteral("reconnect")), 2);
    QVERIFY2(m_worker->logged.isEmpty(), "the line for an eleventh pass is never written");
    QCOMPARE(plan.pendingCount(), 4);
    QVERIFY(m_person->messages().isEmpty());
}

void tst_Execution::doneInTheLastPass()
{
    int failures = 9;
    m_worker->end = [&](const QString &) { return RowEnd{failures-- <= 0, false, {}}; };
    SyncReview plan = review();
    QCOMPARE(run(plan), 1);
    QCOMPARE(plan.pendingCount(), 0);
}

void tst_Execution::aFailedReconnectEnds()
{
    m_worker->reconnects = false;
    m_worker->end = [](const QString &) { return RowEnd{false, false, {}}; };
    SyncReview plan = review();
    QCOMPARE(run(plan), 0);
    QCOMPARE(m_worker->said, (QStringList{QStringLiteral("/new"), QStringLiteral("/new"),
                                          QStringLiteral("reconnect")}));
}

void tst_Execution::notConnectedDoesNoRow()
{
    m_worker->isConnected = false;
    m_worker->reconnects = false;
    SyncReview plan = review();
    QCOMPARE(run(plan), 0);
    QCOMPARE(m_worker->said, QStringList{QStringLiteral("reconnect")});
    QCOMPARE(plan.pendingCount(), 4);
}

void tst_Execution::aConnectionLostDuringARowLeavesItPending()
{
    m_worker->reconnects = false;
    m_worker->end = [&](const QString &path) {
        m_worker->isConnected = path != QStringLiteral("/old");
        return RowEnd();
    };
    SyncReview plan = review();
    QCOMPARE(run(plan), 0);
    QCOMPARE(plan.stateText(rowOf(plan, QStringLiteral("/new/"))), QStringLiteral("a"));
    QVERIFY(plan.pending(rowOf(plan, QStringLiteral("/old/"))));
}

void tst_Execution::givenUpDoesNotHoldUpTheRest()
{
    m_worker->end = [](const QString &path) {
        return RowEnd{true, path == QStringLiteral("/new"), {}};
    };
    SyncReview plan = review();
    QCOMPARE(run(plan), 1);
    QCOMPARE(m_worker->said.size(), 4);
    QCOMPARE(plan.stateText(rowOf(plan, QStringLiteral("/new/"))), QStringLiteral("r"));
    QCOMPARE(plan.stateText(rowOf(plan, QStringLiteral("/new/n.txt"))), QStringLiteral("r"));
    QCOMPARE(plan.stateText(rowOf(plan, QStringLiteral("/a.txt"))), QStringLiteral("a"));
    QVERIFY(plan.leftOver());
}

void tst_Execution::cancelLeavesTheRestPending()
{
    m_worker->end = [&](const QString &path) {
        if (path == QStringLiteral("/old"))
            m_person->cancelNow();
        return RowEnd();
    };
    SyncReview plan = review();
    Execution execution(*m_worker, *m_person, m_flags);
    QCOMPARE(execution.run(plan, false), 0);
    QVERIFY(execution.cancelled());
    QCOMPARE(m_worker->said.size(), 2);
    QCOMPARE(plan.pendingCount(), 2);
    QCOMPARE(plan.stateText(rowOf(plan, QStringLiteral("/old/"))), QStringLiteral("a"));
    m_person->resetCancel();
    m_worker->end = nullptr;
    QCOMPARE(execution.run(plan, false), 1);
    QVERIFY(!execution.cancelled());
    QCOMPARE(m_worker->said.mid(2),
             (QStringList{QStringLiteral("/a.txt"), QStringLiteral("/b.txt")}));
}

void tst_Execution::cancelInTheLastRowIsDone()
{
    m_worker->end = [&](const QString &path) {
        if (path == QStringLiteral("/b.txt"))
            m_person->cancelNow();
        return RowEnd();
    };
    SyncReview plan = review();
    Execution execution(*m_worker, *m_person, m_flags);
    QCOMPARE(execution.run(plan, false), 1);
    QVERIFY(!execution.cancelled());
    QCOMPARE(plan.pendingCount(), 0);
}

void tst_Execution::cancelledAtOnceDoesNothing()
{
    m_person->cancelNow();
    SyncReview plan = review();
    QCOMPARE(run(plan), 0);
    QVERIFY(m_worker->said.isEmpty());
}

void tst_Execution::setsTheUnattendedFlagAndLeavesIt()
{
    bool during = false;
    m_worker->end = [&](const QString &) {
        during = m_flags.unattendedTransfer;
        return RowEnd();
    };
    SyncReview plan = review();
    QCOMPARE(run(plan), 1);
    QVERIFY(during);
    QVERIFY(m_flags.unattendedTransfer);
}

void tst_Execution::blockedRowsAreRefused()
{
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, early, compare);
    tables.addFolder(QStringLiteral("/old"), early, QString(), removal);
    tables.addFile(QStringLiteral("."), QStringLiteral("b.txt"), {early, 1}, {}, removal);
    ComparisonResult comparison = WorkTables::compared(true, QStringLiteral("/pub"));
    comparison.blocks.add(QStringLiteral("/"), QStringLiteral("not listed"));
    SyncReview plan = tables.review(comparison);
    plan.tickAll(Action::Remove, true);
    QCOMPARE(run(plan), -1);
    QVERIFY(m_worker->said.isEmpty());
}

void tst_Execution::heldRowsNeedAPerson()
{
    WorkTables tables;
    tables.addFolder(QStringLiteral("."), early, early, compare);
    tables.addFile(QStringLiteral("."), QStringLiteral(".htaccess"), {early, 1}, {}, removal);
    SyncReview plan = tables.review(WorkTables::compared(true, QStringLiteral("/pub")));
    plan.setTicked(1, true);
    QCOMPARE(run(plan, true), -1);
    QVERIFY(m_worker->said.isEmpty());
    QCOMPARE(run(plan, false), 1);
    QCOMPARE(m_worker->said, QStringList{QStringLiteral("/.htaccess")});
}

void tst_Execution::progressComesPerRow()
{
    SyncReview plan = review();
    Execution execution(*m_worker, *m_person, m_flags);
    QStringList seen;
    execution.setProgress([&](int row, bool finished) {
        seen << plan.row(row).name + (finished ? plan.stateText(row) : QStringLiteral("?"));
    });
    QCOMPARE(execution.run(plan, false), 1);
    QCOMPARE(seen.mid(0, 4), (QStringList{QStringLiteral("new?"), QStringLiteral("newa"),
                                          QStringLiteral("old?"), QStringLiteral("olda")}));
    QCOMPARE(seen.size(), 8);
}

void tst_Execution::consoleRunsOnlyUnattended()
{
    ConsoleReviewHost host(*m_person);
    Execution execution(*m_worker, *m_person, m_flags);
    SyncReview plan = review();
    QCOMPARE(host.act(plan, execution, false), 0);
    QVERIFY(m_worker->said.isEmpty());
    QCOMPARE(m_person->warnings().size(), 1);
    QCOMPARE(host.act(plan, execution, true), 1);
    QCOMPARE(m_worker->said.size(), 4);
    QCOMPARE(host.act(plan, execution, true), -1);
}

QTEST_APPLESS_MAIN(tst_Execution)
#include "tst_Execution.moc"
