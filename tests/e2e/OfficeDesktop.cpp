#include "e2e/OfficeDesktop.h"

#include <utility>

#include "support/Trees.h"

namespace venlo::test
{

namespace
{
constexpr int usualWidth = 1100;
constexpr int usualHeight = 720;
} // namespace

bool OfficeDesktop::start(QString *why)
{
    m_world = std::make_unique<DesktopWorld>();
    if (!m_world->start(why))
        return false;
    // Whole seconds: that is what both sides can tell.
    const QDateTime lastWeek(QDate::currentDate().addDays(-7), QTime(9, 30, 0));
    const bool filled = makeTree(m_world->localFolder(),
                                 {{"index.html", "<html>our pages</html>", lastWeek},
                                  {"readme.txt", "read me first", lastWeek},
                                  {"報告書/計画.txt", "the plan", lastWeek},
                                  {"報告書/図/概要.png", QByteArray(2000, 'p'), lastWeek}}) &&
                        daemon().put("welcome.txt", "welcome", lastWeek) &&
                        daemon().put("public/notes.txt", "some notes", lastWeek) &&
                        daemon().put("public/old/away.txt", "no longer wanted", lastWeek) &&
                        daemon().put("public/過去の資料/一覧.csv", "a,b,c", lastWeek);
    daemon().own();
    if (!filled)
        *why = QStringLiteral("the folders cannot be filled");
    return filled;
}

void OfficeDesktop::settle()
{
    m_world->registerSite(site());
    m_world->registerPattern(pattern(), site(), QStringLiteral("/public"));
    m_world->writeLayout(usualWidth, usualHeight);
}

int OfficeDesktop::run(const QString &commandLine, std::function<void()> script)
{
    return m_world->run(m_application, person, commandLine, std::move(script));
}

} // namespace venlo::test
