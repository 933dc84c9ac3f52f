#include "e2e/Neighbour.h"

#include <QElapsedTimer>

#include "e2e/DesktopPerson.h"

namespace venlo::test
{

namespace
{
constexpr int lookEvery = 30;      // ms
constexpr int endLimit = 3'000;    // ms
constexpr int pasteLimit = 10'000; // ms
} // namespace

Neighbour::Neighbour(const QStringList &arguments)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(QStringLiteral(VENLO_NEIGHBOUR), arguments);
    if (arguments.value(0) == QLatin1String("paste"))
        return;
    const QStringList words =
        linesUntil(QStringLiteral("ready")).constLast().split(QLatin1Char(' '));
    m_middle = QPoint(words.value(1).toInt(), words.value(2).toInt());
}

Neighbour::~Neighbour()
{
    m_process.closeWriteChannel();
    if (!m_process.waitForFinished(endLimit)) {
        m_process.kill();
        m_process.waitForFinished(endLimit);
    }
}

QStringList Neighbour::paste()
{
    Neighbour neighbour({QStringLiteral("paste")});
    QStringList lines = neighbour.linesUntil(QStringLiteral("pasted"), pasteLimit);
    lines.removeLast();
    return lines;
}

QStringList Neighbour::linesUntil(const QString &beginning, int limitMs)
{
    QElapsedTimer since;
    since.start();
    QStringList lines;
    while (since.elapsed() < limitMs) {
        while (m_process.canReadLine()) {
            lines += QString::fromUtf8(m_process.readLine()).trimmed();
            if (lines.constLast().startsWith(beginning))
                return lines;
        }
        if (m_process.state() == QProcess::NotRunning)
            break;
        m_process.waitForReadyRead(lookEvery);
    }
    throw StepFailed{QStringLiteral("the other program does not say ") + beginning +
                     QStringLiteral(", only: ") + lines.join(QStringLiteral(" | "))};
}

} // namespace venlo::test
