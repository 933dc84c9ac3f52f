#include "platform/ConnectionEnd.h"

namespace venlo
{

// Not told here: what was cut shows by a size or by a last line without its end only.
ConnectionEnd::ConnectionEnd(qintptr /*descriptor*/) {}

ConnectionEnd::~ConnectionEnd() = default;

bool ConnectionEnd::wasReset() const
{
    return false;
}

} // namespace venlo
