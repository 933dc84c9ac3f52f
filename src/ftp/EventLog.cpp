#include "ftp/ErrorLog.h"

#include "platform/Files.h"

#include <QFile>

#include <algorithm>

namespace venlo
{

using namespace std::chrono_literals;

namespace
{
constexpr qsizetype longestNote = 8192; // characters; a server's words may be endless

constexpr auto longestWait = 50ms;
constexpr qsizetype mostWaiting = 64LL * 1024; ///< bytes
constexpr qsizetype stampSize = 24;

bool isControl(QChar c)
{
    const ushort code = c.unicode();
    return code < 0x20 || (code >= 0x7f && code <= 0x9f);
}

/// Control characters become "\xHH", so that a note is one line and cannot command a terminal.
QString escaped(const QString &text)
{
    if (std::none_of(text.begin(), text.end(), isControl))
        return text;
    QString safe;
    safe.reserve(text.size());
    for (const QChar c : text) {
        if (isControl(c))
            safe.append(QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0')));
        else
            safe.append(c);
    }
    return safe;
}
} // namespace

EventLog::EventLog(const QString &userDataFolder, ErrorLog::Clock clock)
    : m_path(userDataFolder + QStringLiteral("FtpEvent.Log")), m_clock(std::move(clock))
{
    m_soon.setInterval(longestWait);
    m_soon.setSingleShot(true);
    QObject::connect(&m_soon, &QTimer::timeout, &m_soon, [this] { flush(); });
}

EventLog::~EventLog()
{
    flush();
}

QString EventLog::olderPath() const
{
    QString path = m_path;
    path.chop(static_cast<int>(QLatin1String("Log").size()));
    return path + QStringLiteral("1.Log");
}

bool EventLog::open()
{
    if (m_file && m_file->isOpen())
        return true;
    m_file = std::make_unique<QFile>(m_path);
    // Unbuffered: a note is one write, and a crash loses none of those before it.
    if (!m_file->open(QIODevice::Append | QIODevice::Unbuffered,
                      QFileDevice::ReadOwner | QFileDevice::WriteOwner))
        return false;
    makePrivateFile(m_path);
    m_size = m_file->size();
    return true;
}

void EventLog::rotate()
{
    m_file->close();
    if (replaceFile(m_path, olderPath()) || !open())
        return;
    // Somebody holds the files; the limit counts for more than the older notes.
    if (m_file->resize(0))
        m_size = 0;
}

void EventLog::stamp(QByteArray &text)
{
    constexpr qint64 perSecond = 1000;
    const QDateTime now = m_clock();
    const qint64 ms = now.toMSecsSinceEpoch();
    const qint64 rest = (ms % perSecond + perSecond) % perSecond;
    if (m_dateText.isEmpty() || m_second != (ms - rest) / perSecond) {
        m_second = (ms - rest) / perSecond;
        m_dateText = now.toLocalTime().toString(QStringLiteral("yyyy/MM/dd HH:mm:ss.")).toLatin1();
    }
    text += m_dateText;
    for (const qint64 place : {100, 10, 1})
        text += static_cast<char>('0' + rest / place % 10);
    text += ' ';
}

bool EventLog::add(const QString &line)
{
    const QByteArray words = escaped(line.left(longestNote)).toUtf8();
    if (!open())
        return false;
    const qsizetype size = stampSize + words.size() + 1;
    if (m_size + size > maxBytes) {
        flush();
        rotate();
        if (!open())
            return false;
    }
    m_size += size;
    stamp(m_waiting);
    m_waiting += words;
    m_waiting += '\n';
    return true;
}

void EventLog::note(const QString &line)
{
    if (add(line))
        flush();
}

void EventLog::noteSoon(const QString &line)
{
    if (!add(line))
        return;
    if (m_waiting.size() > mostWaiting)
        flush();
    else if (!m_soon.isActive())
        m_soon.start();
}

void EventLog::flush()
{
    if (m_waiting.isEmpty() || !m_file->isOpen())
        return;
    const qint64 written = std::max<qint64>(m_file->write(m_waiting), 0);
    m_size += written - m_waiting.size();
    m_waiting.resize(0); // keeps its memory
}

} // namespace venlo
