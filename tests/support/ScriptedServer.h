#pragma once

#include "support/ServerContext.h"

#include <QString>

#include <list>
#include <thread>

namespace venlo::test
{

class ScriptedSession;

/// An FTP server of the test's own on a loopback port: a tree in memory, a script of what goes
/// wrong, and a record of the whole dialogue. It runs in threads of its own, so that a test may
/// block. The test owns it; it ends quickly, whatever its clients do.
///
///     ScriptedServer server;
///     server.put("/a.txt", "hello");
///     server.on("RETR").once().dropAfterBytes(3);
///     QVERIFY(server.start());
class ScriptedServer
{
public:
    explicit ScriptedServer(ServerOptions options = {});
    ~ScriptedServer();
    Q_DISABLE_COPY_MOVE(ScriptedServer)

    /// Listens; after a stop() on the same port again. Tree, script and record stay.
    [[nodiscard]] bool start();
    /// Closes everything: connections are lost and new ones refused.
    void stop();
    /// To be changed before start() only.
    [[nodiscard]] ServerOptions &options() { return m_context.options; }

    [[nodiscard]] quint16 port() const { return m_port; }
    [[nodiscard]] QString host() const;
    /// "127.0.0.1:port" or "[::1]:port".
    [[nodiscard]] QString server() const;
    [[nodiscard]] QString user() const { return QString::fromUtf8(m_context.options.user); }
    [[nodiscard]] QString password() const { return QString::fromUtf8(m_context.options.password); }

    // The script, see Script::On.
    Script::On on(const QByteArray &verb, const QByteArray &argument = {})
    {
        return m_context.script.on(verb, argument);
    }
    [[nodiscard]] Script &script() { return m_context.script; }
    /// What LIST, MLSD and NLST of a folder send, instead of what the tree holds.
    void setRawListing(const QByteArray &folder, const QByteArray &bytes)
    {
        m_context.setRawListing(folder, bytes);
    }
    /// Sends bytes on every control connection that nobody asked for ("421 Timeout\r\n").
    void say(const QByteArray &bytes);
    /// Ends every control connection, and goes on listening.
    void dropConnections();

    // The tree; paths are absolute raw bytes.
    [[nodiscard]] ScriptedTree &tree() { return m_context.tree; }
    void put(const QByteArray &path, const QByteArray &bytes, const QDateTime &modified = {})
    {
        m_context.tree.put(path, bytes, modified);
    }
    void makeFolder(const QByteArray &path) { m_context.tree.makeFolder(path); }
    [[nodiscard]] QByteArray file(const QByteArray &path) const
    {
        return m_context.tree.file(path);
    }
    [[nodiscard]] bool exists(const QByteArray &path) const { return m_context.tree.exists(path); }

    // The record, see ServerLog.
    [[nodiscard]] ServerLog &log() { return m_context.log; }
    [[nodiscard]] QList<QByteArray> commands() const { return m_context.log.commands(); }
    [[nodiscard]] QList<QByteArray> verbs() const { return m_context.log.verbs(); }
    [[nodiscard]] int count(const QByteArray &verb, const QByteArray &argument = {}) const
    {
        return m_context.log.count(verb, argument);
    }
    [[nodiscard]] QList<QByteArray> dialogue() const { return m_context.log.dialogue(); }
    [[nodiscard]] int connections() const { return m_context.log.connections(); }
    [[nodiscard]] int logins() const { return m_context.log.logins(); }

private:
    void listen();
    void serve(Socket socket);

    ServerContext m_context;
    Socket m_listener;
    quint16 m_port = 0;
    std::thread m_acceptor;
    std::mutex m_mutex;                      ///< guards the sessions
    std::list<ScriptedSession *> m_sessions; ///< those that run; each lives in its own thread
    std::list<std::thread> m_threads;        ///< the acceptor's alone until it is joined
};

} // namespace venlo::test
