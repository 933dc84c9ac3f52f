#include "platform/Process.h"

#include <algorithm>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QStringList>

#include "platform/DisplayServer.h"

namespace venlo
{

namespace
{
QString executablePath()
{
    constexpr QLatin1String deletedMark(" (deleted)"); // replaced by an update while it runs
    QString path = QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
    if (path.isEmpty() && QCoreApplication::instance() != nullptr)
        path = QCoreApplication::applicationFilePath();
    if (path.endsWith(deletedMark) && !QFileInfo::exists(path))
        path.chop(deletedMark.size());
    return path;
}

/// The environment may name a platform that Qt has no plugin for here; showing a window would
/// abort.
bool hasPlugin(const QByteArray &platform)
{
    const QDir plugins(QLibraryInfo::path(QLibraryInfo::PluginsPath) +
                       QStringLiteral("/platforms"));
    const QString file = QStringLiteral("libq") + QString::fromLatin1(platform);
    return !plugins.entryList({file + QLatin1Char('*')}, QDir::Files).isEmpty();
}

bool xAnswers()
{
    return xServerAnswers(qgetenv("DISPLAY"));
}

bool waylandUsable()
{
    return hasPlugin("wayland") && waylandAnswers(qgetenv("WAYLAND_DISPLAY"));
}

/// One entry of QT_QPA_PLATFORM, "name[:options]".
bool platformUsable(const QByteArray &entry)
{
    const QByteArray name = entry.split(':').first().trimmed();
    if (name.isEmpty() || name == "minimal")
        return false;
    if (name.startsWith("xcb"))
        return xAnswers();
    if (name.startsWith("wayland"))
        return waylandUsable();
    return hasPlugin(name);
}
} // namespace

QString rawCommandLine(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments += QFile::decodeName(argv[i]);
    return arguments.join(QLatin1Char(' '));
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
    QString folder = QFileInfo(executablePath()).absolutePath();
    if (!folder.endsWith(QLatin1Char('/')))
        folder += QLatin1Char('/');
    return folder;
}

bool hasDisplay()
{
    const QByteArray chosen = qgetenv("QT_QPA_PLATFORM");
    if (chosen.isEmpty())
        return xAnswers() || waylandUsable();
    const QList<QByteArray> entries = chosen.split(';');
    return std::any_of(entries.begin(), entries.end(), platformUsable);
}

} // namespace venlo
