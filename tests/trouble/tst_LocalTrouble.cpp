#include <map>

#include <QApplication>
#include <QElapsedTimer>
#include <QTest>

#include "trouble/OrdinaryUser.h"
#include "trouble/TroubleRun.h"

using namespace venlo;
using namespace venlo::test;

namespace
{
/// What any combination may take at most.
constexpr qint64 limitMs = 20'000;

enum class End {
    Done,  ///< as if nothing were
    Told,  ///< a message, a log line, an outcome, status 1
    Either ///< as it comes
};

using Operations = QList<TroubleOperation>;

/// What one kind of trouble does to some operations.
struct Rule {
    Trouble trouble;
    Operations operations;
    End end;
    QList<QByteArray> victims;
};

const QList<QByteArray> everything{""};
const QList<QByteArray> nothing{};
constexpr auto Put = TroubleOperation::Put;
constexpr auto Get = TroubleOperation::Get;
constexpr auto DragUp = TroubleOperation::DragUp;
constexpr auto DragDown = TroubleOperation::DragDown;
constexpr auto Delete = TroubleOperation::Delete;
constexpr auto SyncUp = TroubleOperation::SyncUp;
constexpr auto SyncDown = TroubleOperation::SyncDown;
constexpr auto CompareUp = TroubleOperation::CompareUp;
constexpr auto CompareDown = TroubleOperation::CompareDown;
const Operations all{Put, Get, DragUp, DragDown, Delete, SyncUp, SyncDown, CompareUp, CompareDown};
const Operations comparisons{CompareUp, CompareDown};

std::vector<Rule> rules()
{
    using enum Trouble;
    return {
        {DiskFull, {Get, DragDown, SyncDown}, End::Told, everything},
        {DiskFull, {Put, DragUp, SyncUp, CompareUp, CompareDown}, End::Done, nothing},
        {DiskFull, {Delete}, End::Either, everything},
        {UserDataFull, {Put, Get, DragUp, DragDown}, End::Either, nothing},
        {UserDataFull, {Delete}, End::Done, nothing},
        {UserDataFull, {SyncUp, SyncDown, CompareUp, CompareDown}, End::Told, everything},
        {ReadOnlyRoot, {Get, DragDown, SyncDown}, End::Told, everything},
        {ReadOnlyRoot, {Delete}, End::Told, everything},
        {ReadOnlyRoot, {Put, DragUp, SyncUp, CompareUp, CompareDown}, End::Done, nothing},
        {ReadOnlyFolder, {DragDown, SyncDown}, End::Told, {"last/"}},
        {ReadOnlyFolder, {Delete}, End::Told, {"in/"}},
        {ReadOnlyFolder, {Put, Get, DragUp, SyncUp, CompareUp, CompareDown}, End::Done, nothing},
        {ReadOnlyFiles, {Get}, End::Told, {"2.txt"}},
        {ReadOnlyFiles, {DragDown, SyncDown}, End::Told, {"2.txt", "last/5.txt"}},
        {ReadOnlyFiles, {Put, DragUp, Delete, SyncUp, CompareUp, CompareDown}, End::Done, nothing},
        {Unreadable, {Put, Get}, End::Told, {"2.txt"}},
        {Unreadable, {DragUp, SyncUp}, End::Told, {"2.txt", "in/3.txt"}},
        {Unreadable, {DragDown, SyncDown}, End::Told, {"2.txt", "last/5.txt"}},
        {Unreadable, {Delete, CompareUp, CompareDown}, End::Done, nothing},
        {DeniedFolder, {Put, Get}, End::Done, nothing},
        {DeniedFolder, {DragUp, Delete}, End::Told, {"in/"}},
        {DeniedFolder, {DragDown}, End::Told, {"last/"}},
        {DeniedFolder, {SyncUp, SyncDown, CompareUp, CompareDown}, End::Told, everything},
        {DeniedEntries, {Put, Get}, End::Done, nothing},
        {DeniedEntries, {DragUp, Delete}, End::Told, {"in/"}},
        {DeniedEntries, {DragDown}, End::Told, {"last/"}},
        {DeniedEntries, {SyncUp, SyncDown}, End::Told, everything},
        {DeniedEntries, comparisons, End::Either, nothing},
        {VanishedRoot, {Get, DragDown}, End::Done, {"both.txt", "gone.txt", "old/", "last/"}},
        {VanishedRoot, {Put, DragUp, Delete, SyncUp, SyncDown}, End::Told, everything},
        {VanishedRoot, comparisons, End::Told, everything},
        {VanishedEntries, {Put}, End::Told, {"2.txt", "in/"}},
        {VanishedEntries, {DragUp, Delete}, End::Told, {"2.txt", "in/"}},
        {VanishesMeanwhile, {Put, DragUp, SyncUp}, End::Told, {"2.txt", "in/"}},
        {VanishesMeanwhile, {DragDown, SyncDown}, End::Either, {"2.txt", "last/"}},
        {Grows, {Put}, End::Told, {"2.txt"}},
        {Grows, {DragUp, SyncUp}, End::Told, {"2.txt", "in/3.txt"}},
        {Shrinks, {Put}, End::Done, {"2.txt"}},
        {Shrinks, {DragUp, SyncUp}, End::Done, {"2.txt", "in/3.txt"}},
        {ShrinksAlways, {Put}, End::Told, {"2.txt"}},
        {ShrinksAlways, {DragUp, SyncUp}, End::Told, {"2.txt", "in/3.txt"}},
        {NameTooLong, {Put, DragUp, SyncUp}, End::Told, {"2.txt"}},
        {NameTooLong, {Get, DragDown, SyncDown}, End::Told, nothing},
        {NameTooLong, {CompareDown}, End::Done, nothing},
        {LinkInstead, {Put, Get}, End::Done, {"in/", "last/"}},
        {LinkInstead, {DragUp}, End::Told, {"in/"}},
        {LinkInstead, {Delete}, End::Done, {"in/"}},
        {LinkInstead, {DragDown}, End::Told, {"last/"}},
        {LinkInstead, {SyncUp}, End::Either, {"in/"}},
        {LinkInstead, {SyncDown}, End::Told, {"last/"}},
        {LinkInstead, comparisons, End::Done, {"in/", "last/"}},
        {LinkMeanwhile, {DragUp, SyncUp}, End::Told, {"in/"}},
        {LinkMeanwhile, {DragDown, SyncDown}, End::Told, {"last/"}},
        {LinkInRemoval, {SyncDown}, End::Told, {"last/"}},
        {Leftover, all, End::Done, nothing},
        {ClockSetBack, all, End::Done, nothing},
    };
}

bool needsSmallDisk(Trouble trouble)
{
    return trouble == Trouble::DiskFull || trouble == Trouble::UserDataFull;
}
} // namespace

Q_DECLARE_METATYPE(TroubleOperation)
Q_DECLARE_METATYPE(Trouble)
Q_DECLARE_METATYPE(End)

/// Every kind of trouble of this machine in every operation. A row's victims may stay as they were;
/// all the rest is carried out, and nothing is lost. Run with the name of one function it tries
/// that one only.
class tst_LocalTrouble : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void sending_data() { combinations({Put, DragUp}); }
    void sending() { combination(); }
    void fetching_data() { combinations({Get, DragDown}); }
    void fetching() { combination(); }
    void deleting_data() { combinations({Delete}); }
    void deleting() { combination(); }
    void synchronising_data() { combinations({SyncUp, SyncDown}); }
    void synchronising() { combination(); }
    void comparing_data() { combinations(comparisons); }
    void comparing() { combination(); }
    void cleanupTestCase() const;

private:
    static void combinations(const Operations &wanted);
    void combination();
    [[nodiscard]] const BothTrees &asked(TroubleOperation operation, Trouble trouble);

    std::map<std::pair<TroubleOperation, bool>, BothTrees> m_asked;
    int m_tried = 0;
    int m_told = 0;
};

void tst_LocalTrouble::combinations(const Operations &wanted)
{
    QTest::addColumn<TroubleOperation>("operation");
    QTest::addColumn<Trouble>("trouble");
    QTest::addColumn<End>("end");
    QTest::addColumn<QList<QByteArray>>("victims");
    for (const Rule &rule : rules()) {
        for (const TroubleOperation operation : rule.operations) {
            if (!wanted.contains(operation))
                continue;
            const QByteArray name = TroubleRun::nameOf(operation) + ": " + nameOf(rule.trouble);
            QTest::newRow(name.constData())
                << operation << rule.trouble << rule.end << rule.victims;
        }
    }
}

/// The trees of a run without trouble, of the same times.
const BothTrees &tst_LocalTrouble::asked(TroubleOperation operation, Trouble trouble)
{
    const bool future = trouble == Trouble::ClockSetBack;
    const auto known = m_asked.find({operation, future});
    if (known != m_asked.end())
        return known->second;
    TroubleRun run(operation, future ? trouble : Trouble::None);
    if (!run.prepare() || !run.act())
        qFatal("without trouble: %s", qPrintable(run.story()));
    return m_asked[{operation, future}] = run.trees();
}

void tst_LocalTrouble::combination()
{
    QFETCH(TroubleOperation, operation);
    QFETCH(Trouble, trouble);
    QFETCH(End, end);
    QFETCH(QList<QByteArray>, victims);
    if (needsSmallDisk(trouble) && smallDisk().isEmpty())
        QSKIP("the system gives no small disk");
    const BothTrees &wanted = asked(operation, trouble);
    TroubleRun run(operation, trouble);
    QVERIFY2(run.prepare(), qPrintable(run.story()));
    QElapsedTimer time;
    time.start();
    const bool done = run.act();
    QVERIFY2(time.elapsed() < limitMs, "it does not end in time");
    run.relieve();
    ++m_tried;
    m_told += run.told() ? 1 : 0;
    const QStringList wrong = run.broken(wanted, victims);
    if (!wrong.isEmpty())
        qWarning("%s", qPrintable(run.story())); // too long for a failure's own words
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(QLatin1Char('\n'))));
    if (end != End::Either)
        QVERIFY2(done == (end == End::Done), qPrintable(run.story()));
    if (operation != TroubleOperation::Delete && trouble != Trouble::VanishedRoot &&
        trouble != Trouble::VanishedEntries && trouble != Trouble::VanishesMeanwhile &&
        trouble != Trouble::LinkInstead)
        QVERIFY2(run.again(), qPrintable(run.story()));
}

void tst_LocalTrouble::cleanupTestCase() const
{
    qInfo("%d combinations, %d told or logged", m_tried, m_told);
}

int main(int argc, char **argv)
{
    becomeOrdinaryUser();
    const QApplication application(argc, argv);
    tst_LocalTrouble test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_LocalTrouble.moc"
