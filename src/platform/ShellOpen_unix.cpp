#include "platform/ShellOpen.h"

#include <utility>

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUrl>

#include "platform/DesktopEntry.h"

namespace venlo
{

namespace
{
/// Starts a program that outlives this one; what it prints would mix with our own output.
bool startOnItsOwn(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProgram(program);
    process.setArguments(arguments);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    return process.startDetached();
}

/// Hands a path or an address to the desktop.
bool handToDesktop(const QString &what)
{
    const QList<std::pair<QString, QStringList>> openers = {
        {QStringLiteral("xdg-open"), {what}},
        {QStringLiteral("gio"), {QStringLiteral("open"), what}}};
    for (const auto &[program, arguments] : openers) {
        const QString found = QStandardPaths::findExecutable(program);
        if (!found.isEmpty())
            return startOnItsOwn(found, arguments);
    }
    return false;
}

bool isAddress(const QString &target)
{
    return !QDir::isAbsolutePath(target) && !QUrl(target).scheme().isEmpty();
}

QByteArray linkAddress(const QString &target)
{
    const QUrl url = isAddress(target) ? QUrl(target) : QUrl::fromLocalFile(target);
    return url.toEncoded();
}
} // namespace

bool openWithAssociated(const QString &path)
{
    // Absolute, so that no name is taken for an option.
    const QFileInfo info(path);
    return info.exists() && handToDesktop(info.absoluteFilePath());
}

bool exploreFolder(const QString &path)
{
    return QFileInfo(path).isDir() && openWithAssociated(path);
}

bool searchFolder(const QString &path)
{
    return exploreFolder(path);
}

QString textEditorCommand()
{
    const QString exec = execOfMimeHandler(QStringLiteral("text/plain"));
    return exec.isEmpty() ? QStringLiteral("xdg-open") : exec;
}

bool openInTextEditor(const QString &editor, const QString &path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    if (!QFileInfo::exists(absolute))
        return false;
    QStringList command = expandExec(editor, absolute);
    if (command.isEmpty())
        return false;
    const QString program = QStandardPaths::findExecutable(command.takeFirst());
    return program.isEmpty() ? handToDesktop(absolute) : startOnItsOwn(program, command);
}

QString writeShortcut(const QString &path, const QString &target)
{
    const QFileInfo info(path);
    const QString written =
        info.path() + QLatin1Char('/') + info.completeBaseName() + QStringLiteral(".desktop");
    const QByteArray content = "[Desktop Entry]\nVersion=1.0\nType=Link\nName=" +
                               desktopFileText(info.completeBaseName()).toUtf8() +
                               "\nURL=" + linkAddress(target) + "\n";
    QSaveFile file(written);
    if (!file.open(QIODevice::WriteOnly))
        return {};
    return file.write(content) == content.size() && file.commit() ? written : QString();
}

bool openShortcut(const QString & /*written*/, const QString &target)
{
    return isAddress(target) ? handToDesktop(target) : openWithAssociated(target);
}

} // namespace venlo
