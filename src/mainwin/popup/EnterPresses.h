#pragma once

class QPushButton;

namespace venlo
{

/// Enter presses this button while it has the focus, and only then; it must not be the one that
/// Enter presses from everywhere in its window.
void enterPresses(QPushButton &button);

} // namespace venlo
