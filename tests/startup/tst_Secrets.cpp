// The built program with a telltale password, and everything it printed and left behind.
#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTest>

#include "e2e/ProgramRun.h"
#include "platform/Files.h"
#include "support/DaemonTests.h"
#include "support/ScriptedServer.h"
#include "support/Trees.h"

using namespace venlo;
using namespace venlo::test;

namespace
{

QString telltale()
{
    return QStringLiteral("Tell7ale&Wort");
}

QByteArray up()
{
    return "/b syncup|pair";
}

/// The password in the forms in which it could stand somewhere.
QList<QByteArray> forms()
{
    const QString text = telltale();
    const QByteArray wide(reinterpret_cast<const char *>(text.utf16()), 2 * text.size());
    return {text.toUtf8(), wide, text.toUtf8().toBase64().chopped(2), "Tell7ale%26Wort",
            "Tell7ale&amp;Wort"};
}

bool holdsIt(const QByteArray &bytes)
{
    const QList<QByteArray> all = forms();
    return std::any_of(all.begin(), all.end(),
                       [&bytes](const QByteArray &form) { return bytes.contains(form); });
}

/// The log without the one kind of line that holds the password by design.
QByteArray withoutReconnectLines(const QByteArray &log, int *count)
{
    QByteArray rest;
    for (const QByteArray &line : log.split('\n')) {
        const bool reconnect =
            line.contains(" : ftReConect Err sUsr=user sPwd=" + telltale().toUtf8() + "\r");
        *count += reconnect ? 1 : 0;
        if (!reconnect)
            rest += line + '\n';
    }
    return rest;
}

/// A program with a site and a pattern, and what it printed so far.
struct World {
    World()
    {
        // Temporary files and cores are looked at too.
        const QString temporary = program.home() + QStringLiteral("/tmp");
        QDir().mkpath(temporary);
        program.environment.insert(QStringLiteral("TMPDIR"), temporary);
    }

    [[nodiscard]] bool begin(const QString &address)
    {
        if (!program.prepare())
            return false;
        program.registerSite(QStringLiteral("site"), address, QStringLiteral("user"), telltale());
        program.registerPattern(QStringLiteral("pair"), program.localFolder(),
                                QStringLiteral("site"), QStringLiteral("/site"));
        return makeTree(program.localFolder(), {{"a.txt", "content of a"}, {"b/c.txt", "of c"}});
    }
    [[nodiscard]] bool begin(ScriptedServer &server)
    {
        server.options().password = telltale().toUtf8();
        server.makeFolder("/site");
        return server.start() && begin(server.server());
    }
    void useProxy(const QString &proxy)
    {
        ScriptedPerson person;
        Database database(person, program.userData() + QLatin1Char('/'));
        bool ok = false;
        database.OpenDb(ok);
        QVERIFY(ok);
        QCOMPARE(database.run(QStringLiteral("Update msSite Set sPxy='?'"), {proxy}), 1);
    }
    int run(const QByteArray &argument)
    {
        const RunResult result = program.run(QString::fromUtf8(argument));
        printed += (result.output + result.errors).toUtf8();
        return result.status;
    }

    /// Where the password stands though it must not; the database is where it belongs.
    [[nodiscard]] QStringList found()
    {
        QStringList places;
        if (holdsIt(printed))
            places.append(QStringLiteral("printed: ") + QString::fromUtf8(printed));
        QDirIterator files(program.home(), QDir::Files | QDir::Hidden | QDir::System,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            const QString name = QFileInfo(file).fileName();
            if (name.startsWith(QLatin1String("dbFtp.mdb")) || !file.open(QIODevice::ReadOnly))
                continue;
            QByteArray bytes = file.readAll();
            if (name == QLatin1String("FtpErr.Log"))
                bytes = withoutReconnectLines(bytes, &reconnectLines);
            if (holdsIt(bytes))
                places.append(name);
        }
        return places;
    }
    /// The second log.
    [[nodiscard]] QString events() const
    {
        QFile log(program.userData() + QStringLiteral("/FtpEvent.Log"));
        return log.open(QIODevice::ReadOnly) ? QString::fromUtf8(log.readAll()) : QString();
    }

    ProgramRun program;
    QByteArray printed;
    int reconnectLines = 0;
};

/// Files and folders of the user data folder that others have any right on.
QStringList open(const QString &userData)
{
    QStringList names;
    if (openToOthers(userData))
        names.append(userData);
    QDirIterator entries(userData, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString path = entries.next();
        if (openToOthers(path))
            names.append(path);
    }
    return names;
}

/// Everything is open that nobody closes.
class WideOpen
{
public:
    WideOpen() : m_before(umask(0)) {}
    ~WideOpen() { umask(m_before); }
    Q_DISABLE_COPY_MOVE(WideOpen)

private:
    mode_t m_before;
};

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class tst_Secrets : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everydayRuns_data();
    void everydayRuns();
    void serverThatEchoes_data();
    void serverThatEchoes();
    void shortPassword();
    void reconnectLine();
    void addresses_data();
    void addresses();
    void refusedCertificate();
    void processAndAbort();
    void privateWhateverTheUmask();
    void foundOpen();
};

void tst_Secrets::everydayRuns_data()
{
    QTest::addColumn<QString>("platform");
    QTest::newRow("no display") << QString();
    QTest::newRow("windows") << QStringLiteral("offscreen");
}

void tst_Secrets::everydayRuns()
{
    QFETCH(QString, platform);
    ScriptedServer server;
    World world;
    if (!platform.isEmpty())
        world.program.environment.insert(QStringLiteral("QT_QPA_PLATFORM"), platform);
    QVERIFY(world.begin(server));
    QCOMPARE(world.run(up()), 0);
    QVERIFY(server.exists("/site/b/c.txt"));
    QCOMPARE(world.run("/b syncdown|pair"), 0);
    const QByteArray local = world.program.localFolder().toUtf8();
    QCOMPARE(world.run("/b put|" + local + "|site|/in|a.txt"), 0);
    QCOMPARE(world.run("/b get|" + local + "/got|site|/in|a.txt"), 0);
    if (platform.isEmpty()) // in a window somebody is told, who would have to answer
        QCOMPARE(world.run("/b get|" + local + "/got|site|/in|missing.txt"), 1);
    QVERIFY(world.events().contains(QStringLiteral("> PASS ****")));
    QCOMPARE(world.found(), QStringList());
    QCOMPARE(world.reconnectLines, 0);
}

void tst_Secrets::serverThatEchoes_data()
{
    QTest::addColumn<QByteArray>("verb");
    QTest::addColumn<int>("code");
    for (const auto &[verb, code] : std::initializer_list<std::pair<const char *, int>>{
             {"CONNECT", 220}, {"CONNECT", 421}, {"CONNECT", 120}, {"USER", 331}, {"PASS", 230},
             {"PASS", 332},    {"PASS", 530},    {"FEAT", 211},    {"TYPE", 350}, {"TYPE", 500},
             {"PWD", 550},     {"CWD", 350},     {"MLSD", 450},    {"MLSD", 550}, {"EPSV", 229},
             {"EPSV", 500},    {"STOR", 350},    {"STOR", 550},    {"STOR", 421}, {"MKD", 550},
             {"MFMT", 550},    {"SIZE", 213},    {"DELE", 550}})
        QTest::addRow("%s %d", verb, code) << QByteArray(verb) << code;
}

void tst_Secrets::serverThatEchoes()
{
    QFETCH(QByteArray, verb);
    QFETCH(int, code);
    ScriptedServer server;
    const QByteArray password = telltale().toUtf8();
    auto rule = server.on(verb);
    rule.reply(code, "you said " + password + "\n" + password + "\nand x" + password + "x");
    if (code == 120) // and nothing more
        rule.thenClose();
    World world;
    QVERIFY(world.begin(server));
    server.put("/site/d.txt", "not here");
    (void)world.run(up()); // 0, 1 or 2, as the server lets it
    QVERIFY(server.count(verb) > 0 || verb == "CONNECT");
    (void)world.run("/b get|" + world.program.localFolder().toUtf8() + "|site|/site|d.txt");
    QVERIFY(!world.events().isEmpty());
    QCOMPARE(world.found(), QStringList());
}

/// One that would be a part of many words is taken out where it stands alone.
void tst_Secrets::shortPassword()
{
    ScriptedServer server;
    server.options().password = "ab";
    server.on("PASS").reply(530, "no ab, about ab. \"ab\"");
    QVERIFY(server.start());
    World world;
    QVERIFY(world.program.prepare());
    world.program.registerSite(QStringLiteral("site"), server.server(), QStringLiteral("user"),
                               QStringLiteral("ab"));
    world.program.registerPattern(QStringLiteral("pair"), world.program.localFolder(),
                                  QStringLiteral("site"), QStringLiteral("/site"));
    QCOMPARE(world.run(up()), 1);
    const QString events = world.events();
    QVERIFY2(events.contains(QStringLiteral("530 no ****, about ****. \"****\"")),
             qPrintable(events));
}

/// The one line that holds the password is in the error log, five times.
void tst_Secrets::reconnectLine()
{
    ScriptedServer server;
    server.on("PASS").from(2).reply(530, "no more " + telltale().toUtf8());
    server.on("STOR").dropBeforeReply();
    World world;
    QVERIFY(world.begin(server));
    QCOMPARE(world.run(up()), 1);
    QCOMPARE(world.found(), QStringList());
    QVERIFY2(world.reconnectLines >= 5, world.printed.constData());
    QCOMPARE(open(world.program.userData()).filter(QStringLiteral("FtpErr")), QStringList());
}

void tst_Secrets::addresses_data()
{
    QTest::addColumn<QString>("server");
    QTest::addColumn<QString>("proxy");
    const QString login = QStringLiteral("user:") + telltale();
    QTest::newRow("server with a login") << login + QStringLiteral("@127.0.0.1") << QString();
    QTest::newRow("URL for a server")
        << QStringLiteral("ftp://") + login + QStringLiteral("@127.0.0.1/") << QString();
    QTest::newRow("prefix and login")
        << QStringLiteral("ftps:") + login + QStringLiteral("@host") << QString();
    QTest::newRow("proxy where nobody listens")
        << QStringLiteral("127.0.0.1:1")
        << QStringLiteral("socks5://") + login + QStringLiteral("@127.0.0.1:1");
    QTest::newRow("proxy that is none")
        << QStringLiteral("127.0.0.1:1")
        << QStringLiteral("http://") + login + QStringLiteral("@127.0.0.1:1");
}

void tst_Secrets::addresses()
{
    QFETCH(QString, server);
    QFETCH(QString, proxy);
    World world;
    QVERIFY(world.begin(server));
    world.useProxy(proxy);
    QCOMPARE(world.run(up()), 1);
    QCOMPARE(world.run("/b put|" + world.program.localFolder().toUtf8() + "|site|/in|a.txt"), 1);
    QVERIFY(!world.printed.isEmpty());
    QCOMPARE(world.found(), QStringList());
}

/// Without "/b" the certificate is a question, which nobody is there to answer with yes.
void tst_Secrets::refusedCertificate()
{
    if (skippedWithout(FtpDaemon::Kind::Proftpd))
        return;
    QString why;
    Certificates certificates;
    QVERIFY2(certificates.make(&why), qPrintable(why));
    FtpDaemon daemon(FtpDaemon::Kind::Proftpd,
                     tlsOptions(certificates, DaemonTls::V13, Certificates::Kind::SelfSigned));
    QVERIFY(daemon.start());
    World world;
    QVERIFY(world.begin(daemon.server()));
    QCOMPARE(world.run("syncup|pair"), 1);
    QVERIFY2(world.printed.contains("SHA-256"), world.printed.constData());
    QVERIFY(world.events().contains(QStringLiteral("certificate refused")));
    QVERIFY(!world.events().contains(QStringLiteral("> PASS")));
    QCOMPARE(world.found(), QStringList());
}

void tst_Secrets::processAndAbort()
{
    ScriptedServer server;
    server.on("STOR").stallAfterBytes(5);
    World world;
    QVERIFY(world.begin(server));
    rlimit before = {};
    QCOMPARE(getrlimit(RLIMIT_CORE, &before), 0);
    const rlimit most = {before.rlim_max, before.rlim_max};
    QCOMPARE(setrlimit(RLIMIT_CORE, &most), 0);
    QProcess process;
    process.setProcessEnvironment(world.program.environment);
    process.setWorkingDirectory(world.program.home());
    process.start(QStringLiteral(VENLO_PROGRAM), {QString::fromUtf8(up())});
    QVERIFY(process.waitForStarted());
    setrlimit(RLIMIT_CORE, &before);
    QTRY_VERIFY_WITH_TIMEOUT(server.count("STOR") > 0, 20'000);
    const QString proc = QStringLiteral("/proc/%1/").arg(process.processId());
    const QByteArray commandLine = read(proc + QStringLiteral("cmdline"));
    QCOMPARE(commandLine, QByteArray(VENLO_PROGRAM) + '\0' + up() + '\0');
    QVERIFY(!holdsIt(read(proc + QStringLiteral("comm"))));
    const QByteArray environment = read(proc + QStringLiteral("environ"));
    QVERIFY(environment.contains("TMPDIR="));
    QVERIFY(!holdsIt(environment));
    ::kill(static_cast<pid_t>(process.processId()), SIGABRT);
    QVERIFY(process.waitForFinished(20'000));
    QCOMPARE(process.exitStatus(), QProcess::CrashExit);
    world.printed += process.readAllStandardOutput() + process.readAllStandardError();
    QCOMPARE(world.found(), QStringList());
    QCOMPARE(QDir(world.program.home()).entryList({QStringLiteral("*core*")}, QDir::Files),
             QStringList());
    QCOMPARE(open(world.program.userData()).filter(QStringLiteral("dbFtp")), QStringList());
}

void tst_Secrets::privateWhateverTheUmask()
{
    const WideOpen scope;
    ScriptedServer server;
    server.makeFolder("/site");
    server.options().password = telltale().toUtf8();
    QVERIFY(server.start());
    World world;
    QCOMPARE(world.run("/b syncup|none"), 2); // the first start makes the folder
    QCOMPARE(open(world.program.userData()), QStringList());
    world.program.registerSite(QStringLiteral("site"), server.server(), QStringLiteral("user"),
                               telltale(), true, true);
    world.program.registerPattern(QStringLiteral("pair"), world.program.localFolder(),
                                  QStringLiteral("site"), QStringLiteral("/site"));
    QVERIFY(makeTree(world.program.localFolder(), {{"a.txt", "content of a"}}));
    QStringList during;
    QStringList names;
    const auto look = [&] {
        during += open(world.program.userData());
        names += QDir(world.program.userData()).entryList(QDir::Files);
    };
    server.on("STOR").call(look);
    server.on("MLSD").call(look);
    server.on("RETR").call(look);
    QCOMPARE(world.run(up()), 0);
    server.put("/site/new.txt", "new");
    QCOMPARE(world.run("/b syncdown|pair"), 0);
    QVERIFY(names.contains(QStringLiteral("Run.lock")));
    QVERIFY(!names.filter(QStringLiteral(".pending")).isEmpty());
    QCOMPARE(during, QStringList());
    QCOMPARE(open(world.program.userData()), QStringList());
    // What is not the program's own is as the person has it.
    struct stat made = {};
    QCOMPARE(
        stat(
            QFile::encodeName(world.program.localFolder() + QStringLiteral("/new.txt")).constData(),
            &made),
        0);
    QVERIFY((made.st_mode & S_IROTH) != 0);
}

void tst_Secrets::foundOpen()
{
    ScriptedServer server;
    World world;
    QVERIFY(world.begin(server));
    const QString userData = world.program.userData();
    const QString log = userData + QStringLiteral("/FtpErr.Log");
    QVERIFY(QFile::copy(world.program.localFolder() + QStringLiteral("/a.txt"), log));
    for (const QString &path : {userData + QStringLiteral("/dbFtp.mdb"), log})
        QCOMPARE(chmod(QFile::encodeName(path).constData(), 0644), 0);
    QCOMPARE(chmod(QFile::encodeName(userData).constData(), 0755), 0);
    QCOMPARE(world.run("/b syncup|none"), 2);
    QCOMPARE(open(userData), QStringList());
    const QString said = QStringLiteral(" was open to other users: closed to them\n");
    for (const QString &name :
         {userData, QStringLiteral("dbFtp.mdb"), QStringLiteral("FtpErr.Log")})
        QVERIFY2(world.events().contains(QLatin1Char(' ') + name + said),
                 qPrintable(world.events()));
    QCOMPARE(world.events().count(said), 3);
    QCOMPARE(world.run(up()), 0);
    QCOMPARE(world.events().count(said), 3);
}

QTEST_GUILESS_MAIN(tst_Secrets)
#include "tst_Secrets.moc"
