#pragma once

#include <memory>

#include "sync/SyncWorld.h"

namespace venlo::test
{

/// What loads the patterns of a test that runs both without and with a main window: each of its two
/// executables links one implementation.
class PatternHosts
{
public:
    virtual ~PatternHosts() = default;
    [[nodiscard]] virtual PatternHost &host() = 0;
    /// Listings it takes to show the server's root and the folder "/pub" in it.
    [[nodiscard]] virtual int listingsToShow() const = 0;
    [[nodiscard]] static std::unique_ptr<PatternHosts> make(SyncWorld &world);
};

} // namespace venlo::test
