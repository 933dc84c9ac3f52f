#include <QTest>

#include "views/KeyCounter.h"
#include "views/SortState.h"

namespace venlo::test
{

class tst_SortState : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void beforeTheFirstClick();
    void threeClicksOnOneColumn();
    void anotherColumnAscends();
    void keysCountOn();
    void keysNeverWrap();
};

void tst_SortState::beforeTheFirstClick()
{
    const SortState state;
    QCOMPARE(state.number(), 0);
    QCOMPARE(state.column(), -1);
    QCOMPARE(state.order(), Qt::AscendingOrder);
}

void tst_SortState::threeClicksOnOneColumn()
{
    SortState state;
    state.click(0);
    QCOMPARE(state.number(), 1);
    QCOMPARE(state.order(), Qt::AscendingOrder);
    state.click(0);
    QCOMPARE(state.number(), -1);
    QCOMPARE(state.column(), 0);
    QCOMPARE(state.order(), Qt::DescendingOrder);
    state.click(0);
    QCOMPARE(state.number(), 1);
}

void tst_SortState::anotherColumnAscends()
{
    SortState state;
    state.click(2);
    state.click(2);
    QCOMPARE(state.number(), -3);
    state.click(1);
    QCOMPARE(state.number(), 2);
    QCOMPARE(state.column(), 1);
    QCOMPARE(state.order(), Qt::AscendingOrder);
}

void tst_SortState::keysCountOn()
{
    KeyCounter nodes(QLatin1Char('N'), 4, 1);
    QCOMPARE(nodes.next(), QStringLiteral("N0001"));
    QCOMPARE(nodes.next(), QStringLiteral("N0002"));
    KeyCounter rows(QLatin1Char('L'), 3);
    QCOMPARE(rows.next(), QStringLiteral("L000"));
    rows.restart(1000);
    QCOMPARE(rows.next(), QStringLiteral("L1000"));
}

void tst_SortState::keysNeverWrap()
{
    KeyCounter keys(QLatin1Char('N'), 4, 32767);
    QVERIFY(!keys.exhausted());
    QCOMPARE(keys.next(), QStringLiteral("N32767"));
    QVERIFY(keys.exhausted());
    QVERIFY(!keys.next());
    QVERIFY(!keys.next());
    keys.restart(1);
    QCOMPARE(keys.next(), QStringLiteral("N0001"));
}

} // namespace venlo::test

QTEST_APPLESS_MAIN(venlo::test::tst_SortState)
#include "tst_SortState.moc"
