#pragma once

#include <QString>

namespace venlo
{

/// The main window as the batch runner needs it.
class WindowHost
{
public:
    virtual ~WindowHost() = default;
    /// Shows the main window (modeless) and brings it to the foreground.
    /// connectedSite: the site that the session was connected to meanwhile, empty for none.
    virtual void showMainWindow(const QString &connectedSite) = 0;
};

} // namespace venlo
