#include <array>
#include <cstdlib>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include "platform/CrashDump.h"

namespace venlo
{

class tst_CrashDump : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noDump();
    void startedProgramsAreAsTheyWere();
};

namespace
{
/// A child that dies of SIGABRT in the folder; what became of it.
int statusOfDeath(const QString &folder, bool guarded)
{
    const QByteArray place = QFile::encodeName(folder);
    const pid_t child = fork();
    if (child == 0) {
        rlimit limit = {};
        getrlimit(RLIMIT_CORE, &limit);
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_CORE, &limit);
        if (chdir(place.constData()) != 0)
            _exit(1);
        if (guarded)
            keepMemoryOutOfCrashDumps();
        std::abort();
    }
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child ? status : 0;
}
} // namespace

void tst_CrashDump::noDump()
{
    const QTemporaryDir folder;
    const int status = statusOfDeath(folder.path(), true);
    QVERIFY(WIFSIGNALED(status));
    QVERIFY(!WCOREDUMP(status));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList());
    const int unguarded = statusOfDeath(folder.path(), false);
    QVERIFY(WIFSIGNALED(unguarded));
    if (!WCOREDUMP(unguarded))
        QSKIP("this machine dumps nothing");
}

void tst_CrashDump::startedProgramsAreAsTheyWere()
{
    std::array<int, 2> ends = {};
    QCOMPARE(pipe(ends.data()), 0);
    const pid_t child = fork();
    if (child == 0) {
        keepMemoryOutOfCrashDumps();
        dup2(ends[1], STDOUT_FILENO);
        execl("/bin/sh", "sh", "-c", "ulimit -H -c", nullptr);
        _exit(1);
    }
    close(ends[1]);
    std::array<char, 64> text = {};
    const ssize_t size = read(ends[0], text.data(), text.size());
    close(ends[0]);
    int status = 0;
    QCOMPARE(waitpid(child, &status, 0), child);
    rlimit limit = {};
    QCOMPARE(getrlimit(RLIMIT_CORE, &limit), 0);
    const QByteArray said = QByteArray(text.data(), size).trimmed();
    QCOMPARE(said == "0", limit.rlim_max == 0);
}

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_CrashDump)
#include "tst_CrashDump.moc"
