#pragma once

#include "ftp/EngineFixture.h"
#include "support/ScriptedServer.h"

namespace venlo::test
{

inline QString slash()
{
    return QStringLiteral("/");
}

inline QString web()
{
    return QStringLiteral("web");
}

/// A cache connected to a scripted server as the site "web".
struct CacheFixture : EngineFixture {
    [[nodiscard]] bool start(const QString &name = web())
    {
        if (!server.start())
            return false;
        registerSite(name, server.server(), server.user(), server.password());
        return connect(name);
    }
    /// Forgets the dialogue of the login.
    [[nodiscard]] bool connect(const QString &name = web())
    {
        const bool done = connectTo(name, server.server(), server.user(), server.password());
        server.log().clear();
        return done;
    }
    [[nodiscard]] bool load(const QString &dir,
                            DirectoryCache::LoadMode mode = DirectoryCache::IfAbsent)
    {
        bool ok = false;
        cache.caLoadDir(dir, mode, names, ok);
        return ok;
    }
    [[nodiscard]] QStringList incomplete(const QString &dir = slash())
    {
        QStringList dirs;
        for (const auto &mark : cache.incompleteUnder(dir))
            dirs.append(mark.dir);
        dirs.sort();
        return dirs;
    }

    ScriptedServer server;
    QString names; ///< of the last load
};

} // namespace venlo::test
