#include "platform/Process.h"

#include <algorithm>
#include <array>
#include <iterator>

#include <windows.h>

#include <QDir>
#include <QFileInfo>

namespace venlo
{

namespace
{
QString executablePath()
{
    std::array<wchar_t, 32768> path = {}; // the longest path the system has
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return QString::fromWCharArray(path.data(), static_cast<qsizetype>(length));
}

bool isBlank(QChar c)
{
    return c == QLatin1Char(' ') || c == QLatin1Char('\t');
}

/// Where the arguments begin: behind the program's name, which may stand in quotation marks.
qsizetype endOfProgramName(const QString &line)
{
    if (!line.startsWith(QLatin1Char('"')))
        return std::distance(line.begin(), std::find_if(line.begin(), line.end(), isBlank));
    const qsizetype closing = line.indexOf(QLatin1Char('"'), 1);
    return closing < 0 ? line.size() : closing + 1;
}

/// A shell needs quotation marks around all of it, since "|" is its own sign; they are not meant.
QString withoutShellQuotes(const QString &arguments)
{
    const QLatin1Char mark('"');
    const bool quoted = arguments.size() >= 2 && arguments.startsWith(mark) &&
                        arguments.indexOf(mark, 1) == arguments.size() - 1;
    return quoted ? arguments.mid(1, arguments.size() - 2) : arguments;
}
} // namespace

QString rawCommandLine(int /*argc*/, char ** /*argv*/)
{
    const QString line = QString::fromWCharArray(GetCommandLineW());
    qsizetype start = endOfProgramName(line);
    while (start < line.size() && isBlank(line[start]))
        ++start;
    return withoutShellQuotes(line.mid(start));
}

QString executableBaseName()
{
    QString name = QFileInfo(executablePath()).fileName();
    if (name.endsWith(QLatin1String(".exe"), Qt::CaseInsensitive))
        name.chop(4);
    return name;
}

QString executableFolder()
{
    QString folder = QDir::toNativeSeparators(QFileInfo(executablePath()).absolutePath());
    if (!folder.endsWith(QLatin1Char('\\')))
        folder += QLatin1Char('\\');
    return folder;
}

bool hasDisplay()
{
    return true;
}

} // namespace venlo
