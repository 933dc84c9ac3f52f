#pragma once

#include "db/Database.h"
#include "ftp/DirectoryCache.h"
#include "ftp/ErrorLog.h"
#include "ftp/Session.h"
#include "shared/Flags.h"
#include "support/ScriptedPerson.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace venlo::test
{

/// The engine up to the cache over a throwaway user data folder, with waits short enough for tests
/// of servers that hang.
struct EngineFixture {
    explicit EngineFixture(ClientLimits limits = shortLimits());

    [[nodiscard]] static ClientLimits shortLimits();
    void registerSite(const QString &name, const QString &server, const QString &user,
                      const QString &password, bool keepsCache = true);
    /// OpenInternet and Connect with a site of this name, registered or not.
    [[nodiscard]] bool connectTo(const QString &name, const QString &server, const QString &user,
                                 const QString &password, bool passive = true);

    /// The lines of FtpErr.Log behind its date stamp, without "dd/mm hh:mm : ".
    [[nodiscard]] QStringList errorLines() const;
    /// The whole second log.
    [[nodiscard]] QString events() const;
    /// "dir|fd|name|date|size" of every cache row, in key order.
    [[nodiscard]] QStringList cacheRows(const QString &table);
    [[nodiscard]] QString path(const QString &name) const { return folder.filePath(name); }

    QTemporaryDir folder;
    ScriptedPerson person;
    Flags flags;
    Database database;
    ErrorLog errorLog;
    mutable EventLog eventLog; ///< flushed by those who read its file
    Session session;
    DirectoryCache cache;
};

} // namespace venlo::test
