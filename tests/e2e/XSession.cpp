#include "e2e/XSession.h"

#include <csignal>

#include <sys/prctl.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QThread>

namespace venlo::test
{

namespace
{
constexpr int startLimit = 20'000; // ms
constexpr int lookEvery = 50;      // ms
constexpr int endLimit = 3'000;    // ms

/// The child gets the signal when this process is gone, however it went.
void endWithUs(QProcess &process)
{
    const pid_t parent = ::getpid();
    process.setChildProcessModifier([parent] {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent) // it went before that was said
            ::_exit(1);
    });
}

void end(QProcess &process)
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    if (!process.waitForFinished(endLimit)) {
        process.kill();
        process.waitForFinished(endLimit);
    }
}
} // namespace

XSession::XSession()
{
    endWithUs(m_server);
    endWithUs(m_windowManager);
}

XSession::~XSession()
{
    end(m_windowManager);
    end(m_server);
}

bool XSession::start(QString *why)
{
    return startServer(why) && startWindowManager(why);
}

/// The server picks a free display and writes its number when it takes connections.
bool XSession::startServer(QString *why)
{
    m_server.setStandardErrorFile(QProcess::nullDevice());
    m_server.start(QStringLiteral("Xvfb"),
                   {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                    QStringLiteral("0"), QStringLiteral("1280x960x24"), QStringLiteral("-nolisten"),
                    QStringLiteral("tcp"), QStringLiteral("-noreset")});
    QElapsedTimer since;
    since.start();
    QByteArray said;
    while (!said.endsWith('\n') && since.elapsed() < startLimit) {
        if (m_server.state() == QProcess::NotRunning)
            break;
        m_server.waitForReadyRead(lookEvery);
        said += m_server.readAllStandardOutput();
    }
    if (!said.endsWith('\n')) {
        *why = QStringLiteral("Xvfb does not start: ") + m_server.errorString();
        return false;
    }
    m_display = ':' + said.trimmed();
    return true;
}

bool XSession::startWindowManager(QString *why)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(m_display));
    m_windowManager.setProcessEnvironment(environment);
    m_windowManager.setStandardOutputFile(QProcess::nullDevice());
    m_windowManager.setStandardErrorFile(QProcess::nullDevice());
    m_windowManager.start(QStringLiteral("openbox"), {QStringLiteral("--sm-disable")});
    QElapsedTimer since;
    since.start();
    while (since.elapsed() < startLimit) {
        if (windowManagerAnswers())
            return true;
        QThread::msleep(lookEvery);
    }
    *why = QStringLiteral("openbox does not answer: ") + m_windowManager.errorString();
    return false;
}

bool XSession::windowManagerAnswers() const
{
    QProcess look;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(m_display));
    look.setProcessEnvironment(environment);
    look.setStandardErrorFile(QProcess::nullDevice());
    look.start(QStringLiteral("xdotool"), {QStringLiteral("get_num_desktops")});
    return look.waitForFinished(startLimit) && look.exitCode() == 0 &&
           look.readAllStandardOutput().trimmed().toInt() > 0;
}

void XSession::enter() const
{
    qputenv("DISPLAY", m_display);
    qputenv("QT_QPA_PLATFORM", "xcb");
    qunsetenv("WAYLAND_DISPLAY");
}

} // namespace venlo::test
