#include "platform/DesktopEntry.h"

#include <utility>

#include <QFile>
#include <QStandardPaths>
#include <QUrl>

namespace venlo
{

namespace
{
constexpr qint64 longestFile = 1 << 20; ///< bytes; an entry has some thousand

QString entryGroup()
{
    return QStringLiteral("Desktop Entry");
}

/// The escapes of values of type string.
QString unescaped(const QString &value)
{
    QString text;
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value[i] != QLatin1Char('\\') || i + 1 == value.size()) {
            text += value[i];
            continue;
        }
        const QChar code = value[++i];
        if (code == QLatin1Char('s'))
            text += QLatin1Char(' ');
        else if (code == QLatin1Char('n'))
            text += QLatin1Char('\n');
        else if (code == QLatin1Char('t'))
            text += QLatin1Char('\t');
        else if (code == QLatin1Char('r'))
            text += QLatin1Char('\r');
        else if (code == QLatin1Char('\\'))
            text += code;
        else
            text += QLatin1Char('\\') + QString(code);
    }
    return text;
}

/// The words of an Exec line: blanks part them, double quotes hold them together, and inside the
/// quotes a backslash takes the next character as it is. Empty when a quote stays open.
QStringList execWords(const QString &exec)
{
    QStringList words;
    QString word;
    bool quoted = false;
    bool started = false;
    for (qsizetype i = 0; i < exec.size(); ++i) {
        const QChar c = exec[i];
        if (c == QLatin1Char('"')) {
            quoted = !quoted;
            started = true;
        } else if (quoted && c == QLatin1Char('\\') && i + 1 < exec.size()) {
            word += exec[++i];
        } else if (!quoted && c.isSpace()) {
            if (started)
                words += word;
            word.clear();
            started = false;
        } else {
            word += c;
            started = true;
        }
    }
    if (quoted)
        return {};
    if (started)
        words += word;
    return words;
}

/// What a field code stands for; nothing for the codes of icons, names and the retired ones.
QString fieldText(QChar code, const QString &path)
{
    if (code == QLatin1Char('%'))
        return QString(code);
    if (code.toLower() == QLatin1Char('f'))
        return path;
    if (code.toLower() == QLatin1Char('u'))
        return QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded());
    return {};
}

bool takesFile(QChar code)
{
    return code.toLower() == QLatin1Char('f') || code.toLower() == QLatin1Char('u');
}

/// The desktop file of an identifier, whose dashes may stand for folders.
QString entryFile(const QString &id)
{
    QString relative = id;
    for (;;) {
        QString found = QStandardPaths::locate(QStandardPaths::ApplicationsLocation, relative);
        const qsizetype dash = relative.indexOf(QLatin1Char('-'));
        if (!found.isEmpty() || dash < 0)
            return found;
        relative[dash] = QLatin1Char('/');
    }
}

bool isThere(const QString &program)
{
    return !program.isEmpty() && !QStandardPaths::findExecutable(program).isEmpty();
}

/// The Exec line of one desktop file; empty when it cannot be started from a window.
QString usableExec(const QString &id)
{
    const QString file = entryFile(id);
    if (file.isEmpty())
        return {};
    const auto value = [&](const QString &key) {
        return unescaped(desktopFileValue(file, entryGroup(), key));
    };
    const QString truth = QStringLiteral("true");
    if (value(QStringLiteral("Hidden")) == truth || value(QStringLiteral("Terminal")) == truth)
        return {};
    const QString exec = value(QStringLiteral("Exec"));
    return isThere(execWords(exec).value(0)) ? exec : QString();
}

/// The files that name handlers, most personal first; those of the running desktop come before the
/// common ones of the same folder.
QStringList associationFiles()
{
    QStringList names;
    const QString desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").toLower();
    for (const QString &desktop : desktops.split(QLatin1Char(':'), Qt::SkipEmptyParts))
        names += desktop + QStringLiteral("-mimeapps.list");
    names += QStringLiteral("mimeapps.list");

    QStringList folders = QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation);
    folders += QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation);
    QStringList files;
    for (const QString &folder : std::as_const(folders)) {
        for (const QString &name : std::as_const(names))
            files += folder + QLatin1Char('/') + name;
    }
    return files;
}

QString firstUsable(const QStringList &files, const QString &group, const QString &mimeType)
{
    for (const QString &file : files) {
        const QString ids = desktopFileValue(file, group, mimeType);
        for (const QString &id : ids.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
            QString exec = usableExec(id.trimmed());
            if (!exec.isEmpty())
                return exec;
        }
    }
    return {};
}
} // namespace

QString desktopFileValue(const QString &file, const QString &group, const QString &key)
{
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly))
        return {};
    const QString wanted = QLatin1Char('[') + group + QLatin1Char(']');
    bool inside = false;
    const QList<QByteArray> lines = source.read(longestFile).split('\n');
    for (const QByteArray &bytes : lines) {
        const QString line = QString::fromUtf8(bytes).trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            inside = line == wanted;
            continue;
        }
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (inside && equals > 0 && QStringView(line).left(equals).trimmed() == key)
            return line.mid(equals + 1).trimmed();
    }
    return {};
}

QString desktopFileText(const QString &text)
{
    QString value = text;
    value.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    value.replace(QLatin1Char('\n'), QLatin1String("\\n"));
    value.replace(QLatin1Char('\r'), QLatin1String("\\r"));
    value.replace(QLatin1Char('\t'), QLatin1String("\\t"));
    if (value.startsWith(QLatin1Char(' '))) // blanks beside the "=" do not count
        value.replace(0, 1, QLatin1String("\\s"));
    return value;
}

QString execOfMimeHandler(const QString &mimeType)
{
    const QStringList files = associationFiles();
    const QStringList groups = {QStringLiteral("Default Applications"),
                                QStringLiteral("Added Associations")};
    for (const QString &group : groups) {
        QString exec = firstUsable(files, group, mimeType);
        if (!exec.isEmpty())
            return exec;
    }
    return firstUsable(QStandardPaths::locateAll(QStandardPaths::ApplicationsLocation,
                                                 QStringLiteral("mimeinfo.cache")),
                       QStringLiteral("MIME Cache"), mimeType);
}

QStringList expandExec(const QString &exec, const QString &path)
{
    QStringList command;
    bool taken = false;
    const QStringList words = execWords(exec);
    for (const QString &word : words) {
        QString text;
        bool field = false;
        for (qsizetype i = 0; i < word.size(); ++i) {
            if (word[i] != QLatin1Char('%') || i + 1 == word.size()) {
                text += word[i];
                continue;
            }
            const QChar code = word[++i];
            field = true;
            taken = taken || takesFile(code);
            text += fieldText(code, path);
        }
        if (!text.isEmpty() || !field) // a code that stands for nothing is no argument
            command += text;
    }
    if (!command.isEmpty() && !taken)
        command += path;
    return command;
}

} // namespace venlo
