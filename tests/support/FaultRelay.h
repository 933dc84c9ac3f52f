#pragma once

#include "support/Socket.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace venlo::test
{

/// One thing that goes wrong at one step. A step is a command, by its verb ("CONNECT" is the
/// greeting) and by how often it came.
struct RelayFault {
    enum class Kind {
        // Before the command reaches the server, which never sees it.
        Drop,      ///< the control connection is closed
        Reset,     ///< the same with RST
        Stall,     ///< no reply; the connection stays
        Reply,     ///< this reply instead; behind 421 the connection is closed
        HalfReply, ///< the beginning of a reply, then nothing
        HalfReplyDrop,
        Garbage, ///< bytes that are no reply
        // The server carries it out; what it says about it is lost or changed.
        Delay,      ///< the command comes late
        DropAfter,  ///< instead of the completion reply
        ResetAfter, ///< the same with RST
        StallAfter, ///< no completion reply
        ReplyAfter, ///< this completion reply instead of the server's
        // EPSV, PASV.
        ClosedPort,   ///< a port where nobody listens
        WrongAddress, ///< a host that does not answer, with the right port
        // Commands with a data connection.
        DataDrop,     ///< after so many bytes both connections are closed
        DataReset,    ///< the data connection is reset; the server says what it then says
        DataStall,    ///< nothing more moves, and the completion reply does not come
        DataTruncate, ///< the data connection is closed; the server takes it for the whole
        DataCut,      ///< the same, and this completion reply
        DataSlow      ///< everything comes, little by little
    };

    QByteArray verb;
    int occurrence = 1;
    bool always = false; ///< this time and every later one
    Kind kind = Kind::Drop;
    QByteArray reply = {}; ///< with line ends
    qint64 bytes = 0;      ///< that still move
};

class RelaySession;

/// A TCP relay between a client and an FTP daemon on loopback, with at most one fault. It listens
/// on a port of its own and rewrites the replies to EPSV and PASV, so that passive data connections
/// go through it; active ones pass it by. One thread a control connection. The test owns it; it
/// ends quickly, whatever both sides do.
///
///     FaultRelay relay(daemon.port());
///     QVERIFY(relay.start());
///     relay.setFault({"STOR", 2, false, RelayFault::Kind::DataDrop, {}, 100});
class FaultRelay
{
public:
    explicit FaultRelay(quint16 upstream);
    ~FaultRelay();
    Q_DISABLE_COPY_MOVE(FaultRelay)

    [[nodiscard]] bool start();
    void stop();
    [[nodiscard]] quint16 port() const { return m_port; }
    /// "127.0.0.1:port".
    [[nodiscard]] QString server() const;

    /// Counts the steps anew.
    void setFault(std::optional<RelayFault> fault);
    /// How often the fault came about.
    [[nodiscard]] int hits() const;
    /// The verbs since the last setFault(), of all connections.
    [[nodiscard]] QList<QByteArray> verbs() const;
    /// Ends every connection with RST, and goes on listening; how many there were.
    int dropConnections();

private:
    friend class RelaySession;
    /// The fault of this command; counts it.
    [[nodiscard]] std::optional<RelayFault> faultOf(const QByteArray &verb);
    void listen();
    void reap(bool all);

    struct Running {
        std::shared_ptr<RelaySession> session;
        std::thread thread;
    };
    quint16 m_upstream;
    quint16 m_port = 0;
    std::unique_ptr<StopBell> m_bell;
    Socket m_listener;
    std::thread m_acceptor;
    mutable std::mutex m_mutex; ///< guards everything below
    std::list<Running> m_running;
    std::optional<RelayFault> m_fault;
    QList<QByteArray> m_verbs;
    int m_hits = 0;
};

} // namespace venlo::test
