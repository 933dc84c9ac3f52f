#include "shared/FrontEnd.h"

namespace venlo
{

FrontEnd::~FrontEnd() = default;

} // namespace venlo
