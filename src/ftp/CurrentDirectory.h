#pragma once

#include "shared/Result.h"

#include <QByteArray>
#include <QString>

namespace venlo
{

class DirectoryCache;
class FrontEnd;
class Session;
struct Flags;

/// Makes a directory the server's current one and creates missing ones. Owned by the cache, whose
/// rows give the bytes of a path; used by everything that lists or moves.
class CurrentDirectory
{
public:
    CurrentDirectory(Session &session, DirectoryCache &cache, FrontEnd &frontEnd,
                     const Flags &flags);

    /// ok in: create the directory when it is missing; out: success. Three attempts with a
    /// reconnect between them; a cancelled one ends at once.
    void sjCrntDir(const QString &dir, bool &ok);
    /// Creates a directory and its missing ancestors, after learning what is there of them.
    void sjMakePrDir(const QString &dir, bool &ok);
    /// Why the last sjCrntDir failed.
    [[nodiscard]] const Error &lastError() const { return m_lastError; }

private:
    [[nodiscard]] bool change(const QString &dir);
    /// Looks the server's bytes up for every part of a path that only a guess could address. An
    /// error says that it is still not known what is there.
    [[nodiscard]] Result<void> learn(const QString &dir);
    /// The bytes of a folder of a directory that is not cached; empty when there is none.
    [[nodiscard]] Result<QByteArray> lookUp(const QString &parent, const QString &leaf);
    void makeChain(const QString &dir, bool &ok);

    Session &m_session;
    DirectoryCache &m_cache;
    FrontEnd &m_frontEnd;
    const Flags &m_flags;
    Error m_lastError;
};

} // namespace venlo
