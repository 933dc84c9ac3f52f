#pragma once

#include <QGuiApplication>

#include "mainwin/popup/sfMsg.h"

namespace venlo
{

/// The wait cursor for a scope.
class WaitCursor
{
public:
    WaitCursor() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QGuiApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor &) = delete;
    WaitCursor &operator=(const WaitCursor &) = delete;
};

/// The message window of an operation for a scope: whatever ends the operation, it goes.
class ShownMessages
{
public:
    explicit ShownMessages(sfMsg &window) : m_window(window) { m_window.cOn(); }
    ~ShownMessages() { m_window.cOff(); }
    ShownMessages(const ShownMessages &) = delete;
    ShownMessages &operator=(const ShownMessages &) = delete;

private:
    sfMsg &m_window;
    WaitCursor m_cursor;
};

} // namespace venlo
