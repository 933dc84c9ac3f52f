#include <clocale>
#include <cstdio>
#include <exception>
#include <memory>
#include <optional>

#include <QApplication>
#include <QCoreApplication>

#include "mainwin/MainRooms.h"
#include "mainwin/WindowFrontEnd.h"
#include "mainwin/ffMain.h"
#include "platform/Appearance.h"
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

/// What a handler could not do is said, and the window stays usable.
class WindowApplication : public QApplication
{
public:
    using QApplication::QApplication;
    void setFrontEnd(FrontEnd *frontEnd) { m_frontEnd = frontEnd; }
    bool notify(QObject *receiver, QEvent *event) override
    {
        try {
            return QApplication::notify(receiver, event);
        } catch (const std::exception &error) {
            const QString words = QString::fromUtf8(error.what());
            if (m_frontEnd != nullptr)
                QMetaObject::invokeMethod(
                    this, [this, words] { m_frontEnd->message(words); }, Qt::QueuedConnection);
            return true;
        }
    }

private:
    FrontEnd *m_frontEnd = nullptr;
};

int runWithWindows(const CommandLine &commandLine, Flags &flags, int &argc, char **argv)
{
    WindowApplication application(argc, argv);
    // The windows of an operation come and go; only the main window's end is the program's.
    QApplication::setQuitOnLastWindowClosed(false);
    if (darkDesktop() && !styleFollowsDarkDesktop())
        QApplication::setStyle(QStringLiteral("Fusion"));
    ConsolePrinter printer(stdout, stderr);
    WindowFrontEnd frontEnd(printer, flags);
    application.setFrontEnd(&frontEnd);
    WindowReviewHost reviewHost(frontEnd);
    std::optional<BusyPointer> busy(std::in_place);
    std::unique_ptr<ffMain> window;
    const auto makeWindow = [&window](const MainRooms &rooms, const LaunchLayout &launch) {
        window = std::make_unique<ffMain>(rooms, launch);
        QObject::connect(
            window.get(), &ffMain::closed, window.get(), [] { QApplication::quit(); },
            Qt::QueuedConnection);
        return Program::MainWindow{window.get(), window.get(), [] { QApplication::exec(); }};
    };
    // The command's windows bring their own pointer.
    Program program({frontEnd, &reviewHost, &frontEnd, makeWindow, [&busy] { busy.reset(); }},
                    flags);
    const int status = program.Main(commandLine);
    window.reset(); // before the rooms it works with
    application.setFrontEnd(nullptr);
    return status;
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
