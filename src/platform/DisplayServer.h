#pragma once

#include <QByteArray>

namespace venlo
{

/// True when an X server answers under this DISPLAY text ("[host]:number[.screen]") and lets the
/// user in. One attempt per address and cookie, each with a limit of two seconds.
[[nodiscard]] bool xServerAnswers(const QByteArray &display);

/// True when a Wayland compositor listens on this WAYLAND_DISPLAY (a socket's path, or its name
/// below XDG_RUNTIME_DIR).
[[nodiscard]] bool waylandAnswers(const QByteArray &display);

} // namespace venlo
