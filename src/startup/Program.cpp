#include "startup/Program.h"

#include <exception>
#include <optional>
#include <utility>

#include <QFileInfo>
#include <QRect>

#include "db/Database.h"
#include "db/Store.h"
#include "ftp/DirectoryCache.h"
#include "ftp/ErrorLog.h"
#include "ftp/RemoteOperations.h"
#include "ftp/Session.h"
#include "mainwin/MainRooms.h"
#include "mainwin/MainSettings.h"
#include "platform/Process.h"
#include "shared/Flags.h"
#include "shared/FrontEnd.h"
#include "shared/OperationGate.h"
#include "startup/CommandLine.h"
#include "startup/PinnedCertificates.h"
#include "startup/PrivateFiles.h"
#include "startup/ProgramName.h"
#include "startup/RunLock.h"
#include "startup/settings/SettingsFile.h"
#include "startup/settings/ShellHelpers.h"
#include "startup/settings/UserDataFolder.h"
#include "sync/BatchRunner.h"
#include "sync/Comparison.h"
#include "sync/ConsoleReviewHost.h"
#include "sync/PairWorker.h"
#include "sync/PlainPatternHost.h"
#include "sync/SyncRunner.h"
#include "sync/WindowHost.h"

namespace venlo
{

namespace
{
UserDataFolder userDataFolder(const QString &baseName, FrontEnd &frontEnd)
{
    UserDataFolder folder(ProgramPlaces::ofThisProgram(baseName), frontEnd);
    folder.W_UserData();
    return folder;
}

/// Where the help pages are; empty for those installed with the program.
QString helpAddress()
{
    return QStringLiteral(VENLO_HELP_ADDRESS);
}

/// The verbs that use the work tables and caches; the others only show a window.
bool works(const QString &verb)
{
    return verb == QLatin1String("syncup") || verb == QLatin1String("syncdown") ||
           verb == QLatin1String("put") || verb == QLatin1String("get");
}

/// The verbs after which the program stays in its window.
bool opens(const QString &verb)
{
    return verb == QLatin1String("open") || verb == QLatin1String("openp");
}

/// A part of a verb runs nothing, so nothing is made for it.
bool usesWindow(const QString &verb)
{
    return works(verb) || verb.isEmpty() || opens(verb);
}
} // namespace

/// In order of construction; each only uses what stands above it.
struct Program::Rooms {
    Rooms(const Faces &faces, Flags &flags)
        : place(userDataFolder(programBaseName(executableBaseName()), faces.frontEnd)),
          folder(place.userDataFolder()), turn(folder, faces.frontEnd), settings(faces.frontEnd),
          pins(settings), database(faces.frontEnd, folder), errorLog(folder), eventLog(folder),
          session(faces.frontEnd, database, errorLog, eventLog),
          cache(session, database, faces.frontEnd, flags),
          operations(session, cache, faces.frontEnd, flags),
          comparison(session, database, cache, faces.frontEnd, flags),
          worker(session, operations, faces.frontEnd), consoleReview(faces.frontEnd),
          plainPatterns(database, session, faces.frontEnd),
          syncRunner(comparison, worker, faces.reviewHost ? *faces.reviewHost : consoleReview,
                     database, faces.frontEnd, flags),
          gate(faces.frontEnd),
          shell(ProgramPlaces::ofThisProgram(programBaseName(executableBaseName())), folder,
                helpAddress(), faces.frontEnd)
    {
        session.setTrust(pins, flags);
    }

    UserDataFolder place;
    QString folder;
    RunLock turn;
    yIni settings;
    PinnedCertificates pins;
    Database database;
    ErrorLog errorLog;
    EventLog eventLog;
    Session session;
    DirectoryCache cache;
    RemoteOperations operations;
    Comparison comparison;
    PairWorker worker;
    ConsoleReviewHost consoleReview;
    PlainPatternHost plainPatterns;
    SyncRunner syncRunner;
    OperationGate gate;
    ShellHelpers shell;
    std::optional<BatchRunner> batchRunner;
};

Program::Program(Faces faces, Flags &flags) : m_faces(std::move(faces)), m_flags(flags) {}

Program::~Program() = default;

int Program::Main(const CommandLine &commandLine)
{
    const FlagScope unattended(m_flags.unattendedRun, m_flags.batch && works(commandLine.verb));
    int status = prepare(commandLine);
    if (m_faces.prepared)
        m_faces.prepared();
    if (status != BatchRunner::Ok)
        return status;
    try {
        status = dispatch(commandLine);
    } catch (const std::exception &error) {
        // The registries or the work tables failed: an unattended run still ends in order.
        m_faces.frontEnd.warn(QString::fromUtf8(error.what()));
        status = BatchRunner::NotCarriedOut;
    }
    EndProgram();
    return status;
}

int Program::prepare(const CommandLine &commandLine)
{
    m_rooms = std::make_unique<Rooms>(m_faces, m_flags);
    for (const QString &line : closeToOthers(m_rooms->folder, m_rooms->place.isOwnFolder()))
        m_rooms->eventLog.note(line);
    bool loaded = false;
    m_rooms->settings.GetTxt(m_rooms->folder + QStringLiteral("User.xml"), loaded);
    // Before the database, which a long run of another process may hold.
    if (works(commandLine.verb) && QFileInfo(m_rooms->folder).isDir() && !m_rooms->turn.acquire())
        return BatchRunner::NotCarriedOut;
    bool open = false;
    m_rooms->database.OpenDb(open);
    if (!open)
        return BatchRunner::Unusable;
    if (!commandLine.launchRecordPath.isEmpty()) {
        m_launchRecord = LaunchRecord::read(commandLine.launchRecordPath);
        m_flags.launchLayout = m_launchRecord.usable();
    }
    if (usesWindow(commandLine.verb))
        makeWindow();
    Rooms &rooms = *m_rooms;
    rooms.batchRunner.emplace(BatchRunner::Rooms{
        m_faces.frontEnd, m_flags, rooms.database, rooms.session, rooms.cache, rooms.operations,
        rooms.syncRunner, m_window.patternHost ? *m_window.patternHost : rooms.plainPatterns,
        m_window.windowHost});
    return BatchRunner::Ok;
}

/// What the windows do with the server takes a run's turn each time: an unattended run of another
/// process must not meet a cache that changes under it, nor the other way round.
void Program::makeWindow()
{
    if (!m_faces.makeWindow)
        return;
    Rooms &rooms = *m_rooms;
    rooms.gate.setLock({[&rooms, this, held = rooms.turn.isHeld()] {
                            if (held || rooms.turn.acquire(m_faces.patience))
                                return true;
                            if (!m_faces.frontEnd.cancelled())
                                m_faces.frontEnd.message(QStringLiteral(
                                    "他の実行が終わるのを待って もう一度実行して下さい"));
                            return false;
                        },
                        [&rooms, held = rooms.turn.isHeld()] {
                            // What comes next may be another process, which sees the disk.
                            rooms.database.store().endGroup();
                            if (!held)
                                rooms.turn.release();
                        }});
    LaunchLayout launch;
    launch.window =
        QRect(m_launchRecord.left, m_launchRecord.top, m_launchRecord.width, m_launchRecord.height);
    launch.Root = m_launchRecord.root;
    launch.ActPh = m_launchRecord.actPh;
    m_window = m_faces.makeWindow({*m_faces.desk, m_flags, rooms.gate, rooms.settings,
                                   rooms.database, rooms.session, rooms.cache, rooms.operations,
                                   rooms.syncRunner, rooms.shell, rooms.errorLog.path()},
                                  launch);
}

int Program::showWindow()
{
    if (m_window.windowHost == nullptr) {
        m_faces.frontEnd.warn(QStringLiteral("画面を表示できません"));
        return BatchRunner::Unusable;
    }
    m_window.windowHost->showMainWindow({});
    m_window.stay();
    return BatchRunner::Ok;
}

int Program::missingArgument(const CommandLine &commandLine)
{
    m_faces.frontEnd.warn(commandLine.verb + QStringLiteral(": 引数が足りません"));
    return BatchRunner::Unusable;
}

int Program::dispatch(const CommandLine &commandLine)
{
    const QString &verb = commandLine.verb;
    if (verb.isEmpty())
        return showWindow();
    if (opens(verb) && commandLine.arguments.value(1).isEmpty())
        return missingArgument(commandLine);
    // So that closing a window that shows meanwhile cancels first.
    auto turn = std::make_optional(m_rooms->gate.begin());
    if (!*turn)
        return verb == QLatin1String("openp") ? openWithoutTurn() : BatchRunner::NotCarriedOut;
    const int status = runVerb(commandLine);
    turn.reset();
    if (m_rooms->batchRunner->opened())
        m_window.stay();
    return status;
}

/// Another process works on the same data: the window may be used, it only connects to nothing by
/// itself. An interrupt while that was waited for means the program.
int Program::openWithoutTurn()
{
    if (m_faces.frontEnd.cancelled())
        return BatchRunner::NotCarriedOut;
    const int shown = showWindow();
    return shown == BatchRunner::Ok ? BatchRunner::NotCarriedOut : shown;
}

int Program::runVerb(const CommandLine &commandLine)
{
    const QString &verb = commandLine.verb;
    const auto argument = [&](int number) { return commandLine.arguments.value(number); };
    const auto given = commandLine.arguments.size() - 1;
    BatchRunner &runner = *m_rooms->batchRunner;

    if (verb == QLatin1String("syncup") || verb == QLatin1String("syncdown"))
        return argument(1).isEmpty()
                   ? missingArgument(commandLine)
                   : runner.RunSyncPattern(argument(1), verb == QLatin1String("syncup"));
    if (verb == QLatin1String("put") || verb == QLatin1String("get"))
        return given < 4 ? missingArgument(commandLine)
                         : runner.RunTransfer(argument(1), argument(2), argument(3), argument(4),
                                              verb == QLatin1String("put"));
    if (verb == QLatin1String("open"))
        return runner.OpenSite(argument(1));
    if (verb == QLatin1String("openp"))
        return runner.OpenPattern(argument(1));
    // A part of a verb ("sync", "up") runs nothing and says nothing.
    return BatchRunner::Unusable;
}

void Program::EndProgram()
{
    bool saved = false;
    if (m_rooms->settings.changed())
        m_rooms->settings.SetTxt(saved);
    m_rooms->session.CloseInternet();
    m_rooms->database.CloseDb();
}

} // namespace venlo
