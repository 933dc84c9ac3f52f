// The one wait for the network: what goes on during it, and what ends it.
#include "ftp/protocol/Waiter.h"

#include <QElapsedTimer>
#include <QTest>
#include <QThread>

using namespace venlo;
using namespace std::chrono_literals;

namespace
{
constexpr auto longTime = 20s;

/// Counts the turns of the event loop in this thread.
struct Ticker {
    Ticker()
    {
        QObject::connect(&timer, &QTimer::timeout, &timer, [this] { ++ticks; });
        timer.start(5ms);
    }
    QTimer timer;
    int ticks = 0;
};
} // namespace

class tst_Waiter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ends();
    void activityStartsTheLimitAnew();
    void meanwhile();
    void nothingMeanwhileBeforeSending();
    void aside();
    void asideIgnoresCancel();
};

void tst_Waiter::ends()
{
    bool cancelled = false;
    bool done = false;
    Waiter waiter([&cancelled] { return cancelled; });
    QTimer::singleShot(30ms, this, [&done] { done = true; });
    QCOMPARE(waiter.until([&done] { return done; }, longTime), WaitEnd::Done);
    QCOMPARE(waiter.until([] { return false; }, 30ms), WaitEnd::TimedOut);
    QTimer::singleShot(30ms, this, [&cancelled] { cancelled = true; });
    QCOMPARE(waiter.until([] { return false; }, longTime), WaitEnd::Cancelled);
    QCOMPARE(waiter.untilEvenIfCancelled([] { return false; }, 30ms), WaitEnd::TimedOut);
    QCOMPARE(waiter.until([] { return true; }, longTime), WaitEnd::Done);
    QVERIFY(!waiter.busy());
}

void tst_Waiter::activityStartsTheLimitAnew()
{
    Waiter waiter({});
    qint64 moved = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&moved] { ++moved; });
    timer.start(50ms);
    const auto enough = [&moved] { return moved >= 20; };
    QCOMPARE(waiter.until(enough, 600ms, [&moved] { return moved; }), WaitEnd::Done);
    moved = 0;
    QCOMPARE(waiter.until(enough, 300ms), WaitEnd::TimedOut);
}

void tst_Waiter::meanwhile()
{
    Waiter waiter({});
    int times = 0;
    waiter.setMeanwhile([&times] { ++times; });
    QCOMPARE(waiter.until([] { return true; }, longTime), WaitEnd::Done);
    QCOMPARE(times, 0); // nobody waited
    bool done = false;
    QTimer::singleShot(0, this, [&] {
        QCOMPARE(times, 1); // before the first turn
        QVERIFY(waiter.busy());
        done = true;
    });
    QCOMPARE(waiter.until([&done] { return done; }, longTime), WaitEnd::Done);
    QCOMPARE(times, 1);
}

void tst_Waiter::nothingMeanwhileBeforeSending()
{
    Waiter waiter({});
    int times = 0;
    waiter.setMeanwhile([&times] { ++times; });
    bool done = false;
    QTimer::singleShot(0, this, [&done] { done = true; });
    QCOMPARE(waiter.untilReady([&done] { return done; }, longTime), WaitEnd::Done);
    QCOMPARE(waiter.untilReady([] { return false; }, 1ms), WaitEnd::TimedOut);
    QCOMPARE(times, 0);
    Waiter stopped([] { return true; });
    QCOMPARE(stopped.untilReady([] { return false; }, longTime), WaitEnd::Cancelled);
}

void tst_Waiter::aside()
{
    Waiter waiter({});
    Ticker ticker;
    bool busyMeanwhile = false;
    QTimer::singleShot(20ms, this, [&] { busyMeanwhile = waiter.busy(); });
    QThread *worker = nullptr;
    bool done = false;
    waiter.aside([&] {
        worker = QThread::currentThread();
        QThread::sleep(1);
        done = true;
    });
    QVERIFY(done);
    QVERIFY(worker != QThread::currentThread());
    QVERIFY2(ticker.ticks > 10, qPrintable(QString::number(ticker.ticks)));
    QVERIFY(busyMeanwhile && !waiter.busy());
    qint64 shortest = 900; // a machine may be busy once, not every time
    for (int batch = 0; batch < 5 && shortest >= 900; ++batch) {
        QElapsedTimer timer;
        timer.start();
        for (int count = 0; count < 20; ++count)
            waiter.aside([] {});
        shortest = timer.elapsed();
    }
    QVERIFY2(shortest < 900, qPrintable(QString::number(shortest))); // no tick each
}

void tst_Waiter::asideIgnoresCancel()
{
    Waiter waiter([] { return true; });
    bool done = false;
    waiter.aside([&done] {
        QThread::msleep(300);
        done = true;
    });
    QVERIFY(done);
}

QTEST_GUILESS_MAIN(tst_Waiter)
#include "tst_Waiter.moc"
