#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace venlo::test
{

/// A desktop of one test: programs in a folder at the front of PATH that only note how they were
/// called, and empty XDG folders of its own. Put up before anything is opened.
class FakeDesktop
{
public:
    FakeDesktop();
    FakeDesktop(const FakeDesktop &) = delete;
    FakeDesktop &operator=(const FakeDesktop &) = delete;
    ~FakeDesktop();

    /// A program of that name that notes the arguments of its last call.
    void addProgram(const QString &name);
    /// Arguments of the last call, once the program has run; empty when it does not within 5 s.
    [[nodiscard]] QStringList lastCall(const QString &name) const;
    [[nodiscard]] bool wasCalled(const QString &name) const;
    void forgetCalls(const QString &name) const;

    /// A file below the desktop's own "config" or "data" folder, with what is above it.
    void write(const QString &relative, const QByteArray &content) const;
    [[nodiscard]] QString path(const QString &relative) const;

private:
    [[nodiscard]] QString noteOf(const QString &program) const;

    QTemporaryDir m_folder;
    QByteArray m_oldPath;
};

} // namespace venlo::test
