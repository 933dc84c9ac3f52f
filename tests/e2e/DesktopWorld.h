#pragma once

#include <memory>

#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>

#include "e2e/DesktopPerson.h"
#include "support/FtpDaemon.h"

namespace venlo
{
class WindowApplication;
}

namespace venlo::test
{

/// The home of one test: throwaway folders for everything the program keeps, a local folder, and an
/// FTP daemon. While it lives the environment points at it.
class DesktopWorld
{
public:
    /// The daemon shows seconds in its listings, so that trees compare exactly.
    DesktopWorld();
    ~DesktopWorld();
    Q_DISABLE_COPY_MOVE(DesktopWorld)

    [[nodiscard]] bool start(QString *why);
    [[nodiscard]] FtpDaemon &daemon() { return *m_daemon; }
    [[nodiscard]] QString home() const { return m_home.path(); }
    [[nodiscard]] QString localFolder() const { return m_home.filePath(QStringLiteral("local")); }
    [[nodiscard]] QString userData() const;

    /// As an earlier run of the program would have left it.
    void registerSite(const QString &name) const;
    void registerSite(const QString &name, const QString &server, const QString &user,
                      const QString &password) const;
    void registerPattern(const QString &name, const QString &site, const QString &remote) const;
    /// The window at the top left with that size, the local pane on the local folder.
    void writeLayout(int width, int height) const;
    [[nodiscard]] QVariant setting(const QString &key) const;

    /// Runs the program with windows in this process while the person's script acts. The exit
    /// status; -1 when the script failed.
    [[nodiscard]] int run(WindowApplication &application, DesktopPerson &person,
                          const QString &commandLine, std::function<void()> script) const;

private:
    void makeUserData() const;

    QTemporaryDir m_home;
    std::unique_ptr<FtpDaemon> m_daemon;
};

} // namespace venlo::test
