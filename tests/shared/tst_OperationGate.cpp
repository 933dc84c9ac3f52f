#include "shared/OperationGate.h"

#include <QSignalSpy>
#include <QTest>

#include "support/ScriptedPerson.h"

namespace venlo::test
{

class tst_OperationGate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneAtATime();
    void movedTurnEndsOnce();
    void lockIsTakenAndReleased();
    void refusedLock();
    void diskNeedsNoLock();
    void busyWhileTheLockIsAwaited();

private:
    ScriptedPerson m_person;
};

void tst_OperationGate::oneAtATime()
{
    OperationGate gate(m_person);
    const QSignalSpy changes(&gate, &OperationGate::busyChanged);
    {
        const auto turn = gate.begin();
        QVERIFY(turn);
        QVERIFY(gate.busy());
        QVERIFY(!gate.begin());
        QVERIFY(gate.busy());
    }
    QVERIFY(!gate.busy());
    QCOMPARE(changes.size(), 2);
    QCOMPARE(changes.at(0).at(0).toBool(), true);
    QCOMPARE(changes.at(1).at(0).toBool(), false);
    QVERIFY(gate.begin());
}

void tst_OperationGate::movedTurnEndsOnce()
{
    OperationGate gate(m_person);
    const QSignalSpy changes(&gate, &OperationGate::busyChanged);
    {
        auto first = gate.begin();
        const auto second = std::move(first);
        QVERIFY(second);
    }
    QCOMPARE(changes.size(), 2);
}

void tst_OperationGate::lockIsTakenAndReleased()
{
    OperationGate gate(m_person);
    QStringList steps;
    gate.setLock({[&] {
                      steps += QStringLiteral("take");
                      return true;
                  },
                  [&] { steps += QStringLiteral("give back"); }});
    {
        const auto turn = gate.begin();
        QCOMPARE(steps, QStringList{QStringLiteral("take")});
    }
    QCOMPARE(steps.size(), 2);
}

void tst_OperationGate::refusedLock()
{
    OperationGate gate(m_person);
    int released = 0;
    gate.setLock({[] { return false; }, [&] { ++released; }});
    QVERIFY(!gate.begin());
    QVERIFY(!gate.busy());
    QCOMPARE(released, 0);
}

void tst_OperationGate::diskNeedsNoLock()
{
    OperationGate gate(m_person);
    int released = 0;
    gate.setLock({[] { return false; }, [&] { ++released; }});
    {
        const auto turn = gate.begin(OperationGate::Reach::Disk);
        QVERIFY(turn);
        QVERIFY(!gate.begin());
    }
    QVERIFY(!gate.busy());
    QCOMPARE(released, 0);
}

void tst_OperationGate::busyWhileTheLockIsAwaited()
{
    OperationGate gate(m_person);
    bool busy = false;
    bool second = true;
    gate.setLock({[&] {
                      busy = gate.busy();
                      second = static_cast<bool>(gate.begin());
                      return true;
                  },
                  nullptr});
    const auto turn = gate.begin();
    QVERIFY(turn);
    QVERIFY(busy);
    QVERIFY(!second);
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::tst_OperationGate)
#include "tst_OperationGate.moc"
