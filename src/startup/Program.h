#pragma once

#include <memory>

#include <QString>

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
    /// the plain ones.
    struct Faces {
        FrontEnd &frontEnd;
        ReviewHost *reviewHost = nullptr;
        PatternHost *patternHost = nullptr;
        WindowHost *windowHost = nullptr;
    };

    Program(Faces faces, Flags &flags);
    ~Program();
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    /// The start-up routine: prepares the environment, loads the settings, opens the database and
    /// runs what the command line asks for. The exit status.
    [[nodiscard]] int Main(const CommandLine &commandLine);

private:
    struct Rooms;

    [[nodiscard]] int dispatch(const CommandLine &commandLine);
    [[nodiscard]] int missingArgument(const CommandLine &commandLine);
    /// The shut-down routine: settings saved, session and database closed.
    void EndProgram();

    Faces m_faces;
    Flags &m_flags;
    std::unique_ptr<Rooms> m_rooms;
};

} // namespace venlo
