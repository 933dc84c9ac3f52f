#include "platform/FileNames.h"

#include <algorithm>

#include <windows.h>

#include <QFileInfo>
#include <QStringList>

#include "platform/FilesystemPath.h"

namespace venlo
{

namespace
{
constexpr qsizetype longestName = 255; // UTF-16 units

/// The digits that number a port, superscripts of the Latin-1 page among them.
bool numbersPort(QChar c)
{
    return (c >= QLatin1Char('1') && c <= QLatin1Char('9')) || QStringLiteral("¹²³").contains(c);
}

/// Device names count with any extension too: "con.txt" is the console.
bool isDevice(const QString &name)
{
    static const QStringList devices{QStringLiteral("CON"),    QStringLiteral("PRN"),
                                     QStringLiteral("AUX"),    QStringLiteral("NUL"),
                                     QStringLiteral("CONIN$"), QStringLiteral("CONOUT$")};
    const QString stem = name.section(QLatin1Char('.'), 0, 0).trimmed().toUpper();
    if (devices.contains(stem))
        return true;
    const bool port =
        stem.startsWith(QLatin1String("COM")) || stem.startsWith(QLatin1String("LPT"));
    return port && stem.size() == 4 && numbersPort(stem.at(3));
}

bool isRefused(QChar c)
{
    return c.unicode() < 0x20 || QLatin1String("<>:\"/\\|?*").contains(c);
}

/// The servers of other systems take names for one that are composed differently.
bool isSameName(const QString &one, const QString &other)
{
    const auto composed = QString::NormalizationForm_C;
    return one.normalized(composed).compare(other.normalized(composed), Qt::CaseInsensitive) == 0;
}
} // namespace

QString whyNotAFileName(const QString &name)
{
    // A trailing dot or blank is dropped by the system, which then opens another file.
    if (name.isEmpty() || name.endsWith(QLatin1Char('.')) || name.endsWith(QLatin1Char(' ')) ||
        std::any_of(name.begin(), name.end(), isRefused) || isDevice(name))
        return QStringLiteral("ﾌｧｲﾙ名に使用できない名前です");
    if (name.size() > longestName)
        return QStringLiteral("名前が長すぎます");
    return {};
}

QString whyAnotherEntry(const QString &path)
{
    const QString wanted = QFileInfo(path).fileName();
    if (!whyNotAFileName(wanted).isEmpty()) // a pattern, a drive's top
        return {};
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW(filesystemPath(path).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return {};
    FindClose(search);
    const QString name = QString::fromWCharArray(found.cFileName);
    return isSameName(name, wanted) ? QString() : QStringLiteral("'%1' の短い名前です").arg(name);
}

} // namespace venlo
