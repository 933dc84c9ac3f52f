#include <QTest>

#include "shared/TransferMeter.h"

namespace venlo::test
{

class tst_TransferMeter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_now = 1000; }
    void nothingToDo();
    void itemsAlone();
    void bytesWithinAStep();
    void aRetriedStepIsNotCountedTwice();
    void manyFilesInOneStep();
    void rateIsRecent();
    void timeLeft();
    void durations_data();
    void durations();

private:
    [[nodiscard]] TransferMeter meter()
    {
        return TransferMeter([this] { return m_now; });
    }
    qint64 m_now = 0;
};

namespace
{
constexpr qint64 large = 163'840'000; // beside which an item's own weight is small
}

void tst_TransferMeter::nothingToDo()
{
    TransferMeter meter = this->meter();
    meter.start(0, 0);
    QCOMPARE(meter.permille(), 0);
    QCOMPARE(meter.rate(), 0);
    QCOMPARE(meter.secondsLeft(), -1);
}

void tst_TransferMeter::itemsAlone()
{
    TransferMeter meter = this->meter();
    meter.start(0, 4);
    meter.beginStep(0, 1);
    meter.endStep();
    QCOMPARE(meter.permille(), 250);
    meter.beginStep(0, 3);
    meter.itemDone();
    QCOMPARE(meter.permille(), 500);
    meter.endStep();
    QCOMPARE(meter.permille(), 1000);
}

void tst_TransferMeter::bytesWithinAStep()
{
    TransferMeter meter = this->meter();
    meter.start(large, 1);
    meter.beginStep(large, 1);
    meter.moved({QStringLiteral("a"), large / 2, large});
    QCOMPARE(meter.permille(), 499);
    meter.moved({QStringLiteral("a"), 5 * large, large});
    QVERIFY(meter.permille() < 1000);
    meter.endStep();
    QCOMPARE(meter.permille(), 1000);
}

void tst_TransferMeter::aRetriedStepIsNotCountedTwice()
{
    TransferMeter meter = this->meter();
    meter.start(2 * large, 2);
    for (int attempt = 0; attempt < 3; ++attempt) {
        meter.beginStep(large, 1);
        meter.moved({QStringLiteral("a"), large / 2, large});
        QCOMPARE(meter.permille(), 249);
    }
    meter.endStep();
    QCOMPARE(meter.permille(), 500);
}

void tst_TransferMeter::manyFilesInOneStep()
{
    TransferMeter meter = this->meter();
    meter.start(large, 1);
    meter.beginStep(large, 1);
    meter.moved({QStringLiteral("a"), large / 4, large / 4});
    meter.moved({QStringLiteral("b"), large / 4, large / 4});
    QCOMPARE(meter.permille(), 499);
}

void tst_TransferMeter::rateIsRecent()
{
    TransferMeter meter = this->meter();
    meter.start(large, 1);
    meter.beginStep(large, 1);
    for (int second = 1; second <= 10; ++second) {
        m_now += 1000;
        meter.moved({QStringLiteral("a"), second * 1000, large});
    }
    QCOMPARE(meter.rate(), 1000);
    for (int second = 1; second <= 10; ++second) {
        m_now += 1000;
        meter.moved({QStringLiteral("a"), 10'000 + second * 5000, large});
    }
    QCOMPARE(meter.rate(), 5000);
    m_now += 10'000;
    QCOMPARE(meter.rate(), 0);
}

void tst_TransferMeter::timeLeft()
{
    TransferMeter meter = this->meter();
    meter.start(0, 4);
    m_now += 500;
    meter.beginStep(0, 1);
    meter.endStep();
    QCOMPARE(meter.secondsLeft(), -1);
    m_now += 1500;
    QCOMPARE(meter.secondsLeft(), 6);
}

void tst_TransferMeter::durations_data()
{
    QTest::addColumn<qint64>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("seconds") << qint64(7) << QStringLiteral("0:07");
    QTest::newRow("minutes") << qint64(754) << QStringLiteral("12:34");
    QTest::newRow("hours") << qint64(3661) << QStringLiteral("1:01:01");
}

void tst_TransferMeter::durations()
{
    QFETCH(qint64, seconds);
    QFETCH(QString, text);
    QCOMPARE(TransferMeter::durationText(seconds), text);
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::tst_TransferMeter)
#include "tst_TransferMeter.moc"
