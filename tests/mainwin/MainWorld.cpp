#include "mainwin/MainWorld.h"

#include <QFile>
#include <QTest>

#include "platform/CodePage.h"

namespace venlo::test
{

namespace
{
const QString &group()
{
    static const QString name = QStringLiteral("設定");
    return name;
}
} // namespace

MainWorld::MainWorld()
    : gate(person), windowRunner(comparison, worker, review, database, person, flags),
      shell(ProgramPlaces::ofThisProgram(QStringLiteral("VenloFtp")), userData(), QString(), person)
{
    flags.batch = false;
}

MainWorld::~MainWorld() = default;

MainRooms MainWorld::rooms()
{
    settings = std::make_unique<yIni>(person);
    bool loaded = false;
    settings->GetTxt(settingsPath(), loaded);
    if (!loaded)
        qFatal("the settings do not load");
    return {person, flags,      gate,         *settings, database,       session,
            cache,  operations, windowRunner, shell,     errorLog.path()};
}

ffMain &MainWorld::open(bool shown, const LaunchLayout &launch)
{
    window.reset();
    window = std::make_unique<ffMain>(rooms(), launch);
    if (shown) {
        window->showMainWindow({});
        if (!QTest::qWaitForWindowExposed(window.get()))
            qFatal("the window does not show");
    }
    return *window;
}

void MainWorld::close()
{
    window->close();
}

QString MainWorld::settingsText() const
{
    QFile file(settingsPath());
    return file.open(QIODevice::ReadOnly) ? fromSystemText(file.readAll()) : QString();
}

QString MainWorld::setting(const QString &key) const
{
    FrontEnd &frontEnd = const_cast<ScriptedPerson &>(person);
    yIni file(frontEnd);
    bool loaded = false;
    file.GetTxt(settingsPath(), loaded);
    file.GetGtx(group());
    return file.vGtVal(key, QString()).value().toString();
}

void MainWorld::writeSetting(const QString &key, const QVariant &value)
{
    yIni file(person);
    bool ok = false;
    file.GetTxt(settingsPath(), ok);
    file.GetGtx(group());
    file.SetVal(key, value);
    file.SetGtx();
    file.SetTxt(ok);
}

bool until(const std::function<bool()> &condition)
{
    return QTest::qWaitFor(condition, 10'000);
}

} // namespace venlo::test
