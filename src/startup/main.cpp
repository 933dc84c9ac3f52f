#include <clocale>
#include <cstdio>
#include <optional>

#include <QApplication>
#include <QCoreApplication>

#include "mainwin/WindowFrontEnd.h"
#include "platform/Interrupt.h"
#include "platform/Process.h"
#include "shared/ConsolePrinter.h"
#include "shared/Flags.h"
#include "startup/CommandLine.h"
#include "startup/ConsoleFrontEnd.h"
#include "startup/Program.h"
#include "sync/windows/WindowReviewHost.h"

namespace
{

using namespace venlo;

/// The busy pointer for a scope.
class BusyPointer
{
public:
    BusyPointer() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~BusyPointer() { QGuiApplication::restoreOverrideCursor(); }
    BusyPointer(const BusyPointer &) = delete;
    BusyPointer &operator=(const BusyPointer &) = delete;
};

int runWithoutWindows(const CommandLine &commandLine, Flags &flags, int &argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    ConsolePrinter printer(stdout, stderr);
    ConsoleFrontEnd frontEnd(printer, flags);
    Program program({frontEnd}, flags);
    return program.Main(commandLine);
}

int runWithWindows(const CommandLine &commandLine, Flags &flags, int &argc, char **argv)
{
    const QApplication application(argc, argv);
    ConsolePrinter printer(stdout, stderr);
    WindowFrontEnd frontEnd(printer, flags);
    WindowReviewHost reviewHost(frontEnd);
    std::optional<BusyPointer> busy(std::in_place);
    // The command's windows bring their own pointer.
    Program program({frontEnd, &reviewHost, nullptr, nullptr, [&busy] { busy.reset(); }}, flags);
    return program.Main(commandLine);
}

} // namespace

int main(int argc, char **argv)
{
    std::setlocale(LC_CTYPE, "");
    const CommandLine commandLine = CommandLine::parse(rawCommandLine(argc, argv));
    Flags flags;
    flags.batch = commandLine.batch;
    noteInterrupts();
    return hasDisplay() ? runWithWindows(commandLine, flags, argc, argv)
                        : runWithoutWindows(commandLine, flags, argc, argv);
}
