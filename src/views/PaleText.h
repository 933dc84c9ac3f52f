#pragma once

#include <QBrush>

namespace venlo
{

/// The colour of a hidden entry's text: the window's own text colour drawn towards the background,
/// so that it stays readable in light and dark looks alike.
[[nodiscard]] QBrush paleText();

} // namespace venlo
