#include <csignal>
#include <functional>

#include <sys/wait.h>
#include <unistd.h>

#include <QTest>

#include "platform/Interrupt.h"

namespace venlo
{

namespace
{
constexpr int quiet = 10; ///< status of a child that heard of no interrupt
constexpr int heard = 11;

/// Runs the steps in a child process, since what they do to signals stays; the child's status, or
/// minus the signal that ended it.
int inChild(const std::function<void()> &steps)
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(20);
        steps();
        _exit(interrupted() ? heard : quiet);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child)
        return 0;
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

void waitLongEnough()
{
    QTest::qSleep(3100);
}
} // namespace

class tst_Interrupt : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingNoted();
    void firstIsNoted_data();
    void firstIsNoted();
    void twiceAtOnceIsOneWish();
    void aLaterOneEndsTheProcess_data();
    void aLaterOneEndsTheProcess();
    void ignoredStaysIgnored_data();
    void ignoredStaysIgnored();
    void lostReaderDoesNotEndTheProcess();
};

void tst_Interrupt::nothingNoted()
{
    QCOMPARE(inChild([] { noteInterrupts(); }), quiet);
}

void tst_Interrupt::firstIsNoted_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("Ctrl+C") << SIGINT;
    QTest::newRow("end") << SIGTERM;
    QTest::newRow("hang-up") << SIGHUP;
}

void tst_Interrupt::firstIsNoted()
{
    QFETCH(int, signal);
    QCOMPARE(inChild([signal] {
                 noteInterrupts();
                 raise(signal);
             }),
             heard);
}

void tst_Interrupt::twiceAtOnceIsOneWish()
{
    QCOMPARE(inChild([] {
                 noteInterrupts();
                 raise(SIGTERM);
                 raise(SIGTERM);
                 raise(SIGHUP);
             }),
             heard);
}

void tst_Interrupt::aLaterOneEndsTheProcess_data()
{
    QTest::addColumn<int>("later");
    QTest::newRow("the same") << SIGINT;
    QTest::newRow("another") << SIGTERM;
}

void tst_Interrupt::aLaterOneEndsTheProcess()
{
    QFETCH(int, later);
    QCOMPARE(inChild([later] {
                 noteInterrupts();
                 raise(SIGINT);
                 waitLongEnough();
                 raise(later);
             }),
             -later);
}

void tst_Interrupt::ignoredStaysIgnored_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("nohup") << SIGHUP;
    QTest::newRow("a shell's background job") << SIGINT;
}

void tst_Interrupt::ignoredStaysIgnored()
{
    QFETCH(int, signal);
    QCOMPARE(inChild([signal] {
                 std::signal(signal, SIG_IGN);
                 noteInterrupts();
                 raise(signal);
             }),
             quiet);
}

void tst_Interrupt::lostReaderDoesNotEndTheProcess()
{
    QCOMPARE(inChild([] {
                 noteInterrupts();
                 raise(SIGPIPE);
             }),
             quiet);
}

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_Interrupt)
#include "tst_Interrupt.moc"
