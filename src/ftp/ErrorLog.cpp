#include "ftp/ErrorLog.h"

#include "platform/CodePage.h"
#include "platform/Files.h"

#include <algorithm>

#include <QFile>

namespace venlo
{

namespace
{
/// UTF-16 little-endian, as the systems that read the log expect it.
QByteArray utf16(const QString &text)
{
    QByteArray bytes("\xff\xfe", 2);
    for (const QChar c : text) {
        bytes.append(static_cast<char>(c.unicode() & 0xff));
        bytes.append(static_cast<char>(c.unicode() >> 8));
    }
    return bytes;
}

/// A failure is one line, whatever a server or a folder put into its names.
QString oneLine(QString text)
{
    std::replace_if(
        text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x20 || c.unicode() == 0x7f; },
        QLatin1Char(' '));
    return text;
}
} // namespace

ErrorLog::ErrorLog(const QString &userDataFolder, Clock clock)
    : m_path(userDataFolder + QStringLiteral("FtpErr.Log")), m_clock(std::move(clock))
{
}

void ErrorLog::StartErrorLog()
{
    const QString stamp =
        m_clock().toString(QStringLiteral("yyyy/MM/dd HH:mm:ss")) + QStringLiteral("\r\n");
    const bool there = QFile::exists(m_path);
    QFile file(m_path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate,
                   QFileDevice::ReadOwner | QFileDevice::WriteOwner))
        return;
    makePrivateFile(m_path);
    file.write(there ? toSystemText(stamp) : utf16(stamp));
}

void ErrorLog::LogError(const QString &message)
{
    QFile file(m_path);
    if (!file.open(QIODevice::Append | QIODevice::ExistingOnly))
        return;
    const QString line = m_clock().toString(QStringLiteral("dd/MM HH:mm")) + QStringLiteral(" : ") +
                         oneLine(message) + QStringLiteral("\r\n");
    file.write(toSystemText(line));
}

} // namespace venlo
