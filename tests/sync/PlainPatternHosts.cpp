#include "sync/PatternHosts.h"

namespace venlo::test
{

namespace
{
class Plain : public PatternHosts
{
public:
    explicit Plain(SyncWorld &world) : m_world(world) {}
    [[nodiscard]] PatternHost &host() override { return m_world.patternHost; }
    [[nodiscard]] int listingsToShow() const override { return 0; }

private:
    SyncWorld &m_world;
};
} // namespace

std::unique_ptr<PatternHosts> PatternHosts::make(SyncWorld &world)
{
    return std::make_unique<Plain>(world);
}

} // namespace venlo::test
