#pragma once

namespace venlo
{

/// The main window as the batch runner needs it.
class WindowHost
{
public:
    virtual ~WindowHost() = default;
    /// Shows the main window (modeless) and brings it to the foreground.
    virtual void showMainWindow() = 0;
};

} // namespace venlo
