// Synchronises many files up, down and up again while the connection is dropped at random, until
// both sides are equal. Prints the seed, what happened, and the peak of the memory used.
#include "support/Certificates.h"
#include "support/FaultRelay.h"
#include "support/FtpDaemon.h"
#include "sync/SyncWorld.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>

#include <atomic>
#include <cstdio>
#include <functional>
#include <thread>

#include <sys/resource.h>

namespace
{

using namespace venlo;
using namespace venlo::test;
using namespace std::chrono_literals;

const QString pattern = QStringLiteral("p");
constexpr int filesInEach = 100;
constexpr int mostRuns = 200;

/// Ends every connection, again and again, at random intervals.
class Dropper
{
public:
    /// drop: ends them; how many there were.
    Dropper(const std::function<int()> &drop, quint32 seed, int meanMs)
        : m_thread([this, drop, seed, meanMs] { run(drop, seed, meanMs); })
    {
    }
    ~Dropper()
    {
        m_bell.ring();
        m_thread.join();
    }
    [[nodiscard]] int drops() const { return m_drops; }

private:
    void run(const std::function<int()> &drop, quint32 seed, int meanMs)
    {
        QRandomGenerator random(seed);
        while (!m_bell.waitFor(static_cast<int>(random.bounded(2 * meanMs)) + 1))
            m_drops += drop();
    }
    StopBell m_bell;
    std::atomic<int> m_drops = 0;
    std::thread m_thread;
};

/// A tree of files that are no multiple of anything, changed by its round.
std::vector<TreeRow> treeOf(int files, int round, QRandomGenerator &random)
{
    std::vector<TreeRow> rows;
    const QDateTime time = QDateTime(QDate(2024, 1, 1), QTime(9, 0)).addDays(round);
    for (int i = 0; i < files; ++i) {
        const QByteArray path =
            'd' + QByteArray::number(i / filesInEach) + "/f" + QByteArray::number(i) + ".txt";
        const int size = 200 + static_cast<int>(random.bounded(i % 50 == 0 ? 200'000 : 4'000));
        rows.push_back({path, QByteArray(size, static_cast<char>('a' + (i + round) % 26)), time});
    }
    return rows;
}

long peakMegabytes()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

/// One direction, as often as it takes; false when it never ends.
bool untilEqual(SyncWorld &world, const FtpDaemon &daemon, Dropper &dropper, bool upwards)
{
    QElapsedTimer time;
    time.start();
    const int dropsBefore = dropper.drops();
    int runs = 0;
    QStringList left;
    do {
        ++runs;
        world.person.clear();
        world.session.CloseInternet();
        const int status = world.batch().RunSyncPattern(pattern, upwards);
        left =
            difference(snapshot(world.local()), snapshot(daemon.root() + QStringLiteral("/pub")));
        std::printf("  %s, run %d: status %d, %lld differences, %d dropped, %ld MB\n",
                    upwards ? "up" : "down", runs, status, static_cast<long long>(left.size()),
                    dropper.drops() - dropsBefore, peakMegabytes());
        std::fflush(stdout);
        if (status == 0 && !left.isEmpty()) {
            std::printf("  says it is done, and is not: %s\n", qPrintable(left.constFirst()));
            return false;
        }
    } while (!left.isEmpty() && runs < mostRuns);
    std::printf("%s: %s after %d runs, %d dropped connections, %.1f s\n", upwards ? "up" : "down",
                left.isEmpty() ? "equal" : "NOT EQUAL", runs, dropper.drops() - dropsBefore,
                static_cast<double>(time.elapsed()) / 1000);
    return left.isEmpty();
}

/// Files of the master that are not there any more, or not what they were.
bool keptMaster(const std::vector<TreeRow> &rows, const TreeSnapshot &now)
{
    for (const TreeRow &row : rows) {
        const auto found = now.find(row.path);
        if (found == now.end() || found->second.bytes != row.bytes) {
            std::printf("LOST: %s\n", row.path.constData());
            return false;
        }
    }
    return true;
}

int soak(FtpDaemon::Kind kind, quint32 seed, int files, int meanMs, bool tls)
{
    std::printf("%s%s, seed %u, %d files, a drop every %d ms\n", FtpDaemon::name(kind),
                tls ? " under TLS" : "", seed, files, meanMs);
    QRandomGenerator random(seed);
    QString why;
    Certificates certificates;
    DaemonOptions options;
    if (tls && !certificates.make(&why)) {
        std::printf("%s\n", qPrintable(why));
        return 2;
    }
    if (tls) {
        certificates.trustAuthority();
        options.tls = DaemonTls::V13;
        options.certificate = certificates.file(Certificates::Kind::Signed);
    }
    FtpDaemon daemon(kind, options);
    if (!daemon.start(&why) || !daemon.makeFolder("pub")) {
        std::printf("%s\n", qPrintable(why));
        return 2;
    }
    FaultRelay relay(daemon.port());
    const bool listens = relay.start();
    if (!listens)
        return 2;
    ClientLimits limits;
    limits.connect = 5s;
    limits.reply = 5s;
    limits.idleData = 5s;
    SyncWorld world(limits);
    // The relay reads the dialogue. Where that is TLS there is none: the daemon's own sessions are
    // killed, which leaves every connection without close_notify.
    world.registerSite(tls ? QStringLiteral("ftps:") + daemon.server() : relay.server(),
                       daemon.user(), daemon.password());
    world.registerPattern(pattern, QStringLiteral("/pub"));
    const auto drop = [&] { return tls ? daemon.dropSessions() : relay.dropConnections(); };
    Dropper dropper(drop, random.generate(), meanMs);
    for (int round = 0; round < 3; ++round) {
        const bool upwards = round != 1;
        const std::vector<TreeRow> rows = treeOf(files, round, random);
        const QString master = upwards ? world.local() : daemon.root() + QStringLiteral("/pub");
        // A tenth of the old ones is gone from the master.
        if (!QDir(master).removeRecursively() || !QDir().mkpath(master) ||
            !makeTree(master, {rows.begin(), rows.end() - (round * files) / 10}))
            return 2;
        daemon.own();
        if (!untilEqual(world, daemon, dropper, upwards) ||
            !keptMaster({rows.begin(), rows.end() - (round * files) / 10}, snapshot(master)))
            return 1;
    }
    std::printf("peak memory %ld MB\n", peakMegabytes());
    return 0;
}

} // namespace

/// soak [SEED [FILES [MEAN-MS [DAEMON [tls]]]]]
int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const auto argument = [&](int number, quint32 otherwise) {
        return argc > number ? QByteArray(argv[number]).toUInt() : otherwise;
    };
    const quint32 seed = argument(1, QRandomGenerator::global()->generate());
    FtpDaemon::Kind chosen = FtpDaemon::Kind::Proftpd;
    for (const FtpDaemon::Kind kind : FtpDaemon::all()) {
        if (argc > 4 && QByteArray(argv[4]) == FtpDaemon::name(kind))
            chosen = kind;
    }
    return soak(chosen, seed, static_cast<int>(argument(2, 10'000)),
                static_cast<int>(argument(3, 3'000)), argc > 5 && QByteArray(argv[5]) == "tls");
}
