#include "support/ControlLine.h"

#include <QElapsedTimer>

namespace venlo::test
{

namespace
{

constexpr int idleLimitMs = 120'000;
constexpr int sendLimitMs = 10'000;
constexpr int hangLimitMs = 60'000;
constexpr char iac = '\xFF';

QByteArray withoutTelnet(const QByteArray &line)
{
    QByteArray plain;
    for (qsizetype i = 0; i < line.size(); ++i) {
        if (line.at(i) == iac && i + 1 < line.size() && line.at(++i) != iac)
            continue; // IAC and one command byte: IP, DM
        plain += line.at(i);
    }
    return plain;
}

} // namespace

std::optional<ControlLine::Line> ControlLine::takeLine()
{
    if (m_lines.empty())
        return std::nullopt;
    Line line = std::move(m_lines.front());
    m_lines.pop_front();
    return line;
}

std::optional<ControlLine::Line> ControlLine::readLine()
{
    for (;;) {
        if (auto line = takeLine())
            return line;
        if (!m_open || !m_socket.waitReadable(m_bell, idleLimitMs) || !readMore())
            return std::nullopt;
    }
}

std::optional<ControlLine::Line> ControlLine::lineAtHand()
{
    if (m_open && m_socket.waitReadable(m_bell, 0))
        static_cast<void>(readMore());
    return takeLine();
}

bool ControlLine::send(const QByteArray &bytes)
{
    return m_open && m_socket.write(bytes, m_bell, sendLimitMs);
}

void ControlLine::waitForClose()
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < hangLimitMs && m_open) {
        const int left = hangLimitMs - static_cast<int>(timer.elapsed());
        if (!m_socket.waitReadable(m_bell, left) || !readMore())
            return;
    }
}

void ControlLine::close()
{
    m_socket.shutDown();
    m_open = false;
}

bool ControlLine::readMore()
{
    const QByteArray more = m_socket.read(4096);
    m_open = m_open && !more.isEmpty();
    m_buffer += more;
    ++m_batch;
    for (auto end = m_buffer.indexOf('\n'); end >= 0; end = m_buffer.indexOf('\n')) {
        QByteArray line = m_buffer.left(end);
        m_buffer.remove(0, end + 1);
        if (line.endsWith('\r'))
            line.chop(1);
        m_lines.push_back({withoutTelnet(line), m_batch});
        if (m_firstLineOnly)
            m_buffer.clear();
    }
    return m_open;
}

} // namespace venlo::test
