#include "house/IncludeRules.h"

#include <QDir>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QMap>
#include <QRegularExpression>

#include "house/SourceTree.h"

namespace venlo::test
{

namespace
{
/// What a room may include besides itself.
const QMap<QString, QStringList> &allowedRooms()
{
    static const QMap<QString, QStringList> rooms = [] {
        const auto words = [](const char *text) {
            return QString::fromLatin1(text).split(QLatin1Char(' '));
        };
        const QStringList platform = words("shared");
        const QStringList settings = words("platform") + platform;
        const QStringList db = words("startup/settings") + settings;
        const QStringList ftp = words("ftp/protocol db") + db;
        const QStringList sync = words("ftp") + ftp;
        const QStringList windows = words("sync") + sync;
        const QStringList panes = words("sync/windows mainwin/popup views") + windows;
        const QStringList mainwin = words("localpane ftppane") + panes;
        return QMap<QString, QStringList>{
            {QStringLiteral("shared"), {}},
            {QStringLiteral("platform"), platform},
            {QStringLiteral("startup/settings"), settings},
            {QStringLiteral("db"), db},
            {QStringLiteral("ftp/protocol"), settings},
            {QStringLiteral("ftp"), ftp},
            {QStringLiteral("sync"), sync},
            {QStringLiteral("sync/windows"), windows},
            {QStringLiteral("mainwin/popup"), windows},
            {QStringLiteral("views"), words("shared")},
            {QStringLiteral("localpane"), panes},
            {QStringLiteral("ftppane"), panes},
            {QStringLiteral("mainwin"), mainwin},
            {QStringLiteral("startup"), words("mainwin") + mainwin},
        };
    }();
    return rooms;
}

/// The room a path lies in; empty when it lies in none.
QString roomOf(const QString &path)
{
    for (QString folder = path; folder.contains(QLatin1Char('/'));) {
        folder.truncate(folder.lastIndexOf(QLatin1Char('/')));
        if (allowedRooms().contains(folder))
            return folder;
    }
    return {};
}

bool worksWithoutWindows(const QString &room)
{
    return room != QLatin1String("views") &&
           !allowedRooms()[room].contains(QStringLiteral("sync")) &&
           !allowedRooms()[room].contains(QStringLiteral("mainwin"));
}

bool isWidgetHeader(const QString &header)
{
    static const QDir widgets(QLibraryInfo::path(QLibraryInfo::HeadersPath) +
                              QStringLiteral("/QtWidgets"));
    if (!widgets.exists(QStringLiteral("QWidget")))
        qFatal("the Qt Widgets headers are not in %s", qUtf8Printable(widgets.path()));
    return header.startsWith(QLatin1String("QtWidgets")) ||
           (!header.contains(QLatin1Char('/')) && widgets.exists(header));
}

/// Why a file may not include a header in angle brackets; empty when it may.
QString whyNotSystem(const QString &file, const QString &header)
{
    const QString room = roomOf(file);
    const QString name = header.toLower();
    if (name == QLatin1String("sqlite3.h") && room != QLatin1String("db"))
        return QStringLiteral("only db/ knows SQLite");
    static const QStringList windows = {QStringLiteral("windows.h"), QStringLiteral("shlobj.h"),
                                        QStringLiteral("shellapi.h"), QStringLiteral("winsock2.h"),
                                        QStringLiteral("io.h")};
    const bool isWindowsFile =
        room == QLatin1String("platform") &&
        QFileInfo(file).completeBaseName().endsWith(QLatin1String("_windows"));
    if (windows.contains(name) && !isWindowsFile)
        return QStringLiteral("only platform/*_windows knows Windows");
    if (worksWithoutWindows(room) && isWidgetHeader(header))
        return QStringLiteral("this room works without windows");
    return {};
}

QString whyNotOurs(const QString &file, const QString &header)
{
    if (header.endsWith(QLatin1String(".moc")))
        return {};
    const QString from = roomOf(file);
    const QString to = roomOf(header);
    if (to.isEmpty())
        return QStringLiteral("not rooted at the source folder, or in no room");
    if (from != to && !allowedRooms()[from].contains(to))
        return from + QStringLiteral(" may not know ") + to;
    return {};
}
} // namespace

QStringList wrongIncludes(const QString &sourceFolder)
{
    static const QRegularExpression line(
        QStringLiteral("^[ \\t]*#[ \\t]*include[ \\t]*([\"<])([^\">]+)[\">]"),
        QRegularExpression::MultilineOption);
    QStringList findings;
    const QStringList patterns = {QStringLiteral("*.h"), QStringLiteral("*.cpp")};
    for (const QString &file : sourceFiles(sourceFolder, patterns)) {
        if (roomOf(file).isEmpty()) {
            findings += file + QStringLiteral(": in no room");
            continue;
        }
        auto matches = line.globalMatch(readSource(sourceFolder + QLatin1Char('/') + file));
        while (matches.hasNext()) {
            const QRegularExpressionMatch match = matches.next();
            const QString header = match.captured(2);
            QString why = whyNotSystem(file, header);
            if (why.isEmpty() && match.captured(1) == QLatin1String("\""))
                why = whyNotOurs(file, header);
            if (!why.isEmpty())
                findings += file + QStringLiteral(": ") + header + QStringLiteral(": ") + why;
        }
    }
    return findings;
}

} // namespace venlo::test
