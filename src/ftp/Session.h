#pragma once

#include "ftp/protocol/FtpClient.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace venlo
{

class Database;
class ErrorLog;
class EventLog;
class FrontEnd;
class TrustStore;
class Waiter;
struct Flags;

/// The one FTP session of the program: closed, open (a handle and its proxy) or connected to one
/// registered site. All remote operations use the client kept here and call ftReConect when an
/// operation fails. One function changes the state, and it logs. Operations wait in a nested event
/// loop; what an event of that loop asks of the session meanwhile is left out, and noted.
class Session
{
public:
    enum State { Closed = 0, Open = 1, Connected = 2 };

    Session(FrontEnd &frontEnd, Database &database, ErrorLog &errorLog, EventLog &eventLog,
            ClientLimits limits = {});
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    /// Where accepted certificates are remembered, and whether anybody is there to be asked.
    /// Without it a person is asked, and what was accepted holds until the next Connect.
    void setTrust(TrustStore &store, const Flags &flags);
    /// Opens the handle; reopen true keeps the remembered proxy and the log. While connected it
    /// disconnects instead. In state 1 ok stays as the caller set it, so callers pass true.
    void OpenInternet(const QString &proxy, bool &ok, bool reopen);
    void CloseInternet();
    /// Connects to a registered site; only in state 1.
    void Connect(const QString &siteName, const QString &server, const QString &user,
                 const QString &password, bool passive, bool &ok);
    void Disconnect();
    /// Reconnects with the stored information, five attempts.
    void ftReConect(bool &ok);
    /// Current directory as the server reports it, empty when it does not.
    [[nodiscard]] QString GetRemoteDir();
    /// bSvDb of the current site, looked up by the name of its cache table.
    [[nodiscard]] bool SiteKeepsCache();

    [[nodiscard]] State state() const;
    /// How often Connect has gone to a server: what was learned of the last one ends there.
    [[nodiscard]] int connects() const;
    /// Registered as connected; a connection that broke stays so until an operation reconnects.
    [[nodiscard]] bool connected() const { return state() == Connected; }
    /// The server text of the current connection as it was registered, "ftps:" included.
    [[nodiscard]] QString server() const;
    /// "TLSv1.3" while control and data connections are protected, otherwise empty.
    [[nodiscard]] QString security() const;
    [[nodiscard]] QString proxy() const;
    [[nodiscard]] QString homeDirectory() const;
    [[nodiscard]] QString currentRemoteDir() const;
    void setCurrentRemoteDir(const QString &dir);
    /// Name of the current site's cache table, empty before the first connect.
    [[nodiscard]] QString currentSite() const;
    /// Runs what blocks for long, such as a disk's answer, while the event loop goes on as in a
    /// wait for the server.
    void aside(const std::function<void()> &work);
    /// Bookkeeping behind a reply that nothing waits for: done while the server works on the next
    /// command, at the latest by catchUp(). Must not wait for the server itself.
    void whileServerWorks(std::function<void()> bookkeeping);
    void catchUp();
    /// Only while connected.
    [[nodiscard]] FtpClient &client();
    [[nodiscard]] const ClientLimits &limits() const;
    /// Seconds to add to a LIST server's wall clock to get UTC, once learned (see DirectoryCache).
    std::optional<qint64> listOffset;

    [[nodiscard]] FrontEnd &frontEnd();
    [[nodiscard]] ErrorLog &errorLog();
    [[nodiscard]] EventLog &eventLog();

private:
    struct Data;
    std::unique_ptr<Data> m;
};

} // namespace venlo
