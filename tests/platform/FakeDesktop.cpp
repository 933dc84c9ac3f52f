#include "platform/FakeDesktop.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

namespace venlo::test
{

namespace
{
constexpr int longestStart = 5000; ///< ms for a detached program to begin
}

FakeDesktop::FakeDesktop() : m_oldPath(qgetenv("PATH"))
{
    for (const char *folder : {"bin", "notes", "config", "data", "system"})
        QDir(m_folder.path()).mkpath(QLatin1String(folder));
    // Nothing behind it: the machine's own programs must not answer.
    qputenv("PATH", QFile::encodeName(path(QStringLiteral("bin"))));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(path(QStringLiteral("config"))));
    qputenv("XDG_DATA_HOME", QFile::encodeName(path(QStringLiteral("data"))));
    qputenv("XDG_CONFIG_DIRS", QFile::encodeName(path(QStringLiteral("system"))));
    qputenv("XDG_DATA_DIRS", QFile::encodeName(path(QStringLiteral("system"))));
    qunsetenv("XDG_CURRENT_DESKTOP");
}

FakeDesktop::~FakeDesktop()
{
    qputenv("PATH", m_oldPath);
}

void FakeDesktop::addProgram(const QString &name)
{
    const QString program = path(QStringLiteral("bin/") + name);
    const QByteArray note = QFile::encodeName(noteOf(name));
    // The note appears whole: it is renamed into place.
    write(QStringLiteral("bin/") + name, "#!/bin/sh\nprintf '%s\\0' \"$@\" > '" + note +
                                             ".part'\n" + "/bin/mv '" + note + ".part' '" + note +
                                             "'\n");
    QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

bool FakeDesktop::wasCalled(const QString &name) const
{
    return QFile::exists(noteOf(name));
}

QStringList FakeDesktop::lastCall(const QString &name) const
{
    if (!QTest::qWaitFor([&] { return wasCalled(name); }, longestStart))
        return {};
    QFile note(noteOf(name));
    if (!note.open(QIODevice::ReadOnly))
        return {};
    QStringList arguments = QString::fromUtf8(note.readAll()).split(QChar(u'\0'));
    arguments.removeLast();
    return arguments;
}

void FakeDesktop::forgetCalls(const QString &name) const
{
    QFile::remove(noteOf(name));
}

void FakeDesktop::write(const QString &relative, const QByteArray &content) const
{
    QDir().mkpath(QFileInfo(path(relative)).path());
    QFile file(path(relative));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
}

QString FakeDesktop::path(const QString &relative) const
{
    return m_folder.filePath(relative);
}

QString FakeDesktop::noteOf(const QString &program) const
{
    return path(QStringLiteral("notes/") + program);
}

} // namespace venlo::test
