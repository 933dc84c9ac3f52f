#include "mainwin/ffMain.h"
#include "shared/OperationGate.h"
#include "startup/settings/SettingsFile.h"
#include "startup/settings/ShellHelpers.h"
#include "sync/PatternHosts.h"

namespace venlo::test
{

namespace
{
/// A main window that is not shown, as an unattended run has it.
class Windowed : public PatternHosts
{
public:
    explicit Windowed(SyncWorld &world)
        : m_gate(world.person), m_settings(world.person),
          m_shell(ProgramPlaces::ofThisProgram(QStringLiteral("VenloFtp")), world.userData(),
                  QString(), world.person)
    {
        bool loaded = false;
        m_settings.GetTxt(world.userData() + QStringLiteral("User.xml"), loaded);
        if (!loaded)
            qFatal("the settings do not load");
        m_window = std::make_unique<ffMain>(
            MainRooms{world.person, world.flags, m_gate, m_settings, world.database, world.session,
                      world.cache, world.operations, world.runner, m_shell, world.errorLog.path()},
            LaunchLayout());
    }
    [[nodiscard]] PatternHost &host() override { return *m_window; }
    [[nodiscard]] int listingsToShow() const override { return 2; }

private:
    OperationGate m_gate;
    yIni m_settings;
    ShellHelpers m_shell;
    std::unique_ptr<ffMain> m_window;
};
} // namespace

std::unique_ptr<PatternHosts> PatternHosts::make(SyncWorld &world)
{
    return std::make_unique<Windowed>(world);
}

} // namespace venlo::test
