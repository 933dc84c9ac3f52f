#pragma once

#include "db/Database.h"
#include "support/FtpDaemon.h"
#include "support/ScriptedPerson.h"

#include <QProcessEnvironment>
#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace venlo::test
{

/// How a run of the built program ended. status is -1 when it did not end in time or crashed.
struct RunResult {
    int status = -1;
    QString output; ///< stdout
    QString errors; ///< stderr
};

/// The built program with a throwaway home: its user data folder, a local folder, and what a test
/// registers. No display unless a test gives one.
class ProgramRun
{
public:
    ProgramRun();

    /// Creates the user data folder as an installation's first start does; the program's own start
    /// is tested apart from it.
    [[nodiscard]] bool prepare();
    void registerSite(const QString &name, const QString &server, const QString &user,
                      const QString &password, bool passive = true, bool keepsCache = false);
    void registerPattern(const QString &name, const QString &local, const QString &site,
                         const QString &remote);
    /// One run with this argument, at most limitMs long.
    [[nodiscard]] RunResult run(const QString &argument, int limitMs = 60'000) const;

    [[nodiscard]] QString localFolder() const { return m_home.filePath(QStringLiteral("local")); }
    [[nodiscard]] QString userData() const
    {
        return m_home.filePath(QStringLiteral("data/Venlo/VenloFtp"));
    }
    [[nodiscard]] QString home() const { return m_home.path(); }
    /// The lines of FtpErr.Log behind its date stamp, as text.
    [[nodiscard]] QString errorLog() const;
    QProcessEnvironment environment;

private:
    [[nodiscard]] std::unique_ptr<Database> open();

    QTemporaryDir m_home;
    ScriptedPerson m_person;
};

} // namespace venlo::test
