#include <memory>

#include <sys/stat.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QSysInfo>
#include <QTest>

#include "e2e/ProgramRun.h"
#include "support/ScriptedServer.h"
#include "support/Trees.h"
#include "trouble/OrdinaryUser.h"

using namespace venlo;
using namespace venlo::test;

namespace
{
constexpr qint64 limitMs = 30'000;
constexpr int anyFailure = -2; ///< 1 or 2
constexpr int anyEnd = -3;     ///< the program gives itself the rights of an owner

void setMode(const QString &path, unsigned mode)
{
    if (chmod(QFile::encodeName(path).constData(), static_cast<mode_t>(mode)) != 0)
        qWarning("the rights of %s stay", qPrintable(path));
}

void put(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qWarning("%s cannot be written", qPrintable(path));
}

/// What is done to the program's folders, and undone again.
struct Places {
    QString data;
    QString local;
    [[nodiscard]] QString database() const { return data + QStringLiteral("/dbFtp.mdb"); }
    [[nodiscard]] QString aside() const { return data + QStringLiteral("/../aside"); }
};
using Step = void (*)(const Places &);

struct Named {
    const char *name;
    Step begin;
    Step relieve;
    int syncStatus; ///< of the synchronisations
    int copyStatus; ///< of put and get
};

const std::vector<Named> &troubles()
{
    static const std::vector<Named> all{
        {"user data read-only", [](const Places &p) { setMode(p.data, 0500); },
         [](const Places &p) { setMode(p.data, 0700); }, anyFailure, anyFailure},
        {"database read-only", [](const Places &p) { setMode(p.database(), 0400); },
         [](const Places &p) { setMode(p.database(), 0600); }, anyEnd, anyEnd},
        {"database unreadable", [](const Places &p) { setMode(p.database(), 0); },
         [](const Places &p) { setMode(p.database(), 0600); }, anyFailure, anyFailure},
        {"a folder in the database's place",
         [](const Places &p) {
             QDir().rename(p.database(), p.aside());
             QDir().mkdir(p.database());
         },
         [](const Places &p) {
             QDir().rmdir(p.database());
             QDir().rename(p.aside(), p.database());
         },
         anyFailure, anyFailure},
        {"no database in it",
         [](const Places &p) {
             QFile::rename(p.database(), p.aside());
             put(p.database(), QByteArray(20000, 'x'));
         },
         [](const Places &p) {
             QFile::remove(p.database());
             QFile::rename(p.aside(), p.database());
         },
         anyFailure, anyFailure},
        {"folders in the logs' places",
         [](const Places &p) {
             QDir().mkdir(p.data + QStringLiteral("/FtpErr.Log"));
             QDir().mkdir(p.data + QStringLiteral("/FtpEvent.Log"));
         },
         [](const Places &p) {
             QDir().rmdir(p.data + QStringLiteral("/FtpErr.Log"));
             QDir().rmdir(p.data + QStringLiteral("/FtpEvent.Log"));
         },
         0, 0},
        {"unreadable settings",
         [](const Places &p) {
             put(p.data + QStringLiteral("/User.xml"), "<x");
             setMode(p.data + QStringLiteral("/User.xml"), 0);
         },
         [](const Places &p) { QFile::remove(p.data + QStringLiteral("/User.xml")); }, 0, 0},
        {"a lock of the future",
         [](const Places &p) {
             const QString lock = p.data + QStringLiteral("/Run.lock");
             put(lock, "999999999\nVenloFtp\n" + QSysInfo::machineHostName().toUtf8() + '\n');
             QFile file(lock);
             if (file.open(QIODevice::ReadWrite))
                 file.setFileTime(QDateTime::currentDateTime().addYears(5),
                                  QFileDevice::FileModificationTime);
         },
         [](const Places &p) { QFile::remove(p.data + QStringLiteral("/Run.lock")); }, 0, 0},
        {"local folder gone", [](const Places &p) { QDir(p.local).removeRecursively(); },
         [](const Places &p) { QDir().mkpath(p.local); }, 1, anyFailure},
        {"a file in the local folder's place",
         [](const Places &p) {
             QDir(p.local).removeRecursively();
             put(p.local, "x");
         },
         [](const Places &p) {
             QFile::remove(p.local);
             QDir().mkpath(p.local);
         },
         1, 1},
        {"local folder denied", [](const Places &p) { setMode(p.local, 0); },
         [](const Places &p) { setMode(p.local, 0700); }, 1, 1},
    };
    return all;
}
} // namespace

Q_DECLARE_METATYPE(Step)

/// The program itself, unattended: whatever its folders do to it, it ends in order, with a status
/// and words, and the next run works.
class tst_ProgramTrouble : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void runs_data();
    void runs();
    void fullUserData_data() { verbs(); }
    void fullUserData();

private:
    static void verbs();
    [[nodiscard]] bool prepare();
    [[nodiscard]] QString argument(const QString &verb) const;

    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<ProgramRun> m_program;
};

void tst_ProgramTrouble::init()
{
    if (!QFileInfo(QStringLiteral(VENLO_PROGRAM)).isExecutable())
        QSKIP("an ordinary user does not reach the program");
    m_program.reset();
    m_server = std::make_unique<ScriptedServer>();
}

bool tst_ProgramTrouble::prepare()
{
    m_program = std::make_unique<ProgramRun>();
    m_server->put("/pub/there.txt", "there");
    if (!m_program->prepare() || !m_server->start() ||
        !makeTree(m_program->localFolder(), {{"here.txt", "here"}}))
        return false;
    m_program->registerSite(QStringLiteral("site"), m_server->server(), m_server->user(),
                            m_server->password());
    m_program->registerPattern(QStringLiteral("pair"), m_program->localFolder(),
                               QStringLiteral("site"), QStringLiteral("/pub"));
    return true;
}

void tst_ProgramTrouble::verbs()
{
    QTest::addColumn<QString>("verb");
    for (const char *verb : {"syncup", "syncdown", "put", "get"})
        QTest::newRow(verb) << QString::fromLatin1(verb);
}

QString tst_ProgramTrouble::argument(const QString &verb) const
{
    const QString start = QStringLiteral("/b ") + verb + QLatin1Char('|');
    if (verb.startsWith(QLatin1String("sync")))
        return start + QStringLiteral("pair");
    const QString name =
        verb == QLatin1String("put") ? QStringLiteral("here.txt") : QStringLiteral("there.txt");
    return start + m_program->localFolder() + QStringLiteral("|site|/pub|") + name;
}

void tst_ProgramTrouble::runs_data()
{
    QTest::addColumn<QString>("verb");
    QTest::addColumn<Step>("begin");
    QTest::addColumn<Step>("relieve");
    QTest::addColumn<int>("status");
    for (const Named &trouble : troubles()) {
        for (const char *verb : {"syncup", "syncdown", "put", "get"}) {
            const bool syncs = QByteArray(verb).startsWith("sync");
            QTest::addRow("%s: %s", verb, trouble.name)
                << QString::fromLatin1(verb) << trouble.begin << trouble.relieve
                << (syncs ? trouble.syncStatus : trouble.copyStatus);
        }
    }
}

void tst_ProgramTrouble::runs()
{
    QFETCH(QString, verb);
    QFETCH(Step, begin);
    QFETCH(Step, relieve);
    QFETCH(int, status);
    QVERIFY(prepare());
    const Places places{m_program->userData(), m_program->localFolder()};
    begin(places);
    QElapsedTimer time;
    time.start();
    const RunResult run = m_program->run(argument(verb), limitMs);
    const QByteArray said = (run.errors + run.output).toUtf8();
    relieve(places);
    QVERIFY2(run.status >= 0 && run.status <= 2, said.constData());
    if (status == anyFailure && verb == QLatin1String("get") && run.status == 0)
        QCOMPARE(QFileInfo(places.local + QStringLiteral("/there.txt")).size(), 5);
    else if (status == anyFailure)
        QVERIFY2(run.status > 0, said.constData());
    else if (status != anyEnd)
        QVERIFY2(run.status == status, (QByteArray::number(run.status) + ": " + said).constData());
    if (run.status != 0)
        QVERIFY2(!run.errors.trimmed().isEmpty() || run.output.contains(QStringLiteral("ません")),
                 "not a word");
    if (!QFile::exists(places.local + QStringLiteral("/here.txt")))
        QVERIFY(makeTree(places.local, {{"here.txt", "here"}}));
    if (!m_server->exists("/pub/there.txt"))
        m_server->put("/pub/there.txt", "there");
    const RunResult after = m_program->run(argument(verb), limitMs);
    QVERIFY2(after.status == 0, (after.errors + after.output).toUtf8().constData());
}

void tst_ProgramTrouble::fullUserData()
{
    if (smallDisk().isEmpty())
        QSKIP("the system gives no small disk");
    QFETCH(QString, verb);
    const QByteArray before = qgetenv("TMPDIR");
    qputenv("TMPDIR", QFile::encodeName(smallDisk()));
    const bool prepared = prepare();
    before.isEmpty() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", before);
    QVERIFY(prepared);
    const QString filler = smallDisk() + QStringLiteral("/filler");
    put(filler, {});
    QFile file(filler);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (file.write(QByteArray(4096, 'x')) == 4096) {
    }
    file.close();
    const RunResult run = m_program->run(argument(verb), limitMs);
    QVERIFY(QFile::remove(filler));
    const QByteArray said = (run.errors + run.output).toUtf8();
    QVERIFY2(run.status > 0 && run.status <= 2, said.constData());
    QVERIFY2(!said.trimmed().isEmpty(), "not a word");
    QVERIFY(QFile::exists(m_program->localFolder() + QStringLiteral("/here.txt")));
    QVERIFY(m_server->exists("/pub/there.txt"));
    const RunResult after = m_program->run(argument(verb), limitMs);
    QVERIFY2(after.status == 0, (after.errors + after.output).toUtf8().constData());
}

int main(int argc, char **argv)
{
    becomeOrdinaryUser();
    const QCoreApplication application(argc, argv);
    tst_ProgramTrouble test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_ProgramTrouble.moc"
