#include "ftp/ErrorLog.h"

#include "platform/Files.h"

#include <QFile>

namespace venlo
{

namespace
{
constexpr qsizetype longestNote = 8192; // characters; a server's words may be endless

/// Control characters become "\xHH", so that a note is one line and cannot command a terminal.
QString escaped(const QString &text)
{
    QString safe;
    safe.reserve(text.size());
    for (const QChar c : text) {
        const ushort code = c.unicode();
        if (code >= 0x20 && (code < 0x7f || code > 0x9f))
            safe.append(c);
        else
            safe.append(QStringLiteral("\\x%1").arg(code, 2, 16, QLatin1Char('0')));
    }
    return safe;
}
} // namespace

EventLog::EventLog(const QString &userDataFolder, ErrorLog::Clock clock)
    : m_path(userDataFolder + QStringLiteral("FtpEvent.Log")), m_clock(std::move(clock))
{
}

EventLog::~EventLog() = default;

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

void EventLog::note(const QString &line)
{
    const QByteArray text = (m_clock().toString(QStringLiteral("yyyy/MM/dd HH:mm:ss.zzz ")) +
                             escaped(line.left(longestNote)) + QLatin1Char('\n'))
                                .toUtf8();
    if (!open())
        return;
    if (m_size + text.size() > maxBytes) {
        rotate();
        if (!open())
            return;
    }
    m_size += m_file->write(text);
}

} // namespace venlo
