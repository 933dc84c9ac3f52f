#include "support/ScriptedTransfer.h"

#include <algorithm>
#include <limits>

#include <QElapsedTimer>

namespace venlo::test
{

namespace
{

constexpr int openLimitMs = 5000;
constexpr int idleLimitMs = 30'000;
constexpr int lookEveryMs = 10; ///< how often a running transfer looks at its control connection
constexpr int blockSize = 64 * 1024;

bool isLoopback(const QByteArray &address)
{
    return address.startsWith("127.") || address == "::1";
}

} // namespace

quint16 ScriptedTransfer::listen()
{
    m_targetPort = 0;
    m_data.close();
    m_listener = Socket::listenOn(m_options.ipv6, 0);
    return m_listener.isValid() ? m_listener.port() : quint16(0);
}

bool ScriptedTransfer::setTarget(const QByteArray &address, quint16 port)
{
    m_listener.close();
    m_targetAddress = address;
    m_targetPort = isLoopback(address) ? port : quint16(0);
    return m_targetPort != 0;
}

bool ScriptedTransfer::open()
{
    if (m_listener.isValid()) {
        m_data = m_listener.accept(m_bell, openLimitMs);
        m_listener.close();
    } else if (m_targetPort != 0) {
        m_data = Socket::connectTo(m_targetAddress, m_targetPort);
        m_targetPort = 0;
    }
    return m_data.isValid();
}

void ScriptedTransfer::close()
{
    m_data.close();
}

void ScriptedTransfer::reset()
{
    m_data.close();
    m_listener.close();
    m_targetPort = 0;
}

std::optional<ScriptedTransfer::End> ScriptedTransfer::interrupted(ControlLine &control) const
{
    std::deque<ControlLine::Line> kept;
    std::optional<End> end;
    while (!end) {
        const auto line = control.lineAtHand();
        if (!line)
            break;
        end = atLine(*line, control, kept);
    }
    for (auto line = kept.rbegin(); line != kept.rend(); ++line)
        control.putBack(std::move(*line));
    return end;
}

std::optional<ScriptedTransfer::End>
ScriptedTransfer::atLine(const ControlLine::Line &line, ControlLine &control,
                         std::deque<ControlLine::Line> &kept) const
{
    // A bare ABOR, or one behind telnet's interrupt that came without its 0xFF.
    if (m_options.abor && line.text.toUpper().endsWith("ABOR"))
        return End::Aborted;
    switch (m_options.earlyLines) {
    case EarlyLines::InOrder:
        kept.push_back(line);
        return std::nullopt;
    case EarlyLines::EndTheTransfer:
    case EarlyLines::AnswerFirst:
        kept.push_back(line);
        return End::BrokenOff;
    case EarlyLines::CompleteIt:
        kept.push_back(line);
        return End::Done;
    case EarlyLines::Dropped:
        return std::nullopt;
    case EarlyLines::Refused:
        static_cast<void>(control.send("503 A transfer is running\r\n"));
        return std::nullopt;
    case EarlyLines::CloseConnection:
        break;
    }
    return End::DropControl;
}

void ScriptedTransfer::pause(const Action &action) const
{
    static_cast<void>(m_bell.waitFor(action.chunkDelayMs));
}

ScriptedTransfer::End ScriptedTransfer::send(QByteArray bytes, const Action &action,
                                             ControlLine &control)
{
    if (action.dataLimit && !action.dataRepeats)
        bytes.truncate(static_cast<qsizetype>(*action.dataLimit));
    constexpr qint64 noLimit = std::numeric_limits<qint64>::max();
    const qint64 all = action.dataRepeats ? action.dataLimit.value_or(noLimit) : bytes.size();
    const qint64 step = action.chunk > 0 ? action.chunk : blockSize;
    QElapsedTimer idle;
    idle.start();
    for (qint64 done = 0; done < all;) {
        if (const auto end = interrupted(control))
            return *end;
        if (idle.elapsed() > idleLimitMs || m_bell.hasRung())
            return End::Gone;
        if (!m_data.waitWritable(m_bell, lookEveryMs))
            continue;
        const qint64 at = done % bytes.size();
        const qint64 sent = m_data.writeSome(bytes.constData() + at,
                                             std::min({step, bytes.size() - at, all - done}));
        if (sent < 0)
            return End::Gone;
        done += sent;
        idle.restart();
        pause(action);
    }
    return finish(action, control);
}

ScriptedTransfer::End ScriptedTransfer::receive(QByteArray &bytes, const Action &action,
                                                ControlLine &control)
{
    const qint64 limit = action.dataLimit.value_or(-1);
    const int step = action.chunk > 0 ? action.chunk : blockSize;
    QElapsedTimer idle;
    idle.start();
    qint64 received = 0;
    while (limit < 0 || received < limit) {
        if (const auto end = interrupted(control))
            return *end;
        if (idle.elapsed() > idleLimitMs || m_bell.hasRung())
            return End::Gone;
        if (!m_data.waitReadable(m_bell, lookEveryMs))
            continue;
        const qint64 most = limit < 0 ? step : std::min<qint64>(step, limit - received);
        const QByteArray more = m_data.read(static_cast<int>(most));
        if (more.isEmpty())
            break;
        received += more.size();
        if (!action.discards)
            bytes += more;
        idle.restart();
        pause(action);
    }
    return finish(action, control);
}

ScriptedTransfer::End ScriptedTransfer::finish(const Action &action, ControlLine &control)
{
    if (!action.dataLimit || action.dataEnd == Action::DataEnd::Whole) {
        m_data.close();
        return End::Done;
    }
    if (action.dataEnd == Action::DataEnd::DropControl)
        return End::DropControl;
    if (action.dataEnd == Action::DataEnd::Reset) {
        m_data.reset();
        return End::Done;
    }
    // Stalled: until the client aborts, leaves, or the limit.
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < idleLimitMs) {
        if (const auto end = interrupted(control))
            return *end;
        if (!control.isOpen() || m_bell.waitFor(lookEveryMs))
            return End::Gone;
    }
    return End::Gone;
}

} // namespace venlo::test
