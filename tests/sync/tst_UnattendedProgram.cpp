#include <functional>
#include <stdexcept>

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "platform/SpecialFolders.h"
#include "shared/Flags.h"
#include "startup/CommandLine.h"
#include "startup/Program.h"
#include "support/ScriptedPerson.h"
#include "sync/StandInHost.h"

using namespace venlo;
using namespace venlo::test;

/// How a whole command line run begins and ends around its work.
class tst_UnattendedProgram : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void theUnattendedFlag_data();
    void theUnattendedFlag();
    void anyFailureEndsInOrder();

private:
    [[nodiscard]] int run(const QString &line, std::function<void()> action);

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<ScriptedPerson> m_person;
    Flags m_flags;
};

void tst_UnattendedProgram::init()
{
    m_home = std::make_unique<QTemporaryDir>();
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home->filePath(QStringLiteral("config"))));
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_home->filePath(QStringLiteral("data"))));
    m_person = std::make_unique<ScriptedPerson>();
    m_person->allowMessages();
    m_flags = {};
}

int tst_UnattendedProgram::run(const QString &line, std::function<void()> action)
{
    StandInHost host(std::move(action));
    Program program(
        {*m_person, nullptr, m_person.get(),
         [&host](const MainRooms &, const LaunchLayout &) { return Program::MainWindow{&host}; }},
        m_flags);
    return program.Main(CommandLine::parse(line));
}

void tst_UnattendedProgram::theUnattendedFlag_data()
{
    QTest::addColumn<QString>("verb");
    QTest::addColumn<bool>("batch");
    QTest::addColumn<bool>("set");
    QTest::newRow("under /b") << QStringLiteral("syncup") << true << true;
    QTest::newRow("down, under /b") << QStringLiteral("syncdown") << true << true;
    QTest::newRow("without /b somebody looks") << QStringLiteral("syncup") << false << false;
}

void tst_UnattendedProgram::theUnattendedFlag()
{
    QFETCH(QString, verb);
    QFETCH(bool, batch);
    m_flags.batch = batch;
    bool set = false;
    (void)run(verb + QStringLiteral("|pair"), [&] { set = m_flags.unattendedRun; });
    QTEST(set, "set");
    QVERIFY(!m_flags.unattendedRun);
}

void tst_UnattendedProgram::anyFailureEndsInOrder()
{
    QCOMPARE(run(QStringLiteral("/b syncup|pair"), [] { throw std::runtime_error("disk"); }), 1);
    QVERIFY(m_person->warnings().contains(QStringLiteral("disk")));
    const QString settings = FsGtSpFld(SpecialFolder::ApplicationData) +
                             QStringLiteral("/Venlo/tst_UnattendedProgram/User.xml");
    QVERIFY2(QFile::exists(settings), "the settings are saved all the same");
}

QTEST_GUILESS_MAIN(tst_UnattendedProgram)
#include "tst_UnattendedProgram.moc"
