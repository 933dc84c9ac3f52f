#pragma once

#include "ftp/CertificatePins.h"
#include "ftp/ErrorLog.h"
#include "ftp/Session.h"
#include "ftp/protocol/Waiter.h"
#include "shared/FrontEnd.h"

#include <QString>

#include <functional>
#include <memory>
#include <utility>

namespace venlo
{

class DbError;

/// What a session keeps between its operations. Session.cpp is its states and what is asked of it,
/// SessionConnect.cpp its way to a server and back.
struct Session::Data {
    Data(FrontEnd &person, Database &store, ErrorLog &errors, EventLog &events, ClientLimits limits)
        : frontEnd(person), database(store), errorLog(errors), eventLog(events),
          clientLimits(limits), judge(person, events),
          waiter([&person] { return person.cancelled(); })
    {
        waiter.setMeanwhile([this] {
            catchUp();
            eventLog.flush();
        });
    }

    void catchUp()
    {
        if (const auto bookkeeping = std::exchange(postponed, nullptr))
            bookkeeping();
    }

    void setState(State next, const QString &why);
    /// True, and noted, when an operation waits for the network: only an event of its own nested
    /// loop can have asked for this one.
    [[nodiscard]] bool insideWait(const char *operation);
    void tableRefused(const QString &siteName, const DbError &error);
    void closeConnection();
    [[nodiscard]] Result<void> open(const ConnectOptions &options);

    FrontEnd &frontEnd;
    Database &database;
    ErrorLog &errorLog;
    EventLog &eventLog;
    ClientLimits clientLimits;
    CertificateJudge judge;
    Waiter waiter;
    std::unique_ptr<FtpClient> client;
    bool opening = false; ///< the client logs in, or asks about a certificate meanwhile
    State state = Closed;
    QString proxy;
    QString server;
    QString homeDirectory;
    QString currentRemoteDir;
    QString currentSite;
    std::function<void()> postponed; ///< bookkeeping, see whileServerWorks
    QString reconnectInformation;    ///< user, tab, password, tab, connect flags as decimal text
    int connects = 0;
    bool activeUnusable = false; ///< active mode was tried and cannot work with this server
};

} // namespace venlo
