// measureComparison [FOLDERS [FILES_IN_EACH]]
//
// Compares a tree (1,000 folders of 20 files unless said) with the same tree on each real daemon
// and prints what the time goes to, the memory, and the control commands a small file costs as a
// scripted server sees them. Prints figures and asserts none of them: machines are noisy, so only
// the shares of one run mean something.
#include "db/DatabaseFile.h"
#include "ftp/DirectoryCache.h"
#include "ftp/ErrorLog.h"
#include "ftp/RemoteOperations.h"
#include "ftp/Session.h"
#include "shared/Flags.h"
#include "shared/NameList.h"
#include "support/FtpDaemon.h"
#include "support/ScriptedPerson.h"
#include "support/ScriptedServer.h"
#include "support/Trees.h"
#include "sync/Comparison.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>

using namespace venlo;
using namespace venlo::test;

namespace
{

/// The engine over a throwaway user data folder.
struct Engine {
    Engine()
        : database(person, folder.path() + QLatin1Char('/')),
          errorLog(folder.path() + QLatin1Char('/')), eventLog(folder.path() + QLatin1Char('/')),
          session(person, database, errorLog, eventLog), cache(session, database, person, flags),
          operations(session, cache, person, flags),
          comparison(session, database, cache, person, flags)
    {
        createInitialDatabase(folder.filePath(QStringLiteral("dbFtp.mdb")));
        bool ok = false;
        database.OpenDb(ok);
        flags.batch = true;
        flags.unattendedTransfer = true;
        person.allowMessages();
    }
    [[nodiscard]] bool connectTo(const QString &server, const QString &user,
                                 const QString &password)
    {
        bool ok = true;
        session.OpenInternet(QString(), ok, false);
        session.Connect(QStringLiteral("bench"), server, user, password, true, ok);
        return ok;
    }

    QTemporaryDir folder;
    ScriptedPerson person;
    Flags flags;
    Database database;
    ErrorLog errorLog;
    EventLog eventLog;
    Session session;
    DirectoryCache cache;
    RemoteOperations operations;
    Comparison comparison;
};

/// Peak resident memory of this process in MiB.
double peakMemory()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0)
            return std::stod(line.substr(6)) / 1024.0;
    }
    return 0.0;
}

double seconds(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e9;
}

/// Lists every folder without storing anything: the share of the listing itself.
int listOnly(FtpClient &client, const QByteArray &dir)
{
    if (!client.changeDirectory(dir))
        return 0;
    const auto listing = client.list();
    if (!listing)
        return 0;
    int entries = 0;
    for (const ListedEntry &entry : listing.value().entries) {
        ++entries;
        if (entry.kind == ListedEntry::Kind::Folder)
            entries += listOnly(client, dir + '/' + entry.rawName);
    }
    return entries;
}

void measureDaemon(FtpDaemon::Kind kind, const QString &local, const std::vector<TreeRow> &rows)
{
    QString why;
    FtpDaemon daemon(kind);
    if (!daemon.start(&why) || !makeTree(daemon.root() + QStringLiteral("/site"), rows)) {
        std::printf("%-10s not measured: %s\n", FtpDaemon::name(kind), qPrintable(why));
        return;
    }
    daemon.own();
    Engine engine;
    if (!engine.connectTo(daemon.server(), daemon.user(), daemon.password())) {
        std::printf("%-10s not measured: no connection\n", FtpDaemon::name(kind));
        return;
    }
    QElapsedTimer timer;
    timer.start();
    const int entries = listOnly(engine.session.client(), "/site");
    const double listing = seconds(timer);
    timer.restart();
    engine.cache.caRefresh(QStringLiteral("/site"));
    const double refresh = seconds(timer);
    timer.restart();
    bool ok = false;
    (void)engine.comparison.ftSync(local, QStringLiteral("/site"), false, ok);
    const double total = seconds(timer);
    std::printf("%-10s %6d entries  %6.2f s: listing %3.0f %%, storing %3.0f %%, "
                "walking and marking %3.0f %%   peak %.0f MiB%s\n",
                FtpDaemon::name(kind), entries, total, 100.0 * listing / total,
                100.0 * (refresh - listing) / total, 100.0 * (total - refresh) / total,
                peakMemory(), ok ? "" : "   FAILED");
}

/// Control commands a small file costs, up and down, with and without setting times.
void countCommands(bool setsTimes)
{
    constexpr int files = 100;
    ScriptedServer server;
    server.options().mfmt = setsTimes;
    server.options().mdtm = setsTimes;
    server.makeFolder("/site");
    Engine engine;
    QTemporaryDir local;
    if (!server.start() || !makeTree(local.path(), manyFiles(1, files, 100)) ||
        !engine.connectTo(server.server(), server.user(), server.password()))
        return;
    const QString folder = local.filePath(QStringLiteral("d0000"));
    QStringList lines;
    QStringList names;
    for (const QFileInfo &file : QDir(folder).entryInfoList(QDir::Files)) {
        lines.append(UploadLine{file.fileName(), QStringLiteral("99/01/01 00:00:00"), {}}.text());
        names.append(file.fileName());
    }
    const auto commands = [&] { return static_cast<int>(server.commands().size()); };
    bool ok = true;
    engine.operations.ftPutFile(QStringLiteral("/site"), lines.first(), folder, ok);
    int before = commands();
    engine.operations.ftPutFile(QStringLiteral("/site"), joinNames(lines), folder, ok);
    const double up = static_cast<double>(commands() - before) / files;
    engine.cache.caRefresh(QStringLiteral("/site"));
    engine.operations.ftGetFile(QStringLiteral("/site"), names.first(),
                                local.filePath(QStringLiteral("first")), ok);
    before = commands();
    engine.operations.ftGetFile(QStringLiteral("/site"), joinNames(names),
                                local.filePath(QStringLiteral("back")), ok);
    const double down = static_cast<double>(commands() - before) / files;
    std::printf("control commands per small file, %s: up %.2f, down %.2f%s\n",
                setsTimes ? "times set" : "times not set", up, down, ok ? "" : "   FAILED");
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const int folders = argc > 1 ? std::atoi(argv[1]) : 1000;
    const int filesInEach = argc > 2 ? std::atoi(argv[2]) : 20;
    countCommands(true);
    countCommands(false);
    const auto rows = manyFiles(folders, filesInEach, 500,
                                QDateTime(QDate::currentDate().addDays(-20), QTime(12, 0)));
    QTemporaryDir local;
    if (!makeTree(local.path(), rows))
        return 1;
    for (const FtpDaemon::Kind kind : FtpDaemon::all())
        measureDaemon(kind, local.path(), rows);
    return 0;
}
