#pragma once

#include <functional>
#include <memory>

#include <QString>

#include "e2e/DesktopPerson.h"
#include "e2e/DesktopWorld.h"

namespace venlo::test
{

/// Object names of the panes' views, as a person finds them.
inline const QString localTree = QStringLiteral("uFile/TrView");
inline const QString localList = QStringLiteral("uFile/LsView");
inline const QString ftpTree = QStringLiteral("uFtp/TrView");
inline const QString ftpList = QStringLiteral("uFtp/LsView");

/// An office with its folder, its server, and a person in front of the program. Each test gets a
/// home of its own.
///
/// Folder: index.html, readme.txt, 報告書/計画.txt, 報告書/図/概要.png (2000 bytes).
/// Server: welcome.txt, public/ with notes.txt, old/away.txt and 過去の資料/一覧.csv.
class OfficeDesktop
{
public:
    explicit OfficeDesktop(WindowApplication &application) : m_application(application) {}

    /// A new home with both sides filled.
    [[nodiscard]] bool start(QString *why);
    void end() { m_world.reset(); }
    /// As earlier runs left it: the server is the site "office", its public folder and the local
    /// one are the pattern; the window stands at the top left.
    void settle();
    [[nodiscard]] int run(const QString &commandLine, std::function<void()> script);

    [[nodiscard]] DesktopWorld &world() { return *m_world; }
    [[nodiscard]] FtpDaemon &daemon() { return m_world->daemon(); }
    [[nodiscard]] QString local(const QString &name) const
    {
        return m_world->localFolder() + QLatin1Char('/') + name;
    }
    [[nodiscard]] static QString site() { return QStringLiteral("office"); }
    [[nodiscard]] static QString pattern() { return QStringLiteral("office_pair"); }

    DesktopPerson person{QStringLiteral(VENLO_SCREENSHOTS)};

private:
    WindowApplication &m_application;
    std::unique_ptr<DesktopWorld> m_world;
};

} // namespace venlo::test
