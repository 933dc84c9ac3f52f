#include "e2e/DesktopPerson.h"

#include <chrono>
#include <mutex>
#include <utility>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QSemaphore>
#include <QTest>
#include <QThread>
#include <QWidget>

#include "e2e/WidgetPlaces.h"

namespace venlo::test
{

namespace
{
constexpr int lookEvery = 30;        // ms
constexpr int answerLimit = 15'000;  // ms until the main thread looks
constexpr int commandLimit = 15'000; // ms
constexpr int closeEvery = 150;      // ms
constexpr int closeRounds = 200;
} // namespace

/// What the main thread is asked to do; dropped when nobody waits for it any more.
struct DesktopPerson::Pending {
    std::function<void()> looks;
    std::mutex mutex;
    QSemaphore done;
};

DesktopPerson::DesktopPerson(QString pictures) : m_pictures(std::move(pictures))
{
    QDir().mkpath(m_pictures);
}

DesktopPerson::~DesktopPerson()
{
    (void)finished();
}

void DesktopPerson::start(std::function<void()> script)
{
    m_programEnded = false;
    m_failure.clear();
    m_thread.reset(QThread::create([this, script = std::move(script)] { run(script); }));
    m_thread->start();
}

bool DesktopPerson::finished()
{
    m_programEnded = true;
    if (m_thread) {
        m_thread->wait();
        m_thread.reset();
    }
    return m_failure.isEmpty();
}

void DesktopPerson::run(const std::function<void()> &script)
{
    try {
        script();
        return;
    } catch (const StepFailed &failed) {
        m_failure = failed.why;
    } catch (const std::exception &error) {
        m_failure = QString::fromUtf8(error.what());
    }
    try {
        const QString box = look([] { return boxText(); });
        if (!box.isEmpty())
            m_failure += QStringLiteral(" [a box shows: ") + box + QLatin1Char(']');
        const QString name =
            QStringLiteral("failed-") + QString::fromLatin1(QTest::currentTestFunction());
        picture(name);
        m_failure += QStringLiteral(" (see ") + m_pictures + QLatin1Char('/') + name +
                     QStringLiteral(".png)");
    } catch (const StepFailed &) {
        m_failure += QStringLiteral(" (no picture)");
    }
    giveUp();
}

/// Closes whatever is in front until the program has ended.
void DesktopPerson::giveUp()
{
    for (int round = 0; round < closeRounds && !m_programEnded; ++round) {
        try {
            xdotool({QStringLiteral("mouseup"), QStringLiteral("1")});
            const bool closed = look([] {
                if (QWidget *popup = QApplication::activePopupWidget())
                    return popup->close();
                if (QWidget *modal = QApplication::activeModalWidget())
                    return modal->close();
                for (QWidget *window : QApplication::topLevelWidgets()) {
                    if (window->isVisible())
                        window->close();
                }
                return true;
            });
            (void)closed;
        } catch (const StepFailed &) {
            // It may be ending just now.
        }
        QThread::msleep(closeEvery);
    }
}

void DesktopPerson::inProgram(std::function<void()> looks)
{
    const auto pending = std::make_shared<Pending>();
    pending->looks = std::move(looks);
    QMetaObject::invokeMethod(
        qApp,
        [pending] {
            const std::lock_guard lock(pending->mutex);
            if (pending->looks)
                pending->looks();
            pending->done.release();
        },
        Qt::QueuedConnection);
    QElapsedTimer since;
    since.start();
    while (!pending->done.tryAcquire(1, lookEvery)) {
        if (!m_programEnded && since.elapsed() < answerLimit)
            continue;
        const std::lock_guard lock(pending->mutex); // not in the middle of it
        pending->looks = nullptr;
        throw StepFailed{m_programEnded ? QStringLiteral("the program has ended")
                                        : QStringLiteral("the program does not react")};
    }
}

void DesktopPerson::waitFor(const QString &what, std::function<bool()> predicate, int limitMs)
{
    QElapsedTimer since;
    since.start();
    QString last;
    for (;;) {
        try {
            if (look(predicate))
                return;
            last.clear();
        } catch (const StepFailed &failed) {
            last = QStringLiteral(": ") + failed.why;
            if (m_programEnded)
                throw;
        }
        if (since.elapsed() > limitMs)
            throw StepFailed{QStringLiteral("waited in vain for ") + what + last};
        QThread::msleep(lookEvery);
    }
}

void DesktopPerson::waitOutside(const QString &what, const std::function<bool()> &predicate,
                                int limitMs)
{
    QElapsedTimer since;
    since.start();
    while (!predicate()) {
        if (since.elapsed() > limitMs || m_programEnded)
            throw StepFailed{QStringLiteral("waited in vain for ") + what};
        QThread::msleep(lookEvery);
    }
}

void DesktopPerson::check(bool holds, const QString &what) const
{
    if (!holds)
        throw StepFailed{what};
}

/// The place once it stays where it is (windows that just opened are moved by their manager), in
/// the display's own pixels.
QPoint DesktopPerson::steady(const QString &what, const std::function<QPoint()> &place)
{
    QPoint last(-1, -1);
    waitFor(what, [&] {
        const QPoint now = place();
        return std::exchange(last, now) == now;
    });
    return (QPointF(last) * look([] { return qApp->devicePixelRatio(); })).toPoint();
}

void DesktopPerson::picture(const QString &name)
{
    QThread::msleep(2 * closeEvery); // what was asked for is painted
    look([&] {
        const QPixmap display = QApplication::primaryScreen()->grabWindow(0);
        if (!display.save(m_pictures + QLatin1Char('/') + name + QStringLiteral(".png")))
            throw StepFailed{QStringLiteral("no picture ") + name};
    });
}

void DesktopPerson::pictureOf(const QString &window, const QString &name)
{
    waitForWindow(window);
    QThread::msleep(2 * closeEvery);
    look([&] {
        const QRect frame = shownWidget(window).window()->frameGeometry();
        const QPixmap display = QApplication::primaryScreen()->grabWindow(
            0, frame.x(), frame.y(), frame.width(), frame.height());
        if (!display.save(m_pictures + QLatin1Char('/') + name + QStringLiteral(".png")))
            throw StepFailed{QStringLiteral("no picture ") + name};
    });
}

void DesktopPerson::xdotool(const QStringList &arguments) const
{
    QProcess command;
    command.setProcessChannelMode(QProcess::MergedChannels);
    command.start(QStringLiteral("xdotool"), arguments);
    if (!command.waitForFinished(commandLimit) || command.exitCode() != 0) {
        command.kill();
        throw StepFailed{QStringLiteral("xdotool ") + arguments.join(QLatin1Char(' ')) +
                         QStringLiteral(": ") + QString::fromUtf8(command.readAll())};
    }
}

} // namespace venlo::test
