#include <cstdio>

#include <QCoreApplication>

#include "platform/Console.h"
#include "platform/CrashDump.h"
#include "platform/Interrupt.h"
#include "platform/Process.h"
#include "shared/ConsolePrinter.h"
#include "shared/Flags.h"
#include "startup/CommandLine.h"
#include "startup/ConsoleFrontEnd.h"
#include "startup/Program.h"
#include "startup/WindowRun.h"

namespace
{

using namespace venlo;

int runWithoutWindows(const CommandLine &commandLine, Flags &flags, const ConsoleStreams &streams,
                      int &argc, char **argv)
{
    // Without windows nothing needs GLib's event loop, which wakes itself up several times a file.
    const char *const setting = "QT_NO_GLIB";
    const bool asSet = qEnvironmentVariableIsSet(setting);
    if (!asSet)
        qputenv(setting, "1");
    const QCoreApplication application(argc, argv);
    if (!asSet)
        qunsetenv(setting); // programs that are started from here
    ConsolePrinter printer(streams.results, streams.messages, consoleText);
    ConsoleFrontEnd frontEnd(printer, flags);
    Program program({frontEnd}, flags);
    return program.Main(commandLine);
}

} // namespace

int main(int argc, char **argv)
{
    keepMemoryOutOfCrashDumps();
    useSystemEncoding();
    const CommandLine commandLine = CommandLine::parse(rawCommandLine(argc, argv));
    Flags flags;
    flags.batch = commandLine.batch;
    const ConsoleStreams streams = commandLine.batch ? joinConsole() : ConsoleStreams();
    noteInterrupts();
    if (!hasDisplay())
        return runWithoutWindows(commandLine, flags, streams, argc, argv);
    WindowApplication application(argc, argv);
    return runWithWindows(commandLine, flags, application, streams);
}
