#include "startup/WindowRun.h"

#include <exception>
#include <memory>
#include <optional>

#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include "mainwin/MainRooms.h"
#include "mainwin/WindowFrontEnd.h"
#include "mainwin/ffMain.h"
#include "platform/Appearance.h"
#include "platform/Console.h"
#include "platform/Process.h"
#include "shared/ConsolePrinter.h"
#include "shared/Flags.h"
#include "startup/CommandLine.h"
#include "startup/Program.h"
#include "sync/windows/WindowReviewHost.h"

namespace venlo
{

namespace
{
/// The busy pointer for a scope.
class BusyPointer
{
public:
    BusyPointer() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~BusyPointer() { QGuiApplication::restoreOverrideCursor(); }
    BusyPointer(const BusyPointer &) = delete;
    BusyPointer &operator=(const BusyPointer &) = delete;
};

/// The toolkit's own texts (the folder dialog, the menus of text boxes) in Japanese like ours,
/// whatever language the desktop speaks; where its catalogue is missing they stay English.
class ToolkitTexts
{
public:
    ToolkitTexts()
    {
        const QLocale japanese(QLocale::Japanese, QLocale::Japan);
        QLocale::setDefault(japanese); // the names of file types follow it
        const QString name = QStringLiteral("qtbase_ja");
        if (m_texts.load(name, executableFolder() + QStringLiteral("translations")) ||
            m_texts.load(name, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
            QCoreApplication::installTranslator(&m_texts);
    }

private:
    QTranslator m_texts;
};

} // namespace

bool WindowApplication::notify(QObject *receiver, QEvent *event)
{
    try {
        return QApplication::notify(receiver, event);
    } catch (const std::exception &error) {
        const QString words = QString::fromUtf8(error.what());
        // Not from here: whatever threw may be unwinding still.
        if (m_frontEnd != nullptr)
            QMetaObject::invokeMethod(
                this, [this, words] { m_frontEnd->message(words); }, Qt::QueuedConnection);
        return true;
    }
}

int runWithWindows(const CommandLine &commandLine, Flags &flags, WindowApplication &application,
                   const ConsoleStreams &streams)
{
    const ToolkitTexts texts;
    // The windows of an operation come and go; only the main window's end is the program's.
    QApplication::setQuitOnLastWindowClosed(false);
    if (darkDesktop() && !styleFollowsDarkDesktop())
        QApplication::setStyle(QStringLiteral("Fusion"));
    ConsolePrinter printer(streams.results, streams.messages, consoleText);
    WindowFrontEnd frontEnd(printer, flags);
    application.setFrontEnd(&frontEnd);
    WindowReviewHost reviewHost(frontEnd, [&frontEnd] { return frontEnd.windowInFront(); });
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

} // namespace venlo
