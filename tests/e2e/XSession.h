#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>

namespace venlo::test
{

/// A display of a test's own: an X server in memory (1280x960) with a window manager on it, as a
/// person's desktop has one. Both end with the session, and also when the test dies, because the
/// system then ends them. Start it before the application and in the main thread.
class XSession
{
public:
    XSession();
    ~XSession();
    Q_DISABLE_COPY_MOVE(XSession)

    /// Starts both and waits until the window manager answers. False with a reason otherwise.
    [[nodiscard]] bool start(QString *why);
    /// Points the environment of this process at the session: DISPLAY and the toolkit's platform.
    void enter() const;

    /// ":7"
    [[nodiscard]] const QByteArray &display() const { return m_display; }

private:
    [[nodiscard]] bool startServer(QString *why);
    [[nodiscard]] bool startWindowManager(QString *why);
    [[nodiscard]] bool windowManagerAnswers() const;

    QByteArray m_display;
    QProcess m_server;
    QProcess m_windowManager;
};

} // namespace venlo::test
