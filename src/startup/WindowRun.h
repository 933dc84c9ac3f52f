#pragma once

#include <QApplication>

#include "platform/Console.h"

namespace venlo
{

class FrontEnd;
struct CommandLine;
struct Flags;

/// The application of a run with a display. What a handler could not do (a store that fails) is
/// said, and the window stays usable.
class WindowApplication : public QApplication
{
public:
    using QApplication::QApplication;
    /// Who says it; null for nobody. Outlives the application's events.
    void setFrontEnd(FrontEnd *frontEnd) { m_frontEnd = frontEnd; }
    bool notify(QObject *receiver, QEvent *event) override;

private:
    FrontEnd *m_frontEnd = nullptr;
};

/// Runs a command line with windows, until the main window is closed where it opened one. The exit
/// status.
[[nodiscard]] int runWithWindows(const CommandLine &commandLine, Flags &flags,
                                 WindowApplication &application,
                                 const ConsoleStreams &streams = {});

} // namespace venlo
