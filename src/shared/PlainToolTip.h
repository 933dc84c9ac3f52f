#pragma once

#include <QString>

namespace venlo
{

/// The text with a place to break at (a blank without a width) behind every 40 characters of a
/// word: a path may be one word, and whatever wraps it is as wide as its longest word.
[[nodiscard]] QString breakable(const QString &text);

/// A tool tip that shows a text as it is, its lines, its blanks, and whatever looks like a tag or
/// an entity; empty for an empty one. For every text that is not the program's own: a tool tip
/// guesses by itself whether its text is rich, and a file may be named like a picture's tag.
[[nodiscard]] QString plainToolTip(const QString &text);

/// Gives a widget such a tool tip. Programs that read the screen aloud get the text itself: they
/// would take the tool tip for the description.
template <typename Widget>
void setPlainToolTip(Widget &widget, const QString &text)
{
    widget.setToolTip(plainToolTip(text));
    widget.setAccessibleDescription(text);
}

} // namespace venlo
