#include <chrono>
#include <functional>
#include <optional>
#include <utility>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QTemporaryDir>
#include <QTest>

#include "db/Database.h"
#include "db/Store.h"
#include "mainwin/MainRooms.h"
#include "shared/Flags.h"
#include "shared/OperationGate.h"
#include "startup/CommandLine.h"
#include "startup/Program.h"
#include "startup/RunLock.h"
#include "startup/settings/SettingsFile.h"
#include "support/ScriptedPerson.h"
#include "sync/StandInHost.h"
#include "sync/WindowHost.h"

namespace venlo::test
{

namespace
{
class NoWindow : public WindowHost
{
public:
    void showMainWindow(const QString & /*site*/) override { ++shown; }
    int shown = 0;
};

constexpr std::chrono::milliseconds shortPatience(300);

QByteArray record(int width, int height)
{
    QByteArray bytes;
    for (const int number : {10, 20, width, height}) {
        for (const int shift : {0, 8, 16, 24})
            bytes += static_cast<char>((number >> shift) & 0xFF);
    }
    return bytes + QByteArray::fromHex("0200") + "/r" + QByteArray::fromHex("0400") + "/r/a";
}
} // namespace

class tst_Program : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void launchRecord_data();
    void launchRecord();
    void preparedBeforeTheCommand();
    void missingDatabase();
    void failingStoreEndsInOrder();
    void oneRunAtATime();
    void waitsForItsTurn();
    void notItsTurn_data();
    void notItsTurn();
    void windowsTakeTurns_data();
    void windowsTakeTurns();
    void theNextTurnSeesWhatWasDone();
    void opensWithoutItsTurn_data();
    void opensWithoutItsTurn();
    void staysOnAPatternThatWasNotShown();
    void whatAWindowSavedMeanwhileStays();

private:
    [[nodiscard]] int run(
        const QString &line, std::function<void()> action = [] {});
    [[nodiscard]] QString userData() const
    {
        return m_home->filePath(QStringLiteral("data/Venlo/tst_Program/"));
    }

    [[nodiscard]] QByteArray settingsBytes() const
    {
        QFile file(userData() + QStringLiteral("User.xml"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<ScriptedPerson> m_person;
    std::unique_ptr<Program> m_program;
    Flags m_flags;
    QStringList m_steps;
};

void tst_Program::init()
{
    m_program.reset();
    m_home = std::make_unique<QTemporaryDir>();
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home->filePath(QStringLiteral("config"))));
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_home->filePath(QStringLiteral("data"))));
    m_person = std::make_unique<ScriptedPerson>();
    m_person->allowMessages();
    m_flags = {};
    m_steps.clear();
}

int tst_Program::run(const QString &line, std::function<void()> action)
{
    StandInHost host(std::move(action));
    m_program =
        std::make_unique<Program>(Program::Faces{*m_person, nullptr, m_person.get(),
                                                 [&host](const MainRooms &, const LaunchLayout &) {
                                                     return Program::MainWindow{&host};
                                                 },
                                                 [this] { m_steps += QStringLiteral("prepared"); }},
                                  m_flags);
    return m_program->Main(CommandLine::parse(line));
}

void tst_Program::launchRecord_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<bool>("counts");
    QTest::newRow("a usable size") << 800 << 600 << true;
    QTest::newRow("no width") << 0 << 600 << false;
    QTest::newRow("no height") << 800 << 0 << false;
}

void tst_Program::launchRecord()
{
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(bool, counts);
    const QString path = m_home->filePath(QStringLiteral("my UT_ACT.pdat"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(record(width, height));
    file.close();
    QCOMPARE(run(path), 2); // there is no window to lay out
    QCOMPARE(m_flags.launchLayout, counts);
    QCOMPARE(m_program->launchRecord().left, 10);
    QCOMPARE(m_program->launchRecord().actPh, QStringLiteral("/r/a"));
}

void tst_Program::preparedBeforeTheCommand()
{
    QCOMPARE(
        run(QStringLiteral("/b syncup|pair"), [this] { m_steps += QStringLiteral("command"); }), 1);
    QCOMPARE(m_steps, (QStringList{QStringLiteral("prepared"), QStringLiteral("command")}));
}

void tst_Program::missingDatabase()
{
    QVERIFY(QDir().mkpath(userData()));
    QCOMPARE(
        run(QStringLiteral("/b syncup|pair"), [this] { m_steps += QStringLiteral("command"); }), 2);
    QCOMPARE(m_steps, QStringList{QStringLiteral("prepared")});
    QCOMPARE(m_person->messages(),
             QStringList{userData() + QStringLiteral("dbFtp.mdb  が存在しません")});
}

void tst_Program::failingStoreEndsInOrder()
{
    const QString words = QStringLiteral("ﾃﾞｨｽｸの空きがありません");
    QCOMPARE(run(QStringLiteral("/b syncup|pair"), [&words] { throw DbError(words); }), 1);
    QVERIFY(m_person->texts(ScriptedPerson::What::Warning).contains(words));
    // The shut-down routine ran: the settings are on the disk.
    QVERIFY(QFileInfo(userData() + QStringLiteral("User.xml")).size() > 0);
}

void tst_Program::oneRunAtATime()
{
    QLockFile another(RunLock::path(userData()));
    const auto command = [this, &another] {
        m_steps += another.tryLock(0) ? QStringLiteral("free") : QStringLiteral("taken");
        another.unlock();
    };
    QCOMPARE(run(QStringLiteral("/b syncup|pair"), command), 1);
    QVERIFY(m_steps.contains(QStringLiteral("taken")));
    m_program.reset();
    QVERIFY(another.tryLock(0)); // given back
}

void tst_Program::waitsForItsTurn()
{
    QVERIFY(QDir().mkpath(userData()));
    QLockFile another(RunLock::path(userData()));
    QVERIFY(another.tryLock(0));
    m_person->onYield([&another] { another.unlock(); });
    RunLock turn(userData(), *m_person);
    QVERIFY(turn.acquire(std::chrono::seconds(30)));
    QCOMPARE(m_person->texts(ScriptedPerson::What::Warning),
             QStringList{QStringLiteral("他の実行が終わるのを待っています")});
}

void tst_Program::notItsTurn_data()
{
    QTest::addColumn<bool>("cancelled");
    QTest::addColumn<int>("limit");
    QTest::newRow("the limit") << false << 300;
    QTest::newRow("cancelled while waiting") << true << 30'000;
}

void tst_Program::notItsTurn()
{
    QFETCH(bool, cancelled);
    QFETCH(int, limit);
    QVERIFY(QDir().mkpath(userData()));
    QLockFile another(RunLock::path(userData()));
    QVERIFY(another.tryLock(0));
    if (cancelled)
        m_person->cancelAfter(1);
    RunLock turn(userData(), *m_person);
    QVERIFY(!turn.acquire(std::chrono::milliseconds(limit)));
    QCOMPARE(m_person->texts(ScriptedPerson::What::Warning).value(1),
             RunLock::path(userData()) +
                 QStringLiteral(" : 他の実行が終わらないので実行しませんでした"));
}

void tst_Program::windowsTakeTurns_data()
{
    QTest::addColumn<bool>("comes");
    QTest::newRow("it comes while it is awaited") << true;
    QTest::newRow("it does not come: said once") << false;
}

void tst_Program::windowsTakeTurns()
{
    QFETCH(bool, comes);
    OperationGate *gate = nullptr;
    Program program({*m_person, nullptr, m_person.get(),
                     [&gate](const MainRooms &rooms, const LaunchLayout &) {
                         gate = &rooms.gate;
                         return Program::MainWindow{};
                     },
                     nullptr, shortPatience},
                    m_flags);
    QCOMPARE(program.Main(CommandLine::parse(QString())), 2); // there is no window to show
    QVERIFY(gate != nullptr);
    auto another = std::make_unique<QLockFile>(RunLock::path(userData()));
    QVERIFY(another->tryLock(0));
    if (comes)
        m_person->onYield([&another] { another.reset(); });
    m_person->clear();
    QCOMPARE(static_cast<bool>(gate->begin()), comes);
    QVERIFY(!gate->busy());
    QVERIFY(gate->begin(OperationGate::Reach::Disk));
    QCOMPARE(
        m_person->messages(),
        comes ? QStringList()
              : QStringList{QStringLiteral("他の実行が終わるのを待って もう一度実行して下さい")});
    m_person->onYield(nullptr);
    another.reset();
    QVERIFY(gate->begin());
}

/// Cache rows share commits while an operation runs; another process must see them all after it.
void tst_Program::theNextTurnSeesWhatWasDone()
{
    NoWindow host;
    qlonglong seen = 0;
    const auto change = [&seen](Database &database, OperationGate &gate) {
        auto turn = std::make_optional(gate.begin());
        database.store().grouped([&database] {
            database.run(QStringLiteral("Insert Into tbFold (sPh, sUL, sUF, sEd)"
                                        " Values ('/a', '', '', '')"));
        });
        turn.reset();
        Store another;
        another.open(database.path());
        seen =
            another.queryJet(QStringLiteral("Select Count(*) From tbFold")).at(0, 0).toLongLong();
    };
    Program program({*m_person, nullptr, m_person.get(),
                     [&](const MainRooms &rooms, const LaunchLayout &) {
                         return Program::MainWindow{
                             nullptr, &host,
                             [&change, &database = rooms.database, &gate = rooms.gate] {
                                 change(database, gate);
                             }};
                     }},
                    m_flags);
    QCOMPARE(program.Main(CommandLine::parse(QString())), 0);
    QCOMPARE(seen, 1);
}

void tst_Program::opensWithoutItsTurn_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("interrupted");
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("shown");
    QTest::addColumn<bool>("told");
    QTest::newRow("open") << QStringLiteral("open|site") << false << 1 << 0 << true;
    QTest::newRow("openp") << QStringLiteral("openp|pair") << false << 1 << 1 << true;
    QTest::newRow("an interrupt") << QStringLiteral("openp|pair") << true << 1 << 0 << false;
    QTest::newRow("no name") << QStringLiteral("openp|") << false << 2 << 0 << false;
}

/// A pattern's window comes in any case, as after a plain start: a person may use it while another
/// process has the turn. A site's comes only once that is connected.
void tst_Program::opensWithoutItsTurn()
{
    QFETCH(QString, line);
    QFETCH(bool, interrupted);
    QFETCH(int, shown);
    QFETCH(bool, told);
    QCOMPARE(run(QStringLiteral("up|")), 2); // the first start, which makes the database
    QLockFile another(RunLock::path(userData()));
    QVERIFY(another.tryLock(0));
    m_person->clear();
    if (interrupted)
        m_person->cancelAfter(1);
    StandInHost patterns([this] { m_steps += QStringLiteral("command"); });
    NoWindow window;
    int stays = 0;
    Program program({*m_person, nullptr, m_person.get(),
                     [&](const MainRooms &, const LaunchLayout &) {
                         return Program::MainWindow{&patterns, &window, [&stays] { ++stays; }};
                     },
                     nullptr, shortPatience},
                    m_flags);
    m_steps.clear();
    QTEST(program.Main(CommandLine::parse(line)), "status");
    QCOMPARE(window.shown, shown);
    QCOMPARE(stays, shown);
    QVERIFY(m_steps.isEmpty());
    const QStringList words{QStringLiteral("他の実行が終わるのを待って もう一度実行して下さい")};
    QCOMPARE(m_person->messages(), told ? words : QStringList());
}

void tst_Program::staysOnAPatternThatWasNotShown()
{
    StandInHost patterns([this] { m_steps += QStringLiteral("command"); });
    NoWindow window;
    OperationGate *gate = nullptr;
    Program program({*m_person, nullptr, m_person.get(),
                     [&](const MainRooms &rooms, const LaunchLayout &) {
                         gate = &rooms.gate;
                         return Program::MainWindow{&patterns, &window, [this, &gate] {
                                                        m_steps += gate->busy()
                                                                       ? QStringLiteral("busy")
                                                                       : QStringLiteral("stays");
                                                    }};
                     }},
                    m_flags);
    QCOMPARE(program.Main(CommandLine::parse(QStringLiteral("openp|pair"))), 1);
    QCOMPARE(window.shown, 1);
    QCOMPARE(m_steps, (QStringList{QStringLiteral("command"), QStringLiteral("stays")}));
}

/// A run that changes no setting ends long after it read them.
void tst_Program::whatAWindowSavedMeanwhileStays()
{
    QByteArray saved;
    const auto save = [this, &saved] {
        yIni settings(*m_person);
        bool ok = false;
        settings.GetTxt(userData() + QStringLiteral("User.xml"), ok);
        settings.GetGtx(QStringLiteral("証明書"));
        settings.SetVal(QStringLiteral("server"), QStringLiteral("pin"));
        settings.SetGtx();
        settings.SetTxt(ok);
        saved = settingsBytes();
    };
    QCOMPARE(run(QStringLiteral("/b syncup|pair"), save), 1);
    QVERIFY(saved.contains("<server>pin</server>"));
    QCOMPARE(settingsBytes(), saved);
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::tst_Program)
#include "tst_Program.moc"
