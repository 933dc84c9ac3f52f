#include "platform/RecycleBin.h"

namespace venlo
{

// The shell moves things there itself; what its operation cannot name, its bin cannot keep.
bool hasRecycleBin(const QString & /*path*/)
{
    return false;
}

bool moveToRecycleBin(const QString & /*path*/, std::error_code &why)
{
    why = std::make_error_code(std::errc::not_supported);
    return false;
}

} // namespace venlo
