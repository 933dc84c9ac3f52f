#include <clocale>
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

int runWithoutWindows(const CommandLine &commandLine, Flags &flags, int &argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    ConsolePrinter printer(stdout, stderr, consoleText);
    ConsoleFrontEnd frontEnd(printer, flags);
    Program program({frontEnd}, flags);
    return program.Main(commandLine);
}

} // namespace

int main(int argc, char **argv)
{
    keepMemoryOutOfCrashDumps();
    std::setlocale(LC_CTYPE, "");
    const CommandLine commandLine = CommandLine::parse(rawCommandLine(argc, argv));
    Flags flags;
    flags.batch = commandLine.batch;
    if (commandLine.batch)
        joinConsole();
    noteInterrupts();
    if (!hasDisplay())
        return runWithoutWindows(commandLine, flags, argc, argv);
    WindowApplication application(argc, argv);
    return runWithWindows(commandLine, flags, application);
}
