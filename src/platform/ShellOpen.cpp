#include "platform/ShellOpen.h"

#include <QDir>

namespace venlo
{

QString editorOfRegistered(const QString &command)
{
    if (command.isEmpty())
        return QStringLiteral("notepad.exe");
    const qsizetype option = command.lastIndexOf(QLatin1Char('/'));
    return option < 0 ? command : command.left(option);
}

QString editorCommandLine(const QString &editor, const QString &path)
{
    const QString native = QDir::toNativeSeparators(path);
    const bool quoted = native.contains(QLatin1Char(' ')) || native.contains(QChar(0x3000));
    const QString mark = quoted ? QStringLiteral("\"") : QString();
    return editor + QLatin1Char(' ') + mark + native + mark;
}

} // namespace venlo
