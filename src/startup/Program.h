#pragma once

#include <functional>
#include <memory>

#include <QString>

#include "startup/LaunchRecord.h"

namespace venlo
{

class FrontEnd;
class PatternHost;
class ReviewHost;
class WindowHost;
struct CommandLine;
struct Flags;

/// Everything there is one of: settings, database, session, cache, operations, and the runners
/// over them. Built once by main; hands out references and owns nothing that shows a window.
class Program
{
public:
    /// How the program meets a person: the hosts are null where there is no window, which leaves
    /// the plain ones. prepared is called once the start-up is over and the command begins.
    struct Faces {
        FrontEnd &frontEnd;
        ReviewHost *reviewHost = nullptr;
        PatternHost *patternHost = nullptr;
        WindowHost *windowHost = nullptr;
        std::function<void()> prepared = nullptr;
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
    [[nodiscard]] int dispatch(const CommandLine &commandLine);
    [[nodiscard]] int missingArgument(const CommandLine &commandLine);
    /// The shut-down routine: settings saved, session and database closed.
    void EndProgram();

    Faces m_faces;
    Flags &m_flags;
    LaunchRecord m_launchRecord;
    std::unique_ptr<Rooms> m_rooms;
};

} // namespace venlo
