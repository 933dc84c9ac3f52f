#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include <QString>

#include "startup/LaunchRecord.h"

namespace venlo
{

class FrontEnd;
class PatternHost;
class ReviewHost;
class WindowDesk;
class WindowHost;
struct CommandLine;
struct Flags;
struct LaunchLayout;
struct MainRooms;

/// Everything there is one of: settings, database, session, cache, operations, and the runners
/// over them. Built once by main; hands out references and owns nothing that shows a window.
class Program
{
public:
    /// The main window as the program uses it.
    struct MainWindow {
        PatternHost *patternHost = nullptr;
        WindowHost *windowHost = nullptr;
        std::function<void()> stay = nullptr; ///< returns when the window was closed
    };
    /// Makes the main window, not shown; called once the database is open.
    using WindowMaker = std::function<MainWindow(const MainRooms &, const LaunchLayout &)>;
    /// How the program meets a person: without a review host or a window the plain ones do.
    /// prepared is called once the start-up is over and the command begins.
    struct Faces {
        FrontEnd &frontEnd;
        ReviewHost *reviewHost = nullptr;
        WindowDesk *desk = nullptr;       ///< the front end again, where makeWindow is given
        WindowMaker makeWindow = nullptr; ///< null where no window can be shown
        std::function<void()> prepared = nullptr;
        /// How long a window waits for the turn of another process before it says so.
        std::chrono::milliseconds patience = std::chrono::seconds(10);
    };

    Program(Faces faces, Flags &flags);
    ~Program();
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    /// The start-up routine: prepares the environment, loads the settings, opens the database and
    /// runs what the command line asks for. The exit status.
    [[nodiscard]] int Main(const CommandLine &commandLine);

    /// The window layout of a launching program; it counts where Flags::launchLayout is set.
    [[nodiscard]] const LaunchRecord &launchRecord() const { return m_launchRecord; }

private:
    struct Rooms;

    /// Ok, or the exit status of a run that cannot begin; the person knows why.
    [[nodiscard]] int prepare(const CommandLine &commandLine);
    void makeWindow();
    [[nodiscard]] int dispatch(const CommandLine &commandLine);
    [[nodiscard]] int runVerb(const CommandLine &commandLine);
    /// Shows the main window and stays until it is closed.
    [[nodiscard]] int showWindow();
    [[nodiscard]] int openWithoutTurn();
    [[nodiscard]] int missingArgument(const CommandLine &commandLine);
    /// The shut-down routine: settings saved, session and database closed.
    void EndProgram();

    Faces m_faces;
    Flags &m_flags;
    LaunchRecord m_launchRecord;
    std::unique_ptr<Rooms> m_rooms;
    MainWindow m_window;
};

} // namespace venlo
