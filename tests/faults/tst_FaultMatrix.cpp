#include "faults/FaultKinds.h"
#include "faults/FaultRun.h"

#include <QElapsedTimer>
#include <QTest>

using namespace venlo;
using namespace venlo::test;
using namespace std::chrono_literals;

namespace
{
/// What any combination may take at most.
constexpr qint64 limitMs = 60'000;
/// Of the combinations, unless all are wanted: every so many-th. Prime, so that no kind of fault is
/// left out at every step.
constexpr int sparse = 7;
constexpr int sparseOnDaemons = 97;

/// VENLO_FAULT_SERVER: "scripted" unless it says "plain" (a scripted server with LIST and PASV
/// only) or names a daemon.
QString serverName()
{
    return qEnvironmentVariable("VENLO_FAULT_SERVER", QStringLiteral("scripted"));
}

std::unique_ptr<FaultBackend> namedBackend()
{
    for (const FtpDaemon::Kind kind : FtpDaemon::all()) {
        if (serverName() == QLatin1String(FtpDaemon::name(kind)))
            return daemonBackend(kind);
    }
    const bool modern = serverName() == QLatin1String("scripted");
    return scriptedBackend(modern, modern);
}

bool isDaemon()
{
    return serverName() != QLatin1String("scripted") && serverName() != QLatin1String("plain");
}

/// Whether the number-th combination is tried. VENLO_FAULT_PART "2/4" takes the second quarter of
/// those that would be.
bool isWanted(int number)
{
    const int step = qEnvironmentVariableIsSet("VENLO_ALL_FAULTS") ? 1
                     : serverName() == QLatin1String("scripted")   ? sparse
                                                                   : sparseOnDaemons;
    if (number % step != 0)
        return false;
    const QStringList part =
        qEnvironmentVariable("VENLO_FAULT_PART", QStringLiteral("1/1")).split(QLatin1Char('/'));
    const int parts = part.value(1).toInt();
    return parts < 1 || number / step % parts == part.value(0).toInt() - 1;
}

ClientLimits shortest()
{
    ClientLimits limits;
    limits.connect = isDaemon() ? 1000ms : 400ms;
    limits.reply = isDaemon() ? 800ms : 300ms;
    limits.idleData = isDaemon() ? 800ms : 300ms;
    return limits;
}
} // namespace

Q_DECLARE_METATYPE(RelayFault)

/// Every kind of fault at every step of every operation, through a relay in front of a server. Run
/// with the name of one operation it tries that one only.
class tst_FaultMatrix : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void connect_data() { combinations(FaultOperation::Connect); }
    void connect() { combination(FaultOperation::Connect); }
    void list_data() { combinations(FaultOperation::List); }
    void list() { combination(FaultOperation::List); }
    void get_data() { combinations(FaultOperation::Get); }
    void get() { combination(FaultOperation::Get); }
    void put_data() { combinations(FaultOperation::Put); }
    void put() { combination(FaultOperation::Put); }
    void rename_data() { combinations(FaultOperation::Rename); }
    void rename() { combination(FaultOperation::Rename); }
    void remove_data() { combinations(FaultOperation::Remove); }
    void remove() { combination(FaultOperation::Remove); }
    void deleteFile_data() { combinations(FaultOperation::Delete); }
    void deleteFile() { combination(FaultOperation::Delete); }
    void make_data() { combinations(FaultOperation::Make); }
    void make() { combination(FaultOperation::Make); }
    void syncUp_data() { combinations(FaultOperation::SyncUp); }
    void syncUp() { combination(FaultOperation::SyncUp); }
    void syncDown_data() { combinations(FaultOperation::SyncDown); }
    void syncDown() { combination(FaultOperation::SyncDown); }
    void cleanupTestCase();

private:
    void combinations(FaultOperation operation);
    void combination(FaultOperation operation);
    [[nodiscard]] bool open();

    std::unique_ptr<FaultBackend> m_backend;
    std::unique_ptr<FaultRelay> m_relay;
    FaultTrees m_asked;
    int m_number = 0; ///< of the combination, over all operations
    int m_tried = 0;
    int m_done = 0;
    int m_reported = 0;
    int m_remnants = 0;
    qint64 m_longest = 0;
};

bool tst_FaultMatrix::open()
{
    QString why;
    m_backend = namedBackend();
    if (!m_backend->start(&why)) {
        qWarning("%s", qPrintable(why));
        return false;
    }
    m_relay = std::make_unique<FaultRelay>(m_backend->port());
    return m_relay->start();
}

/// The steps are those of a run in which nothing goes wrong.
void tst_FaultMatrix::combinations(FaultOperation operation)
{
    QTest::addColumn<RelayFault>("fault");
    QVERIFY(open());
    FaultRun run(*m_backend, *m_relay, operation, SyncWorld::shortWaits());
    QVERIFY(run.prepare());
    QVERIFY2(run.act({}), qPrintable(run.story()));
    QVERIFY2(!run.reported(), qPrintable(run.story()));
    const QList<QByteArray> verbs = m_relay->verbs();
    m_asked = run.trees();
    for (const bool always : {false, true}) {
        for (const NamedFault &named : faultsOf(verbs, always)) {
            if (isWanted(++m_number))
                QTest::newRow(named.name.constData()) << named.fault;
        }
    }
}

void tst_FaultMatrix::combination(FaultOperation operation)
{
    if (QTest::currentDataTag() == nullptr)
        QSKIP("none of its combinations is in this part");
    QFETCH(RelayFault, fault);
    FaultRun run(*m_backend, *m_relay, operation, shortest());
    QVERIFY2(run.prepare(), qPrintable(run.story()));
    QElapsedTimer time;
    time.start();
    const bool done = run.act(fault);
    m_longest = std::max(m_longest, time.elapsed());
    QVERIFY2(time.elapsed() < limitMs, "it does not end in time");
    QVERIFY2(m_relay->hits() > 0, "the fault did not come about");
    ++m_tried;
    m_done += done ? 1 : 0;
    m_reported += run.reported() ? 1 : 0;
    const QStringList wrong = run.broken(m_asked);
    m_remnants += run.remnants();
    if (!wrong.isEmpty())
        qWarning("%s", qPrintable(run.story())); // too long for a failure's own words
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(QLatin1Char('\n'))));
    QVERIFY2(run.recover(m_asked), qPrintable(run.story()));
}

void tst_FaultMatrix::cleanupTestCase()
{
    qInfo("%d combinations: %d done all the same, %d told or logged, %d remnants noted on the "
          "server, the longest %lld ms",
          m_tried, m_done, m_reported, m_remnants, static_cast<long long>(m_longest));
}

QTEST_GUILESS_MAIN(tst_FaultMatrix)
#include "tst_FaultMatrix.moc"
