#pragma once

namespace venlo
{

/// True when the person's desktop is set to dark colours.
[[nodiscard]] bool darkDesktop();

/// True where the platform's own widget style draws dark by itself; elsewhere Fusion does.
[[nodiscard]] bool styleFollowsDarkDesktop();

} // namespace venlo
