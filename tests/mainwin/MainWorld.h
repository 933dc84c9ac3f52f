#pragma once

#include <memory>

#include "mainwin/MainSettings.h"
#include "mainwin/ffMain.h"
#include "shared/OperationGate.h"
#include "startup/settings/SettingsFile.h"
#include "startup/settings/ShellHelpers.h"
#include "sync/Execution.h"
#include "sync/SyncWorld.h"

namespace venlo::test
{

/// A review that is executed as it stands, as by a person who presses the button at once.
class ExecutingReview : public ReviewHost
{
public:
    [[nodiscard]] int act(SyncReview &review, Execution &execution, bool) override
    {
        return execution.run(review, true);
    }
};

/// A main window over the whole engine, a throwaway user data folder and a throwaway local folder.
/// A person sits before it: "/b" is not set and every question has to be announced.
class MainWorld : public SyncWorld
{
public:
    MainWorld();
    ~MainWorld();

    /// Makes the window (an earlier one goes first) with the settings as they stand in the file.
    ffMain &open(bool shown = true, const LaunchLayout &launch = {});
    /// What a main window gets; loads the settings.
    [[nodiscard]] MainRooms rooms();
    /// Closes it as a person does, which saves the settings.
    void close();

    [[nodiscard]] QString settingsPath() const { return userData() + QStringLiteral("User.xml"); }
    [[nodiscard]] QString settingsText() const;
    /// Value of a key in the settings file.
    [[nodiscard]] QString setting(const QString &key) const;
    void writeSetting(const QString &key, const QVariant &value);

    OperationGate gate;
    ExecutingReview review;
    SyncRunner windowRunner;
    std::unique_ptr<yIni> settings;
    ShellHelpers shell;
    std::unique_ptr<ffMain> window;
};

/// Runs events until the condition holds; false after ten seconds.
[[nodiscard]] bool until(const std::function<bool()> &condition);

} // namespace venlo::test
